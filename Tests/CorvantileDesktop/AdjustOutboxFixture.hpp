#pragma once

#include "CorvantileDesktop/Adjust/OutboxAdjust.hpp"
#include "CorvantileDesktop/Adjust/detail/FormText.hpp"
#include "CorvantileTest/ScriptedHTTP.hpp"
#include "Tests/CorvantileDesktop/TemporaryFolder.hpp"
#include "Tests/CorvantileTest/ProcessTest.hpp"

namespace corvantile {

// Writes down what it is told, a text for each call.
class ListeningDelegate final : public AdjustDelegate {
public:
    void adjustAttributionChanged(const std::optional<ADJAttribution>& attribution) override {
        heard.push_back("attribution " + attribution->network.value_or("-") + " " +
                        attribution->adid.value_or("-"));
    }
    void adjustEventTrackingSucceeded(const std::optional<ADJEventSuccess>& success) override {
        heard.push_back("event sent " + success->eventToken.value() + " " + success->message.value_or("-"));
    }
    void adjustEventTrackingFailed(const std::optional<ADJEventFailure>& failure) override {
        heard.push_back("event failed " + failure->eventToken.value() + " " + failure->message.value_or("-") +
                        (failure->willRetry ? " again" : ""));
    }
    void adjustSessionTrackingSucceeded(const std::optional<ADJSessionSuccess>& success) override {
        heard.push_back("session sent " + success->message.value_or("-"));
    }

    std::vector<std::string> heard;
};

// The desktop's SDK in virtual time, on a scripted network that takes everything.
class AdjustOutbox : public ProcessTest {
protected:
    static constexpr const char* appToken = "abcdefghijkl";
    static constexpr const char* server = "https://adjust.example";

    AdjustOutbox() { platform_->http().answer(server, {.status = 200, .body = R"({"message":"fine"})"}); }

    [[nodiscard]] std::unique_ptr<OutboxAdjust> make(AdjustOptions options = {.endpoint = server}) const {
        return std::make_unique<OutboxAdjust>(file, std::move(options), platform_->ports());
    }
    [[nodiscard]] std::shared_ptr<ADJConfig> validConfig(OutboxAdjust& adjust) const {
        auto config = adjust.makeConfig(appToken, ADJEnvironmentSandbox);
        config->setDelegate(delegate);
        return config;
    }
    [[nodiscard]] std::unique_ptr<OutboxAdjust> launch(AdjustOptions options = {.endpoint = server}) const {
        auto adjust = make(std::move(options));
        adjust->launch(validConfig(*adjust));
        return adjust;
    }

    // What was posted so far: path and event token.
    [[nodiscard]] std::vector<std::string> posted(std::size_t from = 0) const {
        std::vector<std::string> found;
        for (const auto& [request, isCancelled] : platform_->http().sent())
            found.push_back(request.url.substr(std::string(server).size()) + " " +
                            formField(*request.body, "event_token"));
        return {found.begin() + static_cast<std::ptrdiff_t>(from), found.end()};
    }

    const TemporaryFolder home;
    std::filesystem::path file = home.path() / "outbox.sqlite";
    const std::shared_ptr<ListeningDelegate> delegate = std::make_shared<ListeningDelegate>();
};

} // namespace corvantile

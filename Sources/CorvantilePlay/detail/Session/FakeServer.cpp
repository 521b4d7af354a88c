#include "CorvantilePlay/detail/Session/FakeServer.hpp"

#include "CorvantileDesktop/Adjust/detail/FormText.hpp"
#include "CorvantilePlay/detail/Output/Reporter.hpp"
#include "CorvantilePlay/detail/Text/TerminalText.hpp"
#include "CorvantilePlay/detail/Text/UsageError.hpp"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>

namespace corvantile::tool {

namespace {

// Numbers beyond 32 bits, as the service gives them. Newer systems get no `creativeSetId`.
constexpr std::string_view campaign =
    R"({"attribution":true,"campaignId":1234567890,"adGroupId":2345678901,"keywordId":3456789012,)"
    R"("conversionType":"Download","countryOrRegion":"US"})";

std::string accepted(std::string_view message) {
    return R"({"message":")" + std::string(message) +
           R"(","adid":"0123456789abcdef0123456789abcdef","attribution":{"tracker_token":"sample",)"
           R"("tracker_name":"Sample Network::Spring","network":"Sample Network","campaign":"Spring",)"
           R"("adgroup":"Coins","creative":"Banner"}})";
}

// When all goes well; 404 for an unknown path.
ServiceAnswer answerTo(std::string_view path) {
    if (path == "/session") return {200, accepted("Session tracked")};
    if (path == "/event") return {200, accepted("Event tracked")};
    if (path == "/v2/purchase") return {200, accepted("Subscription tracked")};
    if (path == "/api/v1/") return {200, std::string(campaign)};
    return {404, R"({"error":"This server plays no such path."})"};
}

constexpr std::size_t keptArrivals = 100;
constexpr std::size_t keptBytes = 16 * 1024 * 1024; // of all of them

// A receipt in a form is the largest body that an app sends.
constexpr std::size_t largestBody = 4 * 1024 * 1024;

// A connection that sends nothing keeps a thread for as long as this.
constexpr time_t idleSeconds = 1;
constexpr std::size_t serverThreads = 64;

// What every package of the attribution SDK carries says nothing about this one.
bool isOfEveryPackage(std::string_view field) {
    constexpr std::array<std::string_view, 8> names{"s2s",  "app_token",       "environment", "idfa",
                                                    "idfv", "created_at_unix", "package_id",  "os_version"};
    return std::find(names.begin(), names.end(), field) != names.end();
}

std::string requestLine(const Arrival& arrival, bool (*isLeftOut)(std::string_view)) {
    auto text = arrival.path;
    for (const auto& [name, value] : arrival.fields)
        if (!isLeftOut(name)) text.append(" ").append(name).append("=").append(shortened(value));
    return text;
}

Arrival arrivalOf(const httplib::Request& request, const std::string& body) {
    Arrival arrival{request.path, {}};
    if (request.get_header_value("Content-Type").starts_with("application/x-www-form-urlencoded"))
        for (auto& [name, value] : formFields(body)) arrival.fields.emplace(name, value);
    else if (!body.empty())
        arrival.fields.emplace("body", body);
    return arrival;
}

std::size_t sizeOf(const Arrival& arrival) {
    auto size = arrival.path.size();
    for (const auto& [name, value] : arrival.fields) size += name.size() + value.size();
    return size;
}

} // namespace

std::string describe(const Arrival& arrival) {
    return requestLine(arrival, [](std::string_view) { return false; });
}

struct FakeServer::Parts {
    explicit Parts(Reporter& teller) : reporter(teller) {
        server.new_task_queue = [] { return new httplib::ThreadPool(serverThreads); };
        server.set_keep_alive_timeout(idleSeconds);
        server.set_keep_alive_max_count(1);
        server.set_payload_max_length(largestBody);
        // Forms are read as bytes: the library's own reading of them ends at eight kilobytes.
        const char* const everything = ".*";
        server.Get(everything, [this](const httplib::Request& request, httplib::Response& response) {
            serve(request, {}, response);
        });
        server.Post(everything, [this](const httplib::Request& request, httplib::Response& response,
                                       const httplib::ContentReader& read) {
            std::string body;
            const bool isWhole = read([&body](const char* bytes, std::size_t count) {
                if (count > largestBody - body.size()) return false;
                body.append(bytes, count);
                return true;
            });
            if (isWhole)
                serve(request, body, response);
            else
                response.status = 413;
        });
    }

    void serve(const httplib::Request& request, const std::string& body, httplib::Response& response) {
        const auto arrival = arrivalOf(request, body);
        note(arrival);
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return !isHanging; });
        const auto [status, content] = answer.value_or(answerTo(request.path));
        response.status = status;
        response.set_content(content, "application/json");
    }

    void note(const Arrival& arrival) {
        {
            const std::lock_guard lock(mutex);
            arrivals.push_back(arrival);
            arrivalBytes += sizeOf(arrival);
            while (arrivals.size() > keptArrivals || (arrivalBytes > keptBytes && arrivals.size() > 1)) {
                arrivalBytes -= sizeOf(arrivals.front());
                arrivals.pop_front();
            }
        }
        EventValue::Map fields{{"path", arrival.path},
                               {"fields", EventValue::Map(arrival.fields.begin(), arrival.fields.end())}};
        reporter.report("server", "arrived", "got " + requestLine(arrival, isOfEveryPackage),
                        std::move(fields));
    }

    void become(bool hangs, std::optional<ServiceAnswer> given) {
        {
            const std::lock_guard lock(mutex);
            isHanging = hangs;
            answer = std::move(given);
        }
        changed.notify_all();
    }

    Reporter& reporter;
    httplib::Server server;
    std::thread thread;
    mutable std::mutex mutex;
    std::condition_variable changed;
    bool isHanging = false;
    std::optional<ServiceAnswer> answer; // to everything; missing: as each path has it
    std::deque<Arrival> arrivals;
    std::size_t arrivalBytes = 0;
};

FakeServer::FakeServer(Reporter& reporter) : parts_(std::make_unique<Parts>(reporter)) {
    const auto port = parts_->server.bind_to_any_port("127.0.0.1");
    if (port < 0) throw UsageError("this machine gives the server no port");
    address_ = "http://127.0.0.1:" + std::to_string(port);
    parts_->thread = std::thread([server = &parts_->server] { server->listen_after_bind(); });
    while (!parts_->server.is_running()) std::this_thread::yield(); // one that does not run cannot be stopped
}

FakeServer::~FakeServer() {
    parts_->become(false, {});
    parts_->server.stop();
    parts_->thread.join();
}

void FakeServer::answer(std::optional<ServiceAnswer> answer) { parts_->become(false, std::move(answer)); }

void FakeServer::hang() { parts_->become(true, {}); }

std::vector<Arrival> FakeServer::arrivals() const {
    const std::lock_guard lock(parts_->mutex);
    return {parts_->arrivals.begin(), parts_->arrivals.end()};
}

} // namespace corvantile::tool

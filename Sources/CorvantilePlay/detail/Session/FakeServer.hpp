#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvantile::tool {

class Reporter;

// One request as it arrived.
struct Arrival {
    std::string path;
    std::map<std::string, std::string> fields; // of a form; else "body" alone
};

[[nodiscard]] std::string describe(const Arrival& arrival);

// JSON, as the services answer.
struct ServiceAnswer {
    int status;
    std::string body;
};

// The services that the app talks to, played on this machine: the attribution service's paths and the
// search-ads path. Makes an event of everything that arrives, on a thread of its own. Threads: any.
class FakeServer {
public:
    // A UsageError when this machine gives no port.
    explicit FakeServer(Reporter& reporter);
    FakeServer(const FakeServer&) = delete;
    FakeServer& operator=(const FakeServer&) = delete;
    ~FakeServer();

    // `http://127.0.0.1:PORT`.
    [[nodiscard]] const std::string& address() const { return address_; }

    // To every request from now on; none: what the services say when all goes well.
    void answer(std::optional<ServiceAnswer> answer);
    // Requests stay unanswered until `answer`.
    void hang();

    // The last hundred, or fewer large ones.
    [[nodiscard]] std::vector<Arrival> arrivals() const;

private:
    struct Parts;
    const std::unique_ptr<Parts> parts_;
    std::string address_;
};

} // namespace corvantile::tool

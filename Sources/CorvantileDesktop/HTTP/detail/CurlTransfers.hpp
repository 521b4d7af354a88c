#pragma once

#include "CorvantileDesktop/HTTP/detail/CurlTransfer.hpp"
#include "CorvantilePlatform/NonCopyable.hpp"

#include <curl/curl.h>

#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace corvantile {

// The exchanges in flight, on one thread of their own, which the first one starts. Threads: any.
class CurlTransfers : NonCopyable {
public:
    CurlTransfers();
    ~CurlTransfers();

    // Begins one. Once closed, it is dropped.
    void add(std::unique_ptr<CurlTransfer> transfer);

    // Has cancelled exchanges dropped soon.
    void wake();

    // Joins the thread and drops exchanges in flight, on the calling thread. A second call does nothing.
    void close();

private:
    struct Cleanup {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };
    using Transfers = std::vector<std::unique_ptr<CurlTransfer>>;

    void start();
    void run();
    [[nodiscard]] bool adopt();
    [[nodiscard]] bool takeAdded(Transfers& added);
    void dropCancelled();
    void reportFinished();
    [[nodiscard]] std::unique_ptr<CurlTransfer> remove(CURL* handle);

    std::unique_ptr<CURLM, Cleanup> multi_;                  // made with the thread
    std::map<CURL*, std::unique_ptr<CurlTransfer>> running_; // the thread's
    std::thread thread_;

    std::mutex mutex_; // guards what follows, and the making of the above
    Transfers added_;
    bool isClosed_ = false;
};

} // namespace corvantile

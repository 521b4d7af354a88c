#include "CorvantileDesktop/HTTP/detail/CurlTransfers.hpp"

#include "CorvantileDesktop/detail/Queues/HostSignals.hpp"

#include <new>
#include <utility>

#include <pthread.h>

namespace corvantile {

namespace {

// Without a transfer that has an earlier date, only `wake` ends a wait.
constexpr int longestPoll = 60 * 60 * 1000; // ms

} // namespace

CurlTransfers::CurlTransfers() = default;

CurlTransfers::~CurlTransfers() { close(); }

// A dropped transfer is destroyed with the argument, after the lock: that may run user code.
void CurlTransfers::add(std::unique_ptr<CurlTransfer> transfer) {
    const std::lock_guard lock(mutex_);
    if (isClosed_) return;
    if (!thread_.joinable()) start();
    added_.push_back(std::move(transfer));
    curl_multi_wakeup(multi_.get());
}

void CurlTransfers::wake() {
    const std::lock_guard lock(mutex_);
    if (multi_) curl_multi_wakeup(multi_.get());
}

void CurlTransfers::close() {
    Transfers added;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(isClosed_, true)) return;
        added.swap(added_);
        if (multi_) curl_multi_wakeup(multi_.get());
    }
    if (thread_.joinable()) thread_.join();
    while (!running_.empty()) static_cast<void>(remove(running_.begin()->first));
}

void CurlTransfers::start() {
    multi_.reset(curl_multi_init());
    if (!multi_) throw std::bad_alloc();
    const HostSignalsBlocked blocked;
    thread_ = std::thread([this] { run(); });
    pthread_setname_np(thread_.native_handle(), "corvantile-http");
}

void CurlTransfers::run() {
    while (adopt()) {
        dropCancelled();
        int count = 0;
        curl_multi_perform(multi_.get(), &count);
        reportFinished();
        curl_multi_poll(multi_.get(), nullptr, 0, longestPoll, nullptr);
    }
}

// False once closed.
bool CurlTransfers::adopt() {
    Transfers added;
    if (!takeAdded(added)) return false;
    for (auto& transfer : added) {
        auto* const handle = transfer->handle();
        if (curl_multi_add_handle(multi_.get(), handle) != CURLM_OK)
            transfer->finish(CURLE_FAILED_INIT);
        else
            running_.emplace(handle, std::move(transfer));
    }
    return true;
}

bool CurlTransfers::takeAdded(Transfers& added) {
    const std::lock_guard lock(mutex_);
    if (isClosed_) return false;
    added.swap(added_);
    return true;
}

void CurlTransfers::dropCancelled() {
    for (auto next = running_.begin(); next != running_.end();) {
        const auto& [handle, transfer] = *next++;
        if (transfer->isCancelled()) static_cast<void>(remove(handle));
    }
}

void CurlTransfers::reportFinished() {
    int left = 0;
    while (const auto* const message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        const auto result = message->data.result; // the message ends with its transfer
        remove(message->easy_handle)->finish(result);
    }
}

std::unique_ptr<CurlTransfer> CurlTransfers::remove(CURL* handle) {
    curl_multi_remove_handle(multi_.get(), handle);
    return std::move(running_.extract(handle).mapped());
}

} // namespace corvantile

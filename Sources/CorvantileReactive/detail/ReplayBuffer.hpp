#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <utility>

// What a subject keeps for later subscribers. A kept element is copied before the subject's lock is taken and
// swapped in under it; `store` leaves in `value` what it pushed out, to be destroyed after the lock.
namespace corvantile::rx::detail {

template <class T>
class NoBuffer {
public:
    struct Held {};
    static Held hold(const T&) { return {}; }
    void store(Held&) {}
    [[nodiscard]] bool isEmpty() const { return true; }
    [[nodiscard]] NoBuffer copy() const { return {}; }
    void swap(NoBuffer&) {}
    template <class Deliver>
    void forEach(Deliver) const {}
};

template <class T>
class LatestBuffer {
public:
    using Held = std::optional<T>;
    static Held hold(const T& value) { return value; }
    void store(Held& value) { latest_.swap(value); }
    [[nodiscard]] bool isEmpty() const { return !latest_; }
    [[nodiscard]] LatestBuffer copy() const { return *this; }
    void swap(LatestBuffer& other) { latest_.swap(other.latest_); }
    template <class Deliver>
    void forEach(Deliver deliver) const {
        if (latest_) deliver(*latest_);
    }

private:
    Held latest_;
};

// The newest `limit` elements; all of them without a limit.
template <class T>
class QueueBuffer {
public:
    using Held = std::optional<T>;
    explicit QueueBuffer(std::optional<std::size_t> limit = std::nullopt) : limit_(limit) {}

    static Held hold(const T& value) { return value; }
    void store(Held& value) {
        if (limit_ == 0u) return;
        elements_.push_back(std::move(*value));
        value.reset();
        if (!limit_ || elements_.size() <= *limit_) return;
        value.emplace(std::move(elements_.front()));
        elements_.pop_front();
    }
    [[nodiscard]] bool isEmpty() const { return elements_.empty(); }
    [[nodiscard]] QueueBuffer copy() const { return *this; }
    void swap(QueueBuffer& other) { elements_.swap(other.elements_); }
    template <class Deliver>
    void forEach(Deliver deliver) const {
        for (const auto& element : elements_) deliver(element);
    }

private:
    std::optional<std::size_t> limit_;
    std::deque<T> elements_;
};

} // namespace corvantile::rx::detail

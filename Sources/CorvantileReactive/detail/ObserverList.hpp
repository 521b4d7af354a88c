#pragma once

#include "CorvantilePlatform/NonCopyable.hpp"
#include "CorvantileReactive/Observer.hpp"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace corvantile::rx::detail {

// The observers of one subject, in order of subscription. An emission takes a snapshot and delivers from it
// without a lock; the list is copied only when it changes while a snapshot is out.
// Threads: every member under the subject's lock; a snapshot is used and dropped without.
template <class T>
class ObserverList {
    struct Node {
        std::uint64_t key;
        std::shared_ptr<Observer<T>> observer;
    };
    using Nodes = std::vector<Node>;

    // Counted by hand rather than by shared_ptr, whose count cannot be read with the ordering that editing in
    // place needs.
    struct Block {
        explicit Block(Nodes content) : nodes(std::move(content)) {}
        std::atomic<std::size_t> references{1};
        Nodes nodes;
    };

public:
    class Snapshot : NonCopyable {
    public:
        Snapshot() = default;
        explicit Snapshot(Block* block) : block_(block) {
            if (block_ != nullptr) block_->references.fetch_add(1, std::memory_order_relaxed);
        }
        ~Snapshot() { release(block_); }

        [[nodiscard]] auto begin() const { return block_ == nullptr ? nullptr : block_->nodes.data(); }
        [[nodiscard]] auto end() const {
            return block_ == nullptr ? nullptr : block_->nodes.data() + block_->nodes.size();
        }

    private:
        Block* const block_ = nullptr;
    };

    ObserverList() = default;
    ObserverList(const ObserverList&) = delete;
    ObserverList& operator=(const ObserverList&) = delete;
    ObserverList(ObserverList&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
    ObserverList& operator=(ObserverList&&) = delete;
    ~ObserverList() { release(block_); }

    [[nodiscard]] Snapshot snapshot() const { return Snapshot(block_); }

    void add(std::uint64_t key, std::shared_ptr<Observer<T>> observer) {
        own().push_back({key, std::move(observer)});
    }

    // Returns the node, for its destructor must not run under the subject's lock; null when it is not here.
    // Searches from the back: the newest subscription is the likeliest to leave.
    [[nodiscard]] std::shared_ptr<Observer<T>> remove(std::uint64_t key) {
        if (block_ == nullptr) return nullptr;
        const auto isIt = [key](const Node& node) { return node.key == key; };
        const auto& nodes = block_->nodes;
        const auto found = std::find_if(nodes.rbegin(), nodes.rend(), isIt);
        if (found == nodes.rend()) return nullptr;
        const auto index = nodes.rend() - found - 1;
        auto& mine = own();
        auto removed = std::move(mine[static_cast<std::size_t>(index)].observer);
        mine.erase(mine.begin() + index);
        return removed;
    }

private:
    static void release(Block* block) {
        if (block != nullptr && block->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete block;
    }

    Nodes& own() {
        if (block_ == nullptr) block_ = new Block({});
        if (block_->references.load(std::memory_order_acquire) > 1) {
            auto* const copy = new Block(block_->nodes);
            release(std::exchange(block_, copy));
        }
        return block_->nodes;
    }

    Block* block_ = nullptr;
};

} // namespace corvantile::rx::detail

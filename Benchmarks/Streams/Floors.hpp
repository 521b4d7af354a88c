#pragma once

#include <algorithm>
#include <iterator>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

// The least that a correct design must do, in plain code: what the streams are measured against.
namespace floors {

class Node {
public:
    virtual ~Node() = default;
    virtual void next(const int& value) = 0;
};

template <class Callable>
class CallableNode final : public Node {
public:
    explicit CallableNode(Callable callable) : callable_(std::move(callable)) {}
    void next(const int& value) override { callable_(value); }

private:
    Callable callable_;
};

// A mutex, a snapshot of one shared vector, the callable in the node.
class Subject {
public:
    template <class Callable>
    Node* add(Callable callable) {
        auto node = std::make_shared<CallableNode<Callable>>(std::move(callable));
        auto* const key = node.get();
        const std::lock_guard lock(mutex_);
        nodes_->push_back(std::move(node));
        return key;
    }

    void remove(const Node* node) {
        std::shared_ptr<Node> removed;
        const std::lock_guard lock(mutex_);
        const auto found = std::find_if(nodes_->rbegin(), nodes_->rend(),
                                        [&](const auto& held) { return held.get() == node; });
        removed = std::move(*found);
        nodes_->erase(std::next(found).base());
    }

    void next(const int& value) {
        std::shared_ptr<Nodes> snapshot;
        {
            const std::lock_guard lock(mutex_);
            snapshot = nodes_;
        }
        for (const auto& node : *snapshot) node->next(value);
    }

private:
    using Nodes = std::vector<std::shared_ptr<Node>>;
    std::mutex mutex_;
    std::shared_ptr<Nodes> nodes_ = std::make_shared<Nodes>();
};

// A stage of a chain that calls the next directly.
template <class Function>
class Stage final : public Node {
public:
    Stage(Function function, std::shared_ptr<Node> next)
        : function_(std::move(function)), next_(std::move(next)) {}
    void next(const int& value) override { function_(value, *next_); }

private:
    Function function_;
    std::shared_ptr<Node> next_;
};

template <class Function>
std::shared_ptr<Node> stage(Function function, std::shared_ptr<Node> next) {
    return std::make_shared<Stage<Function>>(std::move(function), std::move(next));
}

} // namespace floors

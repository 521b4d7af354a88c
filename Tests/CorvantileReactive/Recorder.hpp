#pragma once

#include "CorvantileReactive/Factories.hpp"
#include "CorvantileReactive/PublishSubject.hpp"
#include "CorvantileReactive/ReplaySubject.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

// What nearly every test of streams needs.
namespace corvantile::rx {

// What happened, in order, as one text: "next 1, next 2, completed, disposed". For one thread.
class Recorder {
public:
    void note(const std::string& text) { trace_.append(trace_.empty() ? "" : ", ").append(text); }
    [[nodiscard]] std::function<void()> noting(std::string text) {
        return [this, text = std::move(text)] { note(text); };
    }

    // Subscribes with all four handlers; `name` tells several subscriptions apart: "A next 1". What `react`
    // does happens inside onNext, after the note.
    template <class T>
    Disposable subscribe(const Observable<T>& stream, const std::string& name = "",
                         std::function<void(const T&)> react = {}) {
        const auto prefix = name.empty() ? "" : name + " ";
        const auto onNext = [this, prefix, react](const T& value) {
            note(prefix + "next " + describeValue(value));
            if (react) react(value);
        };
        const auto onError = [this, prefix](const auto& error) {
            note(prefix + "error " + localizedDescription(error));
        };
        return stream.subscribe(onNext, onError, noting(prefix + "completed"), noting(prefix + "disposed"));
    }

    // The trace so far; the next one begins empty.
    std::string take() { return std::exchange(trace_, ""); }

private:
    std::string trace_;
};

[[nodiscard]] inline std::exception_ptr failure(const std::string& text) {
    return std::make_exception_ptr(NSError("test", 1, {{NSError::localizedDescriptionKey, text}}));
}

} // namespace corvantile::rx

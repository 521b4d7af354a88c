#pragma once

#include "CorvantilePlatform/Export.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantileTest/QueueDescription.hpp"
#include "CorvantileTest/TestOptions.hpp"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace corvantile {

class LocalStore;
class RecordingAdjust;
class RecordingConsole;
class ScriptedAds;
class ScriptedHTTP;
class ScriptedRandom;
class ScriptedReachability;
class ScriptedStore;
class TestDevice;

// One process on a test device, all in memory and in virtual time:
//
//     TestDevice device;
//     auto platform = TestPlatform::launch(device);
//     …                                               // the code under test posts items
//     platform->advance(2s);                          // they run, here and now
//     platform = TestPlatform::relaunch(std::move(platform));
//
// Threads: launch, run and end it on one thread, from outside items; everything else posts from any thread.
// Ending it is fatal when a plug-in is still alive.
class CORVANTILE_API TestPlatform final : public Platform {
public:
    // A new process, which is the current platform from now on. The device must outlive it.
    [[nodiscard]] static std::unique_ptr<TestPlatform> launch(TestDevice& device, TestOptions options = {});

    // Ends the process in good order and launches the next one on the same device, with the same options.
    [[nodiscard]] static std::unique_ptr<TestPlatform> relaunch(std::unique_ptr<TestPlatform> ended);
    // Deletes the app, which kills it, and launches it freshly installed.
    [[nodiscard]] static std::unique_ptr<TestPlatform> reinstall(std::unique_ptr<TestPlatform> deleted);

    // Ends the process in good order: what is queued is destroyed unrun.
    ~TestPlatform() override;

    // Ends the process at once: as far as the device and the console can tell, nothing happens after this
    // call began. What was printed can still be read.
    void kill();

    // Makes this the current platform where several processes run. The run functions do so while they run.
    void makeCurrent();

    // Runs what is ready, and what becomes ready meanwhile. Time stands still.
    void runUntilIdle();

    // Lets time pass for the device. Timers of this process run at their deadlines, in order of (deadline,
    // call), and between them whatever becomes ready.
    void advance(std::chrono::nanoseconds duration);

    // Runs, and advances from one timer to the next, until `done` returns true; false when `limit` has passed
    // before. `done` is called whenever nothing is ready.
    bool runUntil(const std::function<bool()>& done,
                  std::chrono::nanoseconds limit = std::chrono::seconds(10));

    // The serial queues made so far, in order, including those gone since.
    [[nodiscard]] std::vector<QueueDescription> queues() const;
    // What waits to run now, and what waits for its time.
    [[nodiscard]] std::size_t readyItems() const;
    [[nodiscard]] std::size_t pendingTimers() const;

    [[nodiscard]] TestDevice& device() const;
    [[nodiscard]] RecordingConsole& console() const;
    [[nodiscard]] ScriptedReachability& reachability() const;
    [[nodiscard]] ScriptedRandom& random() const;
    [[nodiscard]] ScriptedStore& store() const;
    // Fatal unless the options have chosen it.
    [[nodiscard]] LocalStore& localStore() const;
    [[nodiscard]] ScriptedHTTP& http() const;
    [[nodiscard]] ScriptedAds& ads() const;
    [[nodiscard]] RecordingAdjust& adjust() const;

private:
    struct Parts;
    class CurrentScope;

    TestPlatform(TestOptions options, std::unique_ptr<Parts> parts);
    void endOnDevice();
    void stop() override;
    void reportOutlived(int count) override;

    const TestOptions options_;
    const std::unique_ptr<Parts> parts_;
};

} // namespace corvantile

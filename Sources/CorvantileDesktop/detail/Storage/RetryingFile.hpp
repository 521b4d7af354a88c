#pragma once

#include "CorvantileDesktop/detail/Storage/StateDatabase.hpp"
#include "CorvantilePlatform/Foundation/detail/ReportingLock.hpp"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace corvantile {

// How a state file whose owner can do without it for a time is opened, and named on the console.
struct RetryingFileOptions {
    std::filesystem::path path; // empty: there never is a file
    std::shared_ptr<Console> console;
    BackgroundRunner inBackground;

    std::string subject;    // "User defaults", before "cannot be written to PATH"
    std::string lossPrefix; // "began anew", after the subject and before ": PATH cannot be used …"
    std::string lossSuffix; // a sentence at the end of that line, after a space; or nothing

    // Called before a file that turned out damaged while it was open is given up. May be null.
    std::function<void()> onDamage;
    // Writes what a damaged file still holds into its successor. May be null.
    FillState fill;
};

// A state file that may refuse to be written for a time: it is opened by `catchUp`, given up after an error
// that will not pass, and opened again later. What it refuses stays in its owner's memory until `catchUp`
// writes it. The console gets one line when such a time begins and one when it ends, and one for a file that
// was moved aside; its owner calls it under a ReportingLock. Not for the keychain, which refuses what is not
// on the disk. Threads: one at a time. Errors: none. `File` is made of a SqliteDatabase, and has `format` and
// `database`.
template <class File>
class RetryingFile {
public:
    // The first attempt after a failure comes no sooner: a turn of the main loop may take microseconds.
    static constexpr std::chrono::seconds pauseLength{1};

    explicit RetryingFile(RetryingFileOptions options)
        : options_(std::move(options)), trimmer_(options_.path, File::format, options_.inBackground) {}

    [[nodiscard]] const std::filesystem::path& path() const { return options_.path; }
    // Null while no file is open.
    [[nodiscard]] File* get() const { return file_.get(); }
    // The name leads to another file by now, or to none.
    [[nodiscard]] bool hasMoved() const { return file_ && file_->database().hasMoved(); }

    [[nodiscard]] bool isPaused() const { return std::chrono::steady_clock::now() < pauseEnd_; }
    void pause() { pauseEnd_ = std::chrono::steady_clock::now() + pauseLength; }

    // Runs `work` on the file. False when there is none, or `work` threw a SqliteError, which is reported.
    template <class Work>
    bool attempt(Work work) {
        if (!file_) return false;
        try {
            work(*file_);
            trimmer_.noteWrite(file_->database());
            return true;
        } catch (const SqliteError& error) {
            fail(error);
            return false;
        }
    }

    // Opens the file if need be, which `load` sees first, and has `write` write what it refused before. False
    // when either fails. What is in a read-only folder is still loaded, once.
    template <class Load, class Write>
    bool catchUp(Load load, Write write) {
        if (options_.path.empty()) return false;
        if ((!file_ || hasMoved()) && !tryToOpen(load)) return false;
        if (!attempt(write)) return false;
        if (std::exchange(hasComplained_, false))
            report("are written again to " + options_.path.string() + ".");
        return true;
    }

private:
    // A second attempt, if the first finds damage, moves the file aside.
    template <class Load>
    bool tryToOpen(Load load) {
        for (;;) try {
                open(load);
                return true;
            } catch (const SqliteError& error) {
                if (error.isUnreadable() && !std::exchange(isDoubtful_, true)) continue;
                if (isInReadOnlyFolder(options_.path)) loadImage(load);
                fail(error);
                return false;
            }
    }

    template <class Load>
    void open(Load load) {
        file_.reset();
        auto opened = openOrBeginState(options_.path, File::format, options_.fill, isDoubtful_);
        if (!opened.loss.empty()) report(options_.lossPrefix + ": " + opened.loss + options_.lossSuffix);
        for (const auto& line : opened.reports) printAfterLocks(options_.console, "Corvantile: " + line);
        auto file = std::make_unique<File>(std::move(opened.database));
        load(*file);
        file_ = std::move(file);
        isDoubtful_ = false;
    }

    template <class Load>
    void loadImage(Load load) {
        if (std::exchange(hasLoadedImage_, true)) return;
        try {
            File image(openStateImage(options_.path, File::format));
            load(image);
        } catch (const SqliteError&) {
            // Why it cannot be opened is reported.
        }
    }

    void fail(const SqliteError& error) {
        if (error.isUnreadable()) isDoubtful_ = true;
        if (error.isUnreadable() && options_.onDamage) options_.onDamage();
        // A damaged file keeps its log: both are moved aside.
        if (file_ && error.isUnreadable()) file_->database().setEmptiesLogAtEnd(false);
        if (!error.mayPass()) file_.reset();
        pause();
        if (!std::exchange(hasComplained_, true))
            report("cannot be written to " + options_.path.string() + " (" + error.what() +
                   "). They stay in memory until they can be.");
    }

    void report(const std::string& text) const {
        printAfterLocks(options_.console, "Corvantile: " + options_.subject + " " + text);
    }

    const RetryingFileOptions options_;
    std::unique_ptr<File> file_;
    std::chrono::steady_clock::time_point pauseEnd_{};
    bool hasComplained_ = false;
    bool isDoubtful_ = false; // damage was found, and the file is to be read as a whole
    bool hasLoadedImage_ = false;
    LogTrimmer trimmer_;
};

} // namespace corvantile

#include "CorvantilePlay/detail/CommandLine/LineEditor.hpp"

#include "CorvantilePlay/detail/Text/TerminalText.hpp"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cwchar>
#include <exception>
#include <iostream>
#include <mutex>
#include <system_error>
#include <utility>

#include <histedit.h>
#include <poll.h>
#include <unistd.h>

namespace corvantile::tool {

namespace {

constexpr int historySize = 1000;
constexpr wchar_t interruptKey = 3;

// The terminal raises SIGINT for the interrupt key; the editor gets the key.
volatile std::sig_atomic_t isInterruptPending = 0;

bool isInputReady() {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return ::poll(&input, 1, 0) > 0;
}

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }

std::string commonBeginning(const std::vector<std::string>& words) {
    auto common = words.front();
    for (const auto& word : words) {
        const auto end = std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
        common.erase(end, common.end());
    }
    return common;
}

} // namespace

// libedit is not safe for threads: `mutex_` is held whenever it runs, and released while it waits for a key.
class LineEditor::Editor {
public:
    explicit Editor(Options options) : options_(std::move(options)) {
        std::setlocale(LC_CTYPE, "C.UTF-8"); // libedit converts what is typed
        el_set(editLine_, EL_CLIENTDATA, this);
        el_set(editLine_, EL_PROMPT, &promptOf);
        el_set(editLine_, EL_EDITOR, "emacs");
        el_set(editLine_, EL_GETCFN, &getCharacter);
        el_set(editLine_, EL_HIST, &::history, history_);
        bind(L"corvantile-complete", L"completes a word", L"^I", &completeWord);
        bind(L"corvantile-interrupt", L"clears the line", L"^C", &interrupt);
        callHistory(H_SETSIZE, historySize);
        callHistory(H_SETUNIQUE, 1);
        if (!options_.history.empty()) callHistory(H_LOAD, options_.history.c_str());
    }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;
    ~Editor() {
        el_end(editLine_);
        history_end(history_);
    }

    std::optional<std::string> read() {
        const std::lock_guard lock(mutex_);
        std::cout.flush();
        el_resize(editLine_); // the terminal may have another size than at the last prompt
        isReading_ = true;
        ::sigaction(SIGINT, nullptr, &outside_);
        catchInterrupts();
        el_set(editLine_, EL_PREP_TERM, 1); // before the prompt invites to type
        int count = 0;
        const char* const text = el_gets(editLine_, &count);
        ::sigaction(SIGINT, &outside_, nullptr);
        isReading_ = false;
        if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
        if (text == nullptr || count <= 0) return std::nullopt;
        std::string line(text, static_cast<std::size_t>(count));
        if (line.ends_with('\n')) line.pop_back();
        remember(line);
        return line;
    }

    void printAround(const std::function<void()>& print) {
        const std::lock_guard lock(mutex_);
        if (isReading_) eraseLine();
        print();
        if (isReading_) el_set(editLine_, EL_REFRESH);
    }

private:
    using Function = unsigned char (*)(EditLine*, int);

    static Editor& of(EditLine* editLine) {
        Editor* editor = nullptr;
        el_get(editLine, EL_CLIENTDATA, &editor);
        return *editor;
    }
    static char* promptOf(EditLine* editLine) { return of(editLine).options_.prompt.data(); }

    // Exceptions must not pass through libedit.
    static int getCharacter(EditLine* editLine, wchar_t* character) {
        auto& self = of(editLine);
        try {
            self.mutex_.unlock();
            self.options_.runLoop([] { return isInterruptPending != 0 || isInputReady(); });
            self.mutex_.lock();
        } catch (...) {
            self.mutex_.lock();
            self.error_ = std::current_exception();
            return -1;
        }
        if (isInterruptPending == 0) return isInputReady() ? readCharacter(*character) : 0;
        *character = interruptKey;
        return 1;
    }

    // 1, or 0 at the end of the input. Bytes that are no UTF-8 are dropped.
    static int readCharacter(wchar_t& character) {
        std::mbstate_t state{};
        for (char byte = 0;;) {
            const auto count = ::read(STDIN_FILENO, &byte, 1);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return 0;
            const auto size = std::mbrtowc(&character, &byte, 1, &state);
            if (size <= 1) return 1;
            if (size == static_cast<std::size_t>(-1)) state = {};
        }
    }

    // Until this is called again, a second signal ends the process.
    void catchInterrupts() {
        isInterruptPending = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { isInterruptPending = 1; };
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        ::sigaction(SIGINT, &action, nullptr);
    }

    static unsigned char interrupt(EditLine* editLine, int) {
        auto& self = of(editLine);
        const auto* const line = el_line(editLine);
        if (line->buffer == line->lastchar) {
            ::sigaction(SIGINT, &self.outside_, nullptr);
            std::raise(SIGINT);
            return CC_EOF;
        }
        self.catchInterrupts();
        el_push(editLine, "\x15"); // em-kill-line
        return CC_NORM;
    }

    static unsigned char completeWord(EditLine* editLine, int) {
        const auto* const info = el_line(editLine);
        const std::string line(info->buffer, info->cursor);
        const auto words = of(editLine).options_.complete(line);
        if (words.empty()) return CC_REFRESH_BEEP;
        const auto typed = line.size() - (line.find_last_of(" \t") + 1);
        auto rest = commonBeginning(words).substr(typed);
        if (words.size() == 1 && !words.front().ends_with('/')) rest += ' ';
        if (!rest.empty()) return el_insertstr(editLine, rest.c_str()) == 0 ? CC_REFRESH : CC_REFRESH_BEEP;
        std::cout << '\n';
        for (const auto& word : words) std::cout << visibleLine(word) << "  ";
        std::cout << std::endl;
        return CC_REDISPLAY;
    }

    // Of wide literals: libedit would copy narrow ones and never free the copies.
    void bind(const wchar_t* name, const wchar_t* help, const wchar_t* key, Function function) {
        el_wset(editLine_, EL_ADDFN, name, help, function);
        el_wset(editLine_, EL_BIND, key, name, nullptr);
    }

    template <class... Arguments>
    void callHistory(int operation, Arguments... arguments) {
        HistEvent event{};
        ::history(history_, &event, operation, arguments...);
    }

    // A history that cannot be written is no reason to disturb the play.
    void remember(const std::string& line) {
        if (isBlank(line)) return;
        callHistory(H_ENTER, line.c_str());
        if (options_.history.empty()) return;
        std::error_code ignored;
        std::filesystem::create_directories(options_.history.parent_path(), ignored);
        callHistory(H_SAVE, options_.history.c_str());
    }

    // A long line wraps: the cursor may be rows below the prompt.
    void eraseLine() {
        int columns = 0;
        el_get(editLine_, EL_GETTC, "co", &columns, nullptr);
        const auto* const line = el_line(editLine_);
        const auto before = options_.prompt.size() + static_cast<std::size_t>(line->cursor - line->buffer);
        const auto rows = columns > 0 ? before / static_cast<std::size_t>(columns) : 0;
        if (rows > 0) std::cout << "\x1b[" << rows << 'A';
        std::cout << "\r\x1b[J";
    }

    Options options_;
    std::mutex mutex_;
    bool isReading_ = false;
    struct sigaction outside_ {}; // what SIGINT does outside of `read`
    std::exception_ptr error_;
    History* const history_ = history_init();
    EditLine* const editLine_ = el_init("corvantile", stdin, stdout, stderr);
};

LineEditor::LineEditor(Options options) : editor_(std::make_unique<Editor>(std::move(options))) {}
LineEditor::~LineEditor() = default;

std::optional<std::string> LineEditor::read() { return editor_->read(); }
void LineEditor::printAround(const std::function<void()>& print) { editor_->printAround(print); }

} // namespace corvantile::tool

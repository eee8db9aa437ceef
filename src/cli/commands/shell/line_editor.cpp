#include "cli/commands/shell/line_editor.hpp"

#include <algorithm>
#include <iostream>
#include <utility>

#ifdef KAPUTIL_LIBEDIT
#include <histedit.h>
#include <langinfo.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <system_error>

#include <kaputil/automation/plain_text.hpp>

#include "cli/output/shown_text.hpp"
#include "platform/loaded_library.hpp"
#endif

namespace kap::cli {

#ifdef KAPUTIL_LIBEDIT

namespace {

// The editor is loaded with the first shell: other commands have no use for it. Its functions are
// called by their own names.
constexpr platform::LoadedLibrary kEditor("libedit.so.2");

// NOLINTBEGIN(readability-identifier-naming)
#define KAPUTIL_EDITOR(name) \
    constinit const platform::LoadedFunction<decltype(::name)> name(kEditor, #name)
KAPUTIL_EDITOR(el_deletestr);
KAPUTIL_EDITOR(el_end);
KAPUTIL_EDITOR(el_get);
KAPUTIL_EDITOR(el_gets);
KAPUTIL_EDITOR(el_init);
KAPUTIL_EDITOR(el_insertstr);
KAPUTIL_EDITOR(el_line);
KAPUTIL_EDITOR(el_resize);
KAPUTIL_EDITOR(el_set);
KAPUTIL_EDITOR(el_source);
KAPUTIL_EDITOR(el_wset);
KAPUTIL_EDITOR(history_end);
KAPUTIL_EDITOR(history_init);
#undef KAPUTIL_EDITOR
constinit const platform::LoadedFunction<decltype(::history)> editorHistory(kEditor, "history");
// NOLINTEND(readability-identifier-naming)

constexpr int kLinesOfBefore = 1000;
constexpr char kEndOfInput = 4;

bool endsWord(char unit) {
    return std::string_view(" \t\n(),;=<>+-*/[]'\"").find(unit) != std::string_view::npos;
}

// Letters of several bytes are one key; what is written is UTF-8 in any case. Numbers stay as they
// are.
void useUtf8() {
    std::setlocale(LC_CTYPE, "");
    if (std::string_view(nl_langinfo(CODESET)) != "UTF-8") {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
}

std::size_t wordStart(std::string_view line) {
    std::size_t start = line.size();
    while (start > 0 && !endsWord(line[start - 1])) {
        --start;
    }
    return start;
}

// The beginning that all of them share, letter case aside, in the first one's letters.
std::string sharedBeginning(const std::vector<std::string>& words) {
    std::string shared = words.front();
    const auto same = [](char left, char right) {
        const auto lower = [](char unit) {
            return unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit + 32) : unit;
        };
        return lower(left) == lower(right);
    };
    for (const std::string& word : words) {
        const auto ends = std::ranges::mismatch(shared, word, same);
        shared.resize(static_cast<std::size_t>(ends.in1 - shared.begin()));
    }
    return shared;
}

}  // namespace

struct LineEditor::Inside {
    EditLine* editor = nullptr;
    History* history = nullptr;
    HistEvent event{};
    std::filesystem::path file;
    Completer completer;
    std::string prompt;
    bool cancelled = false;
    Painter painter;
    std::mbstate_t bytesOfKey{};  // of a character whose other bytes are still to come

    static Inside& of(EditLine* editor) {
        void* self = nullptr;
        el_get(editor, EL_CLIENTDATA, &self);
        return *static_cast<Inside*>(self);
    }
    static char* promptOf(EditLine* editor) { return of(editor).prompt.data(); }

    // A key, in front of which the line that stands there is painted.
    static int readKey(EditLine* editor, wchar_t* key) {
        Inside& self = of(editor);
        if (self.painter && !isTyped()) {
            self.paint();
        }
        return self.readCharacter(key);
    }

    // Whether keys wait already: what is pasted is painted once.
    static bool isTyped() {
        pollfd keys{STDIN_FILENO, POLLIN, 0};
        return poll(&keys, 1, 0) == 1;
    }

    // 1; 0 at the end, -1 for an error. A Ctrl-D that was typed before the editor had the terminal
    // is a zero now.
    int readCharacter(wchar_t* key) {
        while (true) {
            char byte = 0;
            const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
            if (count == 0) {
                return 0;
            }
            if (count < 0 && errno != EINTR) {
                return -1;
            }
            if (count < 0) {
                continue;
            }
            if (byte == '\0') {
                byte = kEndOfInput;
            }
            const std::size_t length = std::mbrtowc(key, &byte, 1, &bytesOfKey);
            constexpr auto kMore = static_cast<std::size_t>(-2);
            if (length == static_cast<std::size_t>(-1)) {
                bytesOfKey = {};
            } else if (length != kMore) {
                return 1;
            }
        }
    }

    // Writes the same characters at the same places once more, in their colours: what the editor
    // knows of the screen stays true. A line that ends at the edge is left alone, where the cursor
    // is differs between terminals.
    void paint() const {
        const LineInfo* info = el_line(editor);
        const std::string_view line(info->buffer,
                                    static_cast<std::size_t>(info->lastchar - info->buffer));
        winsize screen{};
        if (line.empty() || line.find('\n') != std::string_view::npos ||
            ioctl(STDOUT_FILENO, TIOCGWINSZ, &screen) != 0 || screen.ws_col == 0) {
            return;
        }
        const std::size_t width = screen.ws_col;
        const std::size_t before = columnsOf(prompt);
        const std::size_t all = before + columnsOf(line);
        const std::size_t cursor =
            before +
            columnsOf(line.substr(0, static_cast<std::size_t>(info->cursor - info->buffer)));
        if (all % width == 0 || cursor % width == 0 || all / width >= screen.ws_row) {
            return;
        }
        std::string out = "\0337";
        if (cursor >= width) {
            out += "\033[" + plain::text(cursor / width) + "A";
        }
        out += "\r" + prompt + painter(line) + "\0338";
        std::fwrite(out.data(), 1, out.size(), stdout);
        std::fflush(stdout);
    }

    static unsigned char cancel(EditLine* editor, int /*key*/) {
        of(editor).cancelled = true;
        std::cout << "^C" << std::flush;
        return CC_NEWLINE;
    }

    static unsigned char complete(EditLine* editor, int /*key*/) {
        return of(editor).completeWord() ? CC_REDISPLAY : CC_REFRESH_BEEP;
    }

    bool completeWord() {
        const LineInfo* info = el_line(editor);
        const std::string_view line(info->buffer,
                                    static_cast<std::size_t>(info->cursor - info->buffer));
        const std::size_t start = wordStart(line);
        const std::string_view word = line.substr(start);
        const std::vector<std::string> found = completer(line.substr(0, start), word);
        if (found.empty()) {
            return false;
        }
        std::string shared = sharedBeginning(found);
        if (shared.size() < word.size() || (found.size() > 1 && shared.size() == word.size())) {
            show(found);
            return true;
        }
        if (found.size() == 1) {
            shared += ' ';
        }
        const int typed = static_cast<int>(columnsOf(word));
        el_deletestr(editor, typed);
        return el_insertstr(editor, shared.c_str()) == 0;
    }

    static void show(const std::vector<std::string>& words) {
        constexpr std::size_t kMost = 60;
        std::cout << '\n';
        for (std::size_t i = 0; i < std::min(words.size(), kMost); ++i) {
            std::cout << words[i] << "  ";
        }
        std::cout << (words.size() > kMost ? "..." : "") << '\n' << std::flush;
    }
};

LineEditor::LineEditor(std::filesystem::path history, Completer completer, Painter painter)
    : inside_(std::make_unique<Inside>()) {
    useUtf8();
    inside_->file = std::move(history);
    inside_->completer = std::move(completer);
    inside_->painter = std::move(painter);
    inside_->history = history_init();
    editorHistory(inside_->history, &inside_->event, H_SETSIZE, kLinesOfBefore);
    editorHistory(inside_->history, &inside_->event, H_SETUNIQUE, 1);
    editorHistory(inside_->history, &inside_->event, H_LOAD, inside_->file.c_str());
    EditLine* editor = el_init("kaputil", stdin, stdout, stderr);
    inside_->editor = editor;
    el_set(editor, EL_CLIENTDATA, inside_.get());
    el_set(editor, EL_PROMPT, &Inside::promptOf);
    el_set(editor, EL_EDITOR, "emacs");
    using HistoryFunction = decltype(&::history);
    el_set(editor, EL_HIST, static_cast<HistoryFunction>(editorHistory), inside_->history);
    // By the wide names: of the others the editor keeps copies, which it never frees.
    el_wset(editor, EL_ADDFN, L"kaputil-cancel", L"Gives up the line", &Inside::cancel);
    el_wset(editor, EL_ADDFN, L"kaputil-complete", L"Completes the word", &Inside::complete);
    el_set(editor, EL_BIND, "^I", "kaputil-complete", nullptr);
    el_set(editor, EL_BIND, "^C", "kaputil-cancel", nullptr);
    el_set(editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
    el_set(editor, EL_BIND, "\\e[3~", "ed-delete-next-char", nullptr);
    el_set(editor, EL_BIND, "\\e[1~", "ed-move-to-beg", nullptr);
    el_set(editor, EL_BIND, "\\e[4~", "ed-move-to-end", nullptr);
    el_set(editor, EL_SETTY, "-d", "-isig", nullptr);  // Ctrl-C is a key while a line is typed
    el_set(editor, EL_SIGNAL, 0);
    el_wset(editor, EL_GETCFN, &Inside::readKey);
    el_source(editor, nullptr);  // the user's own ~/.editrc
}

LineEditor::~LineEditor() {
    std::error_code ignored;  // without a history the shell works as well
    std::filesystem::create_directories(inside_->file.parent_path(), ignored);
    editorHistory(inside_->history, &inside_->event, H_SAVE, inside_->file.c_str());
    std::filesystem::permissions(
        inside_->file, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
        ignored);
    el_end(inside_->editor);
    history_end(inside_->history);
}

LineEditor::Outcome LineEditor::read(const std::string& prompt, std::string& line) {
    inside_->prompt = prompt;
    inside_->cancelled = false;
    el_resize(inside_->editor);                // the window may be another size by now
    el_set(inside_->editor, EL_PREP_TERM, 1);  // before the prompt tells that keys are awaited
    int count = 0;
    const char* typed = el_gets(inside_->editor, &count);
    if (inside_->cancelled) {
        std::cout << '\n' << std::flush;
        return Outcome::Cancelled;
    }
    if (typed == nullptr || count <= 0) {
        std::cout << '\n' << std::flush;
        return Outcome::End;
    }
    line.assign(typed);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.pop_back();
    }
    return Outcome::Line;
}

void LineEditor::remember(std::string_view statement) {
    std::string line(statement);
    std::ranges::replace(line, '\n', ' ');
    editorHistory(inside_->history, &inside_->event, H_ENTER, line.c_str());
}

#else

struct LineEditor::Inside {};

LineEditor::LineEditor(std::filesystem::path /*history*/, Completer /*completer*/,
                       Painter /*painter*/) {}
LineEditor::~LineEditor() = default;

LineEditor::Outcome LineEditor::read(const std::string& prompt, std::string& line) {
    std::cout << prompt << std::flush;
    return std::getline(std::cin, line) ? Outcome::Line : Outcome::End;
}

void LineEditor::remember(std::string_view /*statement*/) {}

#endif

}  // namespace kap::cli

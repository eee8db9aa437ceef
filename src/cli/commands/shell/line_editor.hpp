#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kap::cli {

// Lines that a user types on a terminal: with editing, the lines of before and completion where
// the host has a line editor.
class LineEditor {
public:
    // What the word at the end of a line can become, whole words.
    using Completer =
        std::function<std::vector<std::string>(std::string_view before, std::string_view word)>;

    // A line as it is typed, with what makes it coloured between its characters.
    using Painter = std::function<std::string(std::string_view line)>;

    // The lines of before are read from a file and written to it at the end. Without a painter
    // lines stand as they are typed.
    LineEditor(std::filesystem::path history, Completer completer, Painter painter);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    enum class Outcome : unsigned char { Line, Cancelled, End };
    // The next line, without its end. Cancelled: Ctrl-C; End: Ctrl-D on an empty line.
    [[nodiscard]] Outcome read(const std::string& prompt, std::string& line);
    // Keeps a statement among the lines of before, as one line.
    void remember(std::string_view statement);

private:
    struct Inside;
    std::unique_ptr<Inside> inside_;
};

}  // namespace kap::cli

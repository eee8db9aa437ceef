#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kap::cli {

// A value of a file of delimited values. The text is valid until the file's text is.
struct DelimitedValue {
    std::string_view text;
    bool quoted = false;
    bool broken = false;  // something stands behind its closing quote, or there is none
};

// The rows of a text of delimited values, as RFC 4180 has them: a value may stand in quotes, in
// which delimiters and ends of lines are its own and a quote stands doubled. Lines end in LF, CR LF
// or CR.
class DelimitedText {
public:
    // `text` is UTF-8 and changed: doubled quotes become one. `quote` 0: there are none.
    DelimitedText(std::string& text, char delimiter, char quote);

    // The next row; false at the end. Lines without anything in them are passed over.
    bool next(std::vector<DelimitedValue>& values);

    // The line on which the row begins, from 1, and how far the text is read.
    [[nodiscard]] std::int64_t line() const noexcept { return line_; }
    [[nodiscard]] std::size_t position() const noexcept { return position_; }

private:
    [[nodiscard]] bool atEnd() const noexcept { return position_ >= text_.size(); }
    [[nodiscard]] bool atLineEnd() const noexcept;
    void passLineEnd();
    DelimitedValue value();
    DelimitedValue quotedValue();

    std::string& text_;
    char delimiter_;
    char quote_;
    std::size_t position_ = 0;
    std::int64_t line_ = 1;
    std::int64_t nextLine_ = 1;
};

// The delimiter of a text's first line: the one of tab, semicolon, comma and '|' that stands there
// most often outside of quotes; a comma when there is none.
[[nodiscard]] char delimiterOf(std::string_view text, char quote);

}  // namespace kap::cli

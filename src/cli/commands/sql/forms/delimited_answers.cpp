#include <cstddef>
#include <string_view>
#include <vector>

#include "cli/commands/sql/forms/forms.hpp"
#include "cli/commands/sql/forms/streamed_answers.hpp"
#include "cli/output/csv_line.hpp"

namespace kap::cli {
namespace {

class CsvAnswers final : public StreamedAnswers {
public:
    using StreamedAnswers::StreamedAnswers;

private:
    void begin(std::string& text, bool first) override {
        std::vector<std::string> names;
        for (const Column& column : columns()) {
            names.push_back(column.name);
        }
        text += first ? "" : "\n";
        text += csvLine(names);
    }
    void row(std::string& text, const migrate::RowTexts& values) override {
        for (std::size_t i = 0; i < values.columnCount(); ++i) {
            if (i > 0) {
                text += ',';
            }
            append(text, values, i);
        }
        text += "\r\n";
    }
    static void append(std::string& text, const migrate::RowTexts& values, std::size_t column) {
        const std::size_t start = text.size();
        if (!values.append(text, column)) {
            return;
        }
        if (text.size() == start) {
            text += "\"\"";
        } else if (values.isFree(column)) {
            quoteForCsv(text, start);
        }
    }
};

// What would end a value is written as C has it, in the text from `start` on.
void escapeForTsv(std::string& text, std::size_t start) {
    constexpr std::string_view kSigns = "\t\n\r\\";
    constexpr std::string_view kLetters = "tnr\\";
    for (std::size_t at = text.find_first_of(kSigns, start); at != std::string::npos;
         at = text.find_first_of(kSigns, at + 2)) {
        const char letter = kLetters[kSigns.find(text[at])];
        text[at] = '\\';
        text.insert(at + 1, 1, letter);
    }
}

class TsvAnswers final : public StreamedAnswers {
public:
    using StreamedAnswers::StreamedAnswers;

private:
    void begin(std::string& text, bool first) override {
        text += first ? "" : "\n";
        for (std::size_t i = 0; i < columns().size(); ++i) {
            text += i == 0 ? "" : "\t";
            const std::size_t start = text.size();
            text += columns()[i].name;
            escapeForTsv(text, start);
        }
        text += '\n';
    }
    void row(std::string& text, const migrate::RowTexts& values) override {
        for (std::size_t i = 0; i < values.columnCount(); ++i) {
            if (i > 0) {
                text += '\t';
            }
            const std::size_t start = text.size();
            if (values.append(text, i) && values.isFree(i)) {
                escapeForTsv(text, start);
            }
        }
        text += '\n';
    }
};

}  // namespace

std::unique_ptr<AnswerWriter> csvAnswers(std::ostream& out) {
    return std::make_unique<CsvAnswers>(out);
}

std::unique_ptr<AnswerWriter> tsvAnswers(std::ostream& out) {
    return std::make_unique<TsvAnswers>(out);
}

}  // namespace kap::cli

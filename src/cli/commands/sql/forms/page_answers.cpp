#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/sql/forms/forms.hpp"
#include "cli/commands/sql/forms/streamed_answers.hpp"
#include "cli/output/html_page.hpp"
#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

// In a table's cell a line cannot end, and a bar ends the cell.
std::string markdownText(std::string_view text) {
    std::string escaped;
    for (const char unit : text) {
        if (unit == '\n') {
            escaped += "<br>";
        } else if (unit == '<') {
            escaped += "&lt;";
        } else if (unit == '&') {
            escaped += "&amp;";
        } else if (std::string_view("|\\`*_[]").find(unit) != std::string_view::npos) {
            escaped += '\\';
            escaped += unit;
        } else if (unit != '\r') {
            escaped += unit;
        }
    }
    return shownText(escaped);
}

class MarkdownAnswers final : public StreamedAnswers {
public:
    using StreamedAnswers::StreamedAnswers;

private:
    void begin(std::string& text, bool first) override {
        text += first ? "|" : "\n|";
        for (const Column& column : columns()) {
            text += " " + markdownText(column.name) + " |";
        }
        text += "\n|";
        for (const Column& column : columns()) {
            text += column.number ? " ---: |" : " --- |";
        }
        text += '\n';
    }
    void row(std::string& text, const migrate::RowTexts& values) override {
        text += '|';
        for (std::size_t i = 0; i < values.columnCount(); ++i) {
            value_.clear();
            static_cast<void>(values.append(value_, i));
            text += " " + (values.isFree(i) ? markdownText(value_) : value_) + " |";
        }
        text += '\n';
    }

    std::string value_;
};

class HtmlAnswers final : public StreamedAnswers {
public:
    HtmlAnswers(std::ostream& out, Language language) : StreamedAnswers(out), language_(language) {}

private:
    static constexpr std::string_view kStyles =
        "body { max-width: none; }\ntable { width: auto; margin: 1rem 0; }\n"
        "td { white-space: pre-wrap; }\nthead th { position: sticky; top: 0; }\n";

    void begin(std::string& text, bool first) override {
        if (first) {
            text += htmlPageBegin(language_, "kaputil", kStyles);
        }
        text += "<div class=\"wide\"><table>\n<thead><tr>";
        for (const Column& column : columns()) {
            text += element("th", shownText(column.name), classOf(column.number));
        }
        text += "</tr></thead>\n<tbody>\n";
    }
    void row(std::string& text, const migrate::RowTexts& values) override {
        text += "<tr>";
        for (std::size_t i = 0; i < values.columnCount(); ++i) {
            value_.clear();
            text += values.append(value_, i) ? element("td", value_, classOf(!values.isFree(i)))
                                             : element("td", "NULL", "soft");
        }
        text += "</tr>\n";
    }
    void breakOff(std::string& text) override { text += "</tbody></table></div>\n"; }
    void end(std::string& text, std::int64_t rows, std::optional<std::int64_t>) override {
        const bool italian = language_ == Language::Italian;
        const char* unit =
            rows == 1 ? (italian ? " riga" : " row") : (italian ? " righe" : " rows");
        breakOff(text);
        text += "<p class=\"soft\">" + plain::text(rows) + unit + "</p>\n";
    }
    void endAll(std::string& text) override {
        if (!any()) {
            text += htmlPageBegin(language_, "kaputil", kStyles);
        }
        text += kHtmlPageEnd;
    }
    static std::string_view classOf(bool number) { return number ? "n" : ""; }

    Language language_;
    std::string value_;
};

class VerticalAnswers final : public StreamedAnswers {
public:
    using StreamedAnswers::StreamedAnswers;

private:
    void begin(std::string& /*text*/, bool /*first*/) override {
        row_ = 0;
        names_.clear();
        std::size_t width = 0;
        for (const Column& column : columns()) {
            names_.push_back(shownText(column.name));
            width = std::max(width, columnsOf(names_.back()));
        }
        for (std::string& name : names_) {
            name = padded(name, width);
        }
    }
    void row(std::string& text, const migrate::RowTexts& values) override {
        text += "-- row " + plain::text(++row_) + "\n";
        for (std::size_t i = 0; i < values.columnCount(); ++i) {
            value_.clear();
            const bool filled = values.append(value_, i);
            text += names_[i] + "  " + (filled ? shownText(value_) : "NULL") + "\n";
        }
    }
    void end(std::string& text, std::int64_t rows, std::optional<std::int64_t>) override {
        text += "(" + plain::text(rows) + (rows == 1 ? " row)\n" : " rows)\n");
    }

    std::vector<std::string> names_;
    std::int64_t row_ = 0;
    std::string value_;
};

}  // namespace

std::unique_ptr<AnswerWriter> markdownAnswers(std::ostream& out) {
    return std::make_unique<MarkdownAnswers>(out);
}

std::unique_ptr<AnswerWriter> htmlAnswers(std::ostream& out, Language language) {
    return std::make_unique<HtmlAnswers>(out, language);
}

std::unique_ptr<AnswerWriter> verticalAnswers(std::ostream& out) {
    return std::make_unique<VerticalAnswers>(out);
}

}  // namespace kap::cli

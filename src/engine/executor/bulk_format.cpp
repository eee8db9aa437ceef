#include "engine/executor/bulk_format.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/executor/bulk_file.hpp"
#include "tsql/bulk_terminator.hpp"
#include "tsql/server_error.hpp"

// The format files of BULK INSERT.
//
//     9.0
//     2
//     1  SQLCHAR  0  7   ";"      1  id    ""
//     2  SQLCHAR  0  100 "\r\n"   2  nome  Latin1_General_CI_AS
//
// has a line for each field of the data file: its number, type, length of prefix, length,
// terminator, the number of the table's column (0: none), and what serves people only. The form in
// XML says the same in elements FIELD, and which columns they go into in elements COLUMN.
namespace kap::engine {
namespace {

using tsql::Message;
using tsql::ServerError;

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

class FormatReader {
public:
    FormatReader(const std::string& file, const Table& table, int line)
        : file_(file), table_(table), line_(line), text_(bytesOfFile(file, line)) {}

    BulkFormat format() {
        const std::size_t first = text_.find_first_not_of("\xEF\xBB\xBF \t\r\n");
        if (first != std::string::npos && text_[first] == '<') {
            readXml();
        } else {
            readLines();
        }
        if (result_.fields.empty()) throw ServerError(Message::BulkFormatCount, {file_}, line_);
        return std::move(result_);
    }

private:
    using Attributes = std::map<std::string, std::string, std::less<>>;

    [[noreturn]] void wrongField(Message message, std::int64_t field) const {
        throw ServerError(message, {plain::text(field), file_}, line_);
    }

    // --- Lines

    static std::string_view nextLine(std::string_view& text) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        return line;
    }

    // The words of a line; what stands between quotes is one.
    static std::vector<std::string> wordsOf(std::string_view text) {
        std::vector<std::string> words;
        for (std::size_t i = 0; i < text.size();) {
            if (isBlank(text[i])) {
                ++i;
                continue;
            }
            const bool quoted = text[i] == '"';
            const std::size_t start = quoted ? i + 1 : i;
            std::size_t end = start;
            while (end < text.size() && (quoted ? text[end] != '"' : !isBlank(text[end]))) {
                end += text[end] == '\\' && end + 1 < text.size() ? 2U : 1U;
            }
            end = std::min(end, text.size());
            words.emplace_back(text.substr(start, end - start));
            i = quoted ? end + 1 : end;
        }
        return words;
    }

    void readLines() {
        std::string_view rest = text_;
        (void)nextLine(rest);  // the version
        const std::vector<std::string> words = wordsOf(nextLine(rest));
        const auto fields = words.size() == 1 ? plain::readWhole(words.front()) : std::nullopt;
        if (!fields || *fields < 1) throw ServerError(Message::BulkFormatCount, {file_}, line_);
        for (std::int64_t i = 1; i <= *fields; ++i) {
            if (rest.empty()) throw ServerError(Message::BulkFormatCount, {file_}, line_);
            readLine(wordsOf(nextLine(rest)), i);
        }
    }

    void readLine(const std::vector<std::string>& words, std::int64_t field) {
        enum : std::size_t { Number, Type, Prefix, Length, Terminator, Target, Fewest };
        if (words.size() < Fewest || plain::readWhole(words[Number]) != field) {
            throw ServerError(Message::BulkFormatColumn, {file_}, line_);
        }
        const auto prefix = plain::readWhole(words[Prefix]);
        constexpr std::array<std::int64_t, 5> kPrefixes{0, 1, 2, 4, 8};
        if (!prefix || std::ranges::find(kPrefixes, *prefix) == kPrefixes.end()) {
            wrongField(Message::BulkFormatPrefix, field);
        }
        requireText(words[Type], field);
        if (*prefix != 0) throw tsql::unsupported("BULK INSERT of fields with prefixes", line_);
        BulkField& result = result_.fields.emplace_back();
        const auto length = plain::readWhole(words[Length]);
        if (!length || *length < 0) wrongField(Message::BulkFormatLength, field);
        result.length = *length;
        result.terminator = terminatorOf(words[Terminator], field, result.length);
        const auto target = plain::readWhole(words[Target]);
        if (!target || *target < 0 || *target > static_cast<std::int64_t>(table_.columns.size())) {
            wrongField(Message::BulkFormatTarget, field);
        }
        if (*target > 0) result.column = &table_.columns[static_cast<std::size_t>(*target) - 1];
    }

    // All fields are texts of one kind.
    void requireText(const std::string& type, std::int64_t field) {
        const bool wide = equalsIgnoringCase(type, "SQLNCHAR");
        if (!wide && !equalsIgnoringCase(type, "SQLCHAR")) {
            if (!asciiUpper(type).starts_with("SQL")) wrongField(Message::BulkFormatType, field);
            throw tsql::unsupported("BULK INSERT of fields of type " + type, line_);
        }
        noteWidth(wide);
    }

    void noteWidth(bool wide) {
        if (!result_.fields.empty() && wide != result_.wideText) {
            throw tsql::unsupported("BULK INSERT of fields in several encodings", line_);
        }
        result_.wideText = wide;
    }

    // That of wide text is written with both bytes of its letters.
    [[nodiscard]] std::string terminatorOf(const std::string& text, std::int64_t field,
                                           std::int64_t length) const {
        std::string result = tsql::bulkTerminator(text, line_);
        if (result_.wideText) std::erase(result, '\0');
        if (result.empty() && length == 0) wrongField(Message::BulkFormatTerminator, field);
        return result;
    }

    // --- XML

    static std::string unescaped(std::string_view text) {
        static constexpr std::array kEntities = std::to_array<std::pair<std::string_view, char>>(
            {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}});
        std::string result;
        while (!text.empty()) {
            const auto* const entity = std::ranges::find_if(
                kEntities, [&](const auto& each) { return text.starts_with(each.first); });
            const bool plain = entity == kEntities.end();
            result += plain ? text.front() : entity->second;
            text.remove_prefix(plain ? 1 : entity->first.size());
        }
        return result;
    }

    // name="value" of an element, from behind its name up to its end.
    static Attributes attributesOf(std::string_view element) {
        Attributes result;
        while (true) {
            const std::size_t equal = element.find('=');
            if (equal == std::string_view::npos) return result;
            std::string_view name = element.substr(0, equal);
            while (!name.empty() && isBlank(name.back()))
                name.remove_suffix(1);
            name.remove_prefix(std::min(name.find_last_of(" \t\r\n") + 1, name.size()));
            const std::size_t open = element.find_first_of("\"'", equal);
            if (open == std::string_view::npos) return result;
            const std::size_t close = element.find(element[open], open + 1);
            if (close == std::string_view::npos) return result;
            result[asciiUpper(name)] = unescaped(element.substr(open + 1, close - open - 1));
            element.remove_prefix(close + 1);
        }
    }

    // The elements of that name.
    [[nodiscard]] std::vector<Attributes> elements(std::string_view name) const {
        std::vector<Attributes> result;
        const std::string begin = "<" + std::string(name);
        for (std::size_t at = text_.find(begin); at != std::string::npos;
             at = text_.find(begin, at + 1)) {
            const std::size_t start = at + begin.size();
            if (start >= text_.size() || !isBlank(text_[start])) continue;
            const std::size_t end = std::min(text_.find('>', start), text_.size());
            result.push_back(attributesOf(std::string_view(text_).substr(start, end - start)));
        }
        return result;
    }

    static std::string valueOf(const Attributes& attributes, std::string_view name) {
        const auto found = attributes.find(name);
        return found == attributes.end() ? std::string() : found->second;
    }

    void readXml() {
        std::vector<std::string> names;
        for (const Attributes& each : elements("FIELD")) {
            names.push_back(valueOf(each, "ID"));
            readField(each, static_cast<std::int64_t>(names.size()));
        }
        std::size_t place = 0;
        for (const Attributes& each : elements("COLUMN")) {
            const auto source = std::ranges::find(names, valueOf(each, "SOURCE"));
            const Column* column = table_.find(valueOf(each, "NAME"));
            if (column == nullptr && place < table_.columns.size()) {
                column = &table_.columns[place];
            }
            ++place;
            if (source == names.end() || column == nullptr) {
                wrongField(Message::BulkFormatTarget, static_cast<std::int64_t>(place));
            }
            result_.fields[static_cast<std::size_t>(source - names.begin())].column = column;
        }
    }

    void readField(const Attributes& attributes, std::int64_t field) {
        const std::string type = valueOf(attributes, "XSI:TYPE");
        const bool wide = type.starts_with("N") && type != "NativeFixed" && type != "NativePrefix";
        const bool fixed = type == "CharFixed" || type == "NCharFixed";
        if (!fixed && type != "CharTerm" && type != "NCharTerm") {
            throw tsql::unsupported("BULK INSERT of fields of type " + type, line_);
        }
        noteWidth(wide);
        BulkField& result = result_.fields.emplace_back();
        if (fixed) {
            const auto length = plain::readWhole(valueOf(attributes, "LENGTH"));
            if (!length || *length < 1) wrongField(Message::BulkFormatLength, field);
            result.length = *length;
            return;
        }
        result.terminator = terminatorOf(valueOf(attributes, "TERMINATOR"), field, 0);
    }

    const std::string& file_;
    const Table& table_;
    int line_;
    std::string text_;
    BulkFormat result_;
};

}  // namespace

BulkFormat bulkFormat(const std::string& file, const Table& table, int line) {
    return FormatReader(file, table, line).format();
}

}  // namespace kap::engine

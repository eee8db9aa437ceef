#include "engine/executor/bulk_file.hpp"

#include <array>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

#include "engine/values/text_units.hpp"
#include "platform/text_encoding.hpp"
#include "platform/whole_file.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using platform::TextEncoding;
using tsql::ServerError;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Which bytes stand for which letters is said by the statement, or shown by the file itself.
TextEncoding encodingOf(const tsql::BulkInsertStatement& bulk, std::string_view bytes, int line) {
    const bool marked = bytes.starts_with(kUtf8Mark);
    if (bulk.wideText) return TextEncoding::Utf16Marked;
    if (bulk.codePage == "65001") return marked ? TextEncoding::Utf8Marked : TextEncoding::Utf8;
    if (bulk.codePage == "1252") return TextEncoding::Windows1252;
    if (bulk.codePage.empty() || bulk.codePage == "ACP" || bulk.codePage == "RAW" ||
        bulk.codePage == "OEM") {
        return platform::encodingOf(bytes);
    }
    throw tsql::unsupported("BULK INSERT WITH CODEPAGE = " + bulk.codePage, line);
}

std::string textIn(const tsql::BulkInsertStatement& bulk, int line) {
    std::string bytes = bytesOfFile(bulk.file, line);
    constexpr std::string_view kWideMark = "\xFF\xFE";
    if (bulk.wideText && !std::string_view(bytes).starts_with(kWideMark)) {
        return fromUnits(platform::fromUtf16Bytes(bytes));
    }
    const TextEncoding encoding = encodingOf(bulk, bytes, line);
    // Bytes that are none of UTF-8, and may be here, are told of their field.
    if (encoding == TextEncoding::Utf8Marked) bytes.erase(0, kUtf8Mark.size());
    if (encoding == TextEncoding::Utf8Marked || encoding == TextEncoding::Utf8) return bytes;
    return fromUnits(platform::decodeText(encoding, bytes));
}

}  // namespace

std::string bytesOfFile(const std::string& name, int line) {
    const std::filesystem::path path(std::u8string(name.begin(), name.end()));
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        throw ServerError(tsql::Message::BulkFileNotOpened, {name, "5(Access is denied.)"}, line);
    }
    std::optional<std::string> bytes;
    try {
        bytes = platform::readFile(path);
    } catch (const std::exception& failure) {
        throw ServerError(tsql::Message::BulkFileNotOpened, {name, failure.what()}, line);
    }
    if (!bytes) throw ServerError(tsql::Message::NoBulkFile, {name}, line);
    return std::move(*bytes);
}

BulkFile::BulkFile(const tsql::BulkInsertStatement& bulk, int line)
    : fieldTerminator_(bulk.fieldTerminator),
      rowTerminator_(bulk.rowTerminator),
      quote_(bulk.quote),
      line_(line),
      text_(textIn(bulk, line)) {}

// "\n" as the terminator also stands for the ends of lines that have a "\r" before it.
bool BulkFile::atRowEnd(std::size_t& length) const {
    const std::string_view rest = std::string_view(text_).substr(at_);
    if (rest.starts_with(rowTerminator_)) {
        length = rowTerminator_.size();
        return true;
    }
    length = 2;
    return rowTerminator_ == "\n" && rest.starts_with("\r\n");
}

// "a ""quoted"" field".
std::string BulkFile::quoted() {
    std::string value;
    for (++at_; at_ < text_.size(); ++at_) {
        if (text_[at_] == quote_) {
            ++at_;
            if (at_ == text_.size() || text_[at_] != quote_) return value;
        }
        value += text_[at_];
    }
    throw ServerError(tsql::Message::BulkFileEnds, {}, line_);
}

std::optional<std::string> BulkFile::field(bool last) {
    std::string value;
    bool given = false;
    if (quote_ != '\0' && at_ < text_.size() && text_[at_] == quote_) {
        value = quoted();
        given = true;
    }
    while (at_ < text_.size()) {
        std::size_t length = fieldTerminator_.size();
        const bool ends = last ? atRowEnd(length)
                               : std::string_view(text_).substr(at_).starts_with(fieldTerminator_);
        if (ends) {
            at_ += length;
            return given || !value.empty() ? std::optional(std::move(value)) : std::nullopt;
        }
        value += text_[at_++];
    }
    // The last row may lack its end.
    if (!last) throw ServerError(tsql::Message::BulkFileEnds, {}, line_);
    return given || !value.empty() ? std::optional(std::move(value)) : std::nullopt;
}

std::optional<std::vector<std::optional<std::string>>> BulkFile::next(std::size_t fields) {
    if (at_ == text_.size()) return std::nullopt;
    std::vector<std::optional<std::string>> row;
    row.reserve(fields);
    for (std::size_t i = 0; i < fields; ++i)
        row.push_back(field(i + 1 == fields));
    return row;
}

}  // namespace kap::engine

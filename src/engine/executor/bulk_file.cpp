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
TextEncoding encodingOf(const tsql::BulkInsertStatement& bulk, bool wide, std::string_view bytes,
                        int line) {
    const bool marked = bytes.starts_with(kUtf8Mark);
    if (wide) return TextEncoding::Utf16Marked;
    if (bulk.codePage == "65001") return marked ? TextEncoding::Utf8Marked : TextEncoding::Utf8;
    if (bulk.codePage == "1252") return TextEncoding::Windows1252;
    if (bulk.codePage.empty() || bulk.codePage == "ACP" || bulk.codePage == "RAW" ||
        bulk.codePage == "OEM") {
        return platform::encodingOf(bytes);
    }
    throw tsql::unsupported("BULK INSERT WITH CODEPAGE = " + bulk.codePage, line);
}

std::string textIn(const tsql::BulkInsertStatement& bulk, bool wide, int line) {
    std::string bytes = bytesOfFile(bulk.file, line);
    constexpr std::string_view kWideMark = "\xFF\xFE";
    if (wide && !std::string_view(bytes).starts_with(kWideMark)) {
        return fromUnits(platform::fromUtf16Bytes(bytes));
    }
    const TextEncoding encoding = encodingOf(bulk, wide, bytes, line);
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

BulkFile::BulkFile(const tsql::BulkInsertStatement& bulk, BulkFormat format, int line)
    : fields_(std::move(format.fields)),
      quote_(bulk.quote),
      line_(line),
      text_(textIn(bulk, bulk.wideText || format.wideText, line)) {}

// How long the terminator is that stands here; 0: none does. "\n" also stands for the ends of lines
// that have a "\r" before it.
std::size_t BulkFile::terminatorHere(const BulkField& field) const {
    const std::string_view rest = std::string_view(text_).substr(at_);
    if (rest.starts_with(field.terminator)) return field.terminator.size();
    return field.terminator == "\n" && rest.starts_with("\r\n") ? 2 : 0;
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

std::string BulkFile::ofLength(std::int64_t letters, bool last) {
    const std::size_t start = at_;
    const auto goesOn = [this] {
        constexpr unsigned kMark = 0xC0U;
        constexpr unsigned kRest = 0x80U;
        return at_ < text_.size() && (static_cast<unsigned char>(text_[at_]) & kMark) == kRest;
    };
    for (; letters > 0 && at_ < text_.size(); --letters) {
        for (++at_; goesOn();)
            ++at_;
    }
    if (letters > 0 && !last) throw ServerError(tsql::Message::BulkFileEnds, {}, line_);
    return text_.substr(start, at_ - start);
}

std::optional<std::string> BulkFile::field(const BulkField& field, bool last) {
    const auto unlessEmpty = [](std::string value, bool given) {
        return given || !value.empty() ? std::optional(std::move(value)) : std::nullopt;
    };
    if (field.terminator.empty()) return unlessEmpty(ofLength(field.length, last), false);
    std::string value;
    bool given = false;
    if (quote_ != '\0' && at_ < text_.size() && text_[at_] == quote_) {
        value = quoted();
        given = true;
    }
    while (at_ < text_.size()) {
        if (const std::size_t length = terminatorHere(field); length > 0) {
            at_ += length;
            return unlessEmpty(std::move(value), given);
        }
        value += text_[at_++];
    }
    // The last row may lack its end.
    if (!last) throw ServerError(tsql::Message::BulkFileEnds, {}, line_);
    return unlessEmpty(std::move(value), given);
}

std::optional<std::vector<std::optional<std::string>>> BulkFile::next() {
    if (at_ == text_.size()) return std::nullopt;
    std::vector<std::optional<std::string>> row;
    row.reserve(fields_.size());
    for (const BulkField& each : fields_)
        row.push_back(field(each, &each == &fields_.back()));
    return row;
}

}  // namespace kap::engine

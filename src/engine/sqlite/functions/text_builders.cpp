#include <cstdint>
#include <optional>
#include <string>

#include <kaputil/automation/plain_text.hpp>

#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/json_text.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

// CONCAT_WS, TRANSLATE, STRING_ESCAPE, TRIM of given letters, and column.WRITE.
namespace kap::engine {

namespace {

// kap_concat_ws(separator, texts...): a null separator is none.
Value concatWithSeparator(const Arguments& arguments) {
    const std::string separator(arguments.isNull(0) ? "" : arguments.text(0));
    std::string result;
    bool first = true;
    for (int i = 1; i < arguments.count(); ++i) {
        if (arguments.isNull(i)) continue;
        if (!first) result += separator;
        result += arguments.text(i);
        first = false;
    }
    return result;
}

// kap_translate(text, letters, others): each letter becomes the one at its place, whatever its
// case.
Value translateLetters(const Arguments& arguments) {
    const std::u16string letters = foldedUnits(arguments.text(1));
    const std::u16string others = toUnits(arguments.text(2));
    if (letters.size() != others.size()) {
        throw tsql::ServerError(tsql::Message::UnequalTranslation);
    }
    std::u16string units = toUnits(arguments.text(0));
    const std::u16string folded = foldedUnits(arguments.text(0));
    for (std::size_t i = 0; i < units.size() && units.size() == folded.size(); ++i) {
        const std::size_t place = letters.find(folded[i]);
        if (place != std::u16string::npos) units[i] = others[place];
    }
    return fromUnits(units);
}

// kap_trim_letters(text, letters): without these letters at both ends, whatever their case.
Value trimLetters(const Arguments& arguments) {
    const std::u16string units = toUnits(arguments.text(0));
    const std::u16string folded = foldedUnits(arguments.text(0));
    const std::u16string letters = foldedUnits(arguments.text(1));
    const std::size_t first = folded.find_first_not_of(letters);
    if (folded.size() != units.size() || first == std::u16string::npos) {
        return folded.size() == units.size() ? std::string() : std::string(arguments.text(0));
    }
    return fromUnits(units.substr(first, folded.find_last_not_of(letters) - first + 1));
}

// `whole` with a part replaced from `offset` on: at its end where no offset is given, up to its end
// where no length is. No new part cuts it off.
template <typename Units>
Units writtenPart(Units whole, const std::optional<Units>& part, const Arguments& arguments) {
    constexpr int kOffset = 2;
    constexpr int kLength = 3;
    const auto size = static_cast<std::int64_t>(whole.size());
    const bool appends = arguments.isNull(kOffset);
    const std::int64_t offset = appends ? size : arguments.integer(kOffset);
    if (offset < 0 || offset > size) {
        throw tsql::ServerError(tsql::Message::WriteOffsetOutOfRange, {plain::text(offset)});
    }
    const bool given = !appends && !arguments.isNull(kLength);
    const std::int64_t length = given ? arguments.integer(kLength) : size;
    if (length < 0) {
        throw tsql::ServerError(tsql::Message::WriteLengthOutOfRange, {plain::text(length)});
    }
    whole.replace(static_cast<std::size_t>(offset),
                  part ? static_cast<std::size_t>(length) : Units::npos, part.value_or(Units()));
    return whole;
}

// kap_write_part(whole, part, offset, length)
Value writePart(const Arguments& arguments) {
    if (arguments.isNull(0)) return {};
    const bool cuts = arguments.isNull(1);
    if (arguments.kind(0) == SQLITE_BLOB) {
        const auto part = cuts ? std::nullopt : std::optional(arguments.blob(1).bytes);
        return Blob{writtenPart(arguments.blob(0).bytes, part, arguments)};
    }
    const auto part = cuts ? std::nullopt : std::optional(toUnits(arguments.text(1)));
    return fromUnits(writtenPart(toUnits(arguments.text(0)), part, arguments));
}

Value escapeAsJson(const Arguments& arguments) {
    const std::string quoted = jsonString(arguments.text(0));
    return quoted.substr(1, quoted.size() - 2);
}

}  // namespace

void registerTextBuilders(Registrar& registrar) {
    registrar.scalar("kap_concat_ws", -1, concatWithSeparator, OnNull::Call);
    registrar.scalar("kap_translate", 3, translateLetters);
    registrar.scalar("kap_trim_letters", 2, trimLetters);
    registrar.scalar("kap_write_part", 4, writePart, OnNull::Call);
    registrar.scalar("kap_string_escape", 1, escapeAsJson);
}

}  // namespace kap::engine

#include <string>

#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/json_text.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

// CONCAT_WS, TRANSLATE, STRING_ESCAPE.
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

Value escapeAsJson(const Arguments& arguments) {
    const std::string quoted = jsonString(arguments.text(0));
    return quoted.substr(1, quoted.size() - 2);
}

}  // namespace

void registerTextBuilders(Registrar& registrar) {
    registrar.scalar("kap_concat_ws", -1, concatWithSeparator, OnNull::Call);
    registrar.scalar("kap_translate", 3, translateLetters);
    registrar.scalar("kap_string_escape", 1, escapeAsJson);
}

}  // namespace kap::engine

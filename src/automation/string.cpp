#include <kaputil/automation/error.hpp>
#include <kaputil/automation/string.hpp>

#include "base/unicode.hpp"

namespace kap {

String::String(std::string_view utf8) {
    auto text = unicode::utf16(utf8);
    if (!text) {
        throw AutomationError(errors::kInvalidArgument, u"The text is not valid UTF-8.");
    }
    text_ = std::move(*text);
}

std::string String::utf8() const {
    auto bytes = unicode::utf8(text_);
    if (!bytes) {
        throw AutomationError(
            errors::kInvalidArgument,
            u"The text holds half of a surrogate pair, which UTF-8 cannot carry.");
    }
    return std::move(*bytes);
}

}  // namespace kap

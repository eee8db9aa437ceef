#include "engine/values/code_page_text.hpp"

#include <algorithm>

#include "base/code_page.hpp"
#include "engine/values/text_units.hpp"

namespace kap::engine {

namespace {

// The letters up to U+00FF are all in the code page: their first bytes are lower than this one.
constexpr unsigned char kFirstBeyond = 0xC4;

bool mayLeaveCodePage(std::string_view text) {
    return std::ranges::any_of(
        text, [](char each) { return static_cast<unsigned char>(each) >= kFirstBeyond; });
}

}  // namespace

std::string inCodePage(std::string text) {
    if (!mayLeaveCodePage(text)) return text;
    return codePageText(codePageBytes(text));
}

std::string codePageBytes(std::string_view text) {
    return encodeLossy(CodePage::Windows1252, toUnits(text));
}

std::string codePageText(std::string_view bytes) {
    return fromUnits(decode(CodePage::Windows1252, bytes));
}

}  // namespace kap::engine

#include "tsql/currency.hpp"

#include <algorithm>
#include <array>

namespace kap::tsql {

namespace {

// Currency-neutral by design: which sign it is changes nothing about the amount.
constexpr std::array kSigns = std::to_array<std::string_view>(
    {"$", "¢", "£", "¤", "¥", "৲", "৳", "฿", "៛", "₠", "₡", "₢",  "₣",  "₤",  "₥",  "₦",  "₧",
     "₨", "₩", "₪", "₫", "€", "₭", "₮", "₯", "₰", "₱", "﷼", "﹩", "＄", "￠", "￡", "￥", "￦"});

}  // namespace

std::size_t currencySignAt(std::string_view text) {
    const auto* const sign =
        std::ranges::find_if(kSigns, [&](std::string_view each) { return text.starts_with(each); });
    return sign == kSigns.end() ? 0 : sign->size();
}

}  // namespace kap::tsql

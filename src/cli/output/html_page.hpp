#pragma once

#include <string>
#include <string_view>

#include "cli/output/language.hpp"

// Pages that stand by themselves: one file with its styles in it, nothing from elsewhere, that
// reads well on a screen of any width and prints on numbered pages.
namespace kap::cli {

// A text as it stands in a page, also within a quoted attribute.
[[nodiscard]] std::string html(std::string_view text);

// <tag class="className">text</tag> with the text escaped; without a class when it is empty.
[[nodiscard]] std::string element(std::string_view tag, std::string_view text,
                                  std::string_view className = {});

// What stands in front of a page's body and behind it, for pages that are written as they come.
[[nodiscard]] std::string htmlPageBegin(Language language, std::string_view title,
                                        std::string_view styles);
inline constexpr std::string_view kHtmlPageEnd = "</body>\n</html>\n";

// The whole page around a body. `styles` are added to those that all pages share.
[[nodiscard]] std::string htmlPage(Language language, std::string_view title,
                                   std::string_view styles, std::string_view body);

}  // namespace kap::cli

#pragma once

#include <kaputil/automation/locale.hpp>

namespace kap {

// The locale whose language texts for people are in: the one set with `setLocale`, else the one
// that the environment names (KAPUTIL_LOCALE, LC_ALL, LC_MESSAGES, LANG, the first that is known),
// else Italian. Who reads English may count as Italians do.
[[nodiscard]] const Locale& localeOfTexts();

}  // namespace kap

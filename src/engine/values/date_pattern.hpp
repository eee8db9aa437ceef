#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <kaputil/automation/locale.hpp>

#include "engine/values/dates.hpp"

// FORMAT of dates: the patterns of the server's host language, standard ("d", "D", "s") and custom
// ("dd/MM/yyyy HH:mm").
namespace kap::engine {

// A date and time, with the minutes that its clock is ahead of universal time where it says so.
struct FormattedDate {
    DateParts parts;
    std::optional<int> offset = std::nullopt;
};

// The date's text; nullopt for a format that dates do not have.
[[nodiscard]] std::optional<std::u16string> formatDate(const FormattedDate& date,
                                                       std::u16string_view format,
                                                       const Locale& locale);

// The same of a time of day, which has formats of its own: "c", "g", "G", and letters among which
// every other sign is behind a backslash or in quotes ("hh\\:mm").
[[nodiscard]] std::optional<std::u16string> formatTime(const DateParts& time,
                                                       std::u16string_view format,
                                                       const Locale& locale);

}  // namespace kap::engine

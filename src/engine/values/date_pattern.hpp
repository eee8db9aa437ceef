#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <kaputil/automation/locale.hpp>

// FORMAT of dates: the patterns of the server's host language, standard ("d", "D", "s") and custom
// ("dd/MM/yyyy HH:mm").
namespace kap::engine {

// The instant's text; nullopt for a format that dates do not have.
[[nodiscard]] std::optional<std::u16string> formatDate(double stored, std::u16string_view format,
                                                       const Locale& locale);

}  // namespace kap::engine

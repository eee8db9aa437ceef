#pragma once

#include <optional>
#include <string_view>

#include "engine/values/fine_dates.hpp"

// The zones of AT TIME ZONE, by the names that the server's host gives them. Their summer time is
// by the rules that hold today, for every year.
namespace kap::engine {

// The instant on a zone's clock; nullopt for a zone that is not known.
[[nodiscard]] std::optional<Instant> inZone(std::string_view zone, const Instant& instant);

// What a zone's clock shows as an instant, the offset of `clock` aside. An hour that comes twice in
// autumn is that of standard time; one that is left out in spring is an hour later.
[[nodiscard]] std::optional<Instant> fromZone(std::string_view zone, const Instant& clock);

// The minutes that "+02:00" or "-05:30" says; nullopt for anything else, also beyond 14 hours.
[[nodiscard]] std::optional<int> readOffset(std::string_view text);

}  // namespace kap::engine

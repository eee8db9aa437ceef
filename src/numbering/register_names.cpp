#include <cstddef>

#include <kaputil/numbering/number_register.hpp>

namespace kap::numbering {

std::string_view nameOf(NumberState state) {
    static constexpr std::string_view kNames[] = {"used",    "provisional", "reserved",
                                                  "missing", "doubled",     "beyond"};
    return kNames[static_cast<std::size_t>(state)];
}

std::string_view nameOf(AnomalyKind kind) {
    static constexpr std::string_view kNames[] = {"missing",
                                                  "doubled",
                                                  "beyond",
                                                  "entryWithoutDocument",
                                                  "documentWithoutEntry",
                                                  "reservedInUse",
                                                  "reservationExpired",
                                                  "reservationUnused",
                                                  "dateBack",
                                                  "otherYear",
                                                  "counterChanged"};
    return kNames[static_cast<std::size_t>(kind)];
}

std::string_view nameOf(CarrierKind kind) {
    static constexpr std::string_view kNames[] = {"document", "invoice", "entry", "reservation"};
    return kNames[static_cast<std::size_t>(kind)];
}

}  // namespace kap::numbering

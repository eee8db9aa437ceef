#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <kaputil/numbering/number_register.hpp>

#include "cli/output/language.hpp"

// The register of document numbers in words: for programs, and for people in two languages.
namespace kap::cli {

// All states and kinds of anomaly, in the order in which they are shown.
inline constexpr std::array kNumberStates = {
    numbering::NumberState::Used,    numbering::NumberState::Reserved,
    numbering::NumberState::Missing, numbering::NumberState::Doubled,
    numbering::NumberState::Beyond,  numbering::NumberState::Provisional};

// The state of a reservation: "untouched", "read", "taken", "taken for the accounts".
[[nodiscard]] std::string reservationState(std::string_view code, Language language);

// "mancante", "missing".
[[nodiscard]] std::string_view wordFor(numbering::NumberState state, Language language);
// "movimento senza documento", "entry without document".
[[nodiscard]] std::string_view wordFor(numbering::AnomalyKind kind, Language language);

// A day in days from 30 December 1899: "2025-03-10", and with slashes "10/03/2025".
[[nodiscard]] std::string isoDay(std::int32_t day);
[[nodiscard]] std::string dayFor(std::int32_t day, Language language);

// The time without its seconds: "10/03/2025 10:30".
[[nodiscard]] std::string minuteFor(Date time, Language language);

// A whole number with its thousands parted: "1.234", "1,234".
[[nodiscard]] std::string grouped(std::int64_t number, Language language);

// "FAI 5 (10/03/2025, registrato)", "fattura FAI 5", "movimento 5 (31/01/2025)",
// "prenotazione 5 (letta)".
[[nodiscard]] std::string carrierText(const numbering::NumberRegister& numberRegister,
                                      const numbering::Carrier& carrier, Language language);

// Several of them with commas between.
[[nodiscard]] std::string carriersText(const numbering::NumberRegister& numberRegister,
                                       std::span<const numbering::Carrier> carriers,
                                       Language language);

// Who or what is meant: the carriers with commas between; of missing numbers where they are
// missing; of a type that changed its counter, from where to where.
[[nodiscard]] std::string anomalyText(const numbering::NumberRegister& numberRegister,
                                      const numbering::Anomaly& anomaly, Language language);

// "11", "11-12".
[[nodiscard]] std::string rangeText(std::int64_t first, std::int64_t last);

}  // namespace kap::cli

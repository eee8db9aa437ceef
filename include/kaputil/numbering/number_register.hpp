#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>

// The register of document numbers: whether every number of a counter and year can be accounted
// for. It lists the numbers from 1 to the counter's definitive value with who carries each, and
// tells what is not as it should be.
//
//     auto registers = kap::numbering::readRegisters(connection, {.counter = u"FAT", .year =
//     2025}); for (const auto& anomaly : registers.front().anomalies) ...
//
// Who carries a number: a document (mag_TDocumenti, by the counter of its type), an invoice
// (mag_TFatture, by NumFat), an accounting entry whose register is the counter's code (con_MovConT
// and con_MovConD), a reservation (vtx_TabProPrenotati). A document that is registered in the
// accounts and the entry with its number are one thing, as are a document and its row among the
// invoices.
namespace kap::numbering {

enum class CarrierKind : std::uint8_t { Document, Invoice, Entry, Reservation };

// One row that carries a number.
struct Carrier {
    std::int64_t number = 0;
    std::int32_t day = 0;     // its date in days from 30 December 1899; 0 when it has none
    std::uint32_t label = 0;  // see NumberRegister::labelOf
    CarrierKind kind = CarrierKind::Document;
    bool registered = false;  // a document that names its accounting entry
    bool ofDocument = false;  // an invoice whose document has the same number

    friend bool operator==(const Carrier&, const Carrier&) = default;
};

enum class NumberState : std::uint8_t {
    Used,         // carried once
    Provisional,  // above the definitive value, within the provisional one of a counter with both
    Reserved,     // only reserved
    Missing,      // carried by nobody
    Doubled,      // carried by more than one
    Beyond,       // carried, but below 1 or above the definitive value
};

// The numbers `first` to `last`: several only where nobody carries them. The carriers belong to the
// register that the line was made of.
struct RegisterLine {
    std::int64_t first = 0;
    std::int64_t last = 0;
    NumberState state = NumberState::Missing;
    std::span<const Carrier> carriers;
};

enum class AnomalyKind : std::uint8_t {
    Missing,  // carried by nobody; the carriers are the nearest below and above
    Doubled,  // two documents, a document and an invoice of another, a document that is not
              // registered and an entry, two entries, or two reservations
    Beyond,   // carried, but below 1 or above the definitive value
    EntryWithoutDocument,  // of a counter that document types draw from
    DocumentWithoutEntry,  // registered in the accounts, where no entry has its number
    ReservedInUse,         // carried, and still reserved as if it were free
    ReservationExpired,    // still reserved when the year is over
    ReservationUnused,     // taken (state U or M), but carried by nobody
    DateBack,              // a document dated before one with a lower number, which comes second
    OtherYear,             // a document whose date lies in another year
    CounterChanged,        // a type that draws from `other` now, its documents first to last
                           // from this counter; in the register of `other` the same the other way
};

struct Anomaly {
    AnomalyKind kind = AnomalyKind::Missing;
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::vector<Carrier> carriers;
    String other;
};

struct RegisterTotals {
    // Numbers by their state; those of Used, Reserved, Missing and Doubled up to the definitive
    // value.
    std::int64_t used = 0;
    std::int64_t reserved = 0;
    std::int64_t missing = 0;
    std::int64_t doubled = 0;
    // Numbers outside 1 to the definitive value that are provisional, reserved ahead, or beyond.
    std::int64_t provisional = 0;
    std::int64_t ahead = 0;
    std::int64_t beyond = 0;

    friend bool operator==(const RegisterTotals&, const RegisterTotals&) = default;
};

struct NumberRegister {
    String counter;
    String description;  // empty when the table of counters has none
    int year = 0;
    bool hasCounter = true;  // false: there are documents or reservations, but no such counter
    bool keepsProvisional = false;
    std::optional<std::int64_t> definitive;  // the last number given out; nullopt is Null
    std::optional<std::int64_t> provisional;
    std::vector<Carrier> carriers;   // by number, then in the order of CarrierKind
    std::vector<Anomaly> anomalies;  // by number
    RegisterTotals totals;
    std::shared_ptr<const std::vector<String>> labels;

    // The type of a document or invoice, the state of a reservation as it is kept ("", "D", "U",
    // "M"); empty for an entry.
    [[nodiscard]] const String& labelOf(const Carrier& carrier) const {
        return (*labels)[carrier.label];
    }
};

// Which registers to read: all, or those of a counter (compared without regard to case) or a year.
struct RegisterRequest {
    std::optional<String> counter = std::nullopt;
    std::optional<int> year = std::nullopt;
    // The day that decides whether a reservation has expired; without it, today.
    std::optional<Date> today = std::nullopt;
};

// Reads the registers, in the order of counter and year. Each table is read once, and the counters
// once more at the end: a number that is given out meanwhile is neither missing nor beyond. Nothing
// is written.
//
// `connessione` is an open connection, or a connection string that is opened in place. The table of
// counters must be there. Of the others each may be missing in a database whose programs do not
// need it, and the columns mag_TDocumenti.Data and MC_Registrazione, too; what they would show is
// then left out. Raises the database's errors, and 13 for a number or year that is none.
[[nodiscard]] KAPUTIL_EXPORT std::vector<NumberRegister> readRegisters(
    ByRef<Variant> connessione, const RegisterRequest& request = {});

// The names that programs know them by: "missing", "entryWithoutDocument", "document".
[[nodiscard]] KAPUTIL_EXPORT std::string_view nameOf(NumberState state);
[[nodiscard]] KAPUTIL_EXPORT std::string_view nameOf(AnomalyKind kind);
[[nodiscard]] KAPUTIL_EXPORT std::string_view nameOf(CarrierKind kind);

// The lines of a register: every number from 1 to the definitive value, and what is carried outside
// of that, by number.
[[nodiscard]] KAPUTIL_EXPORT std::vector<RegisterLine> linesOf(
    const NumberRegister& numberRegister);

}  // namespace kap::numbering

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include <kaputil/automation/variant.hpp>
#include <kaputil/numbering/number_register.hpp>

// Reads the tables that a register is made of, each once.
namespace kap::numbering {

// A counter, as its position in `RegisterRows::counters`, and a year.
struct CounterYear {
    std::uint32_t counter = 0;
    int year = 0;

    friend bool operator==(const CounterYear&, const CounterYear&) = default;
    friend bool operator<(const CounterYear& left, const CounterYear& right) {
        return std::tie(left.counter, left.year) < std::tie(right.counter, right.year);
    }
};

struct CountedRow {
    CounterYear of;
    Carrier carrier;
};

struct CounterRow {
    CounterYear of;
    String description;
    bool keepsProvisional = false;
    std::optional<std::int64_t> definitive;
    std::optional<std::int64_t> provisional;
};

// Texts by their position, each there once. The first is empty.
class Labels {
public:
    Labels() { exactly({}); }
    // Ignoring case, as the database compares codes.
    std::uint32_t ignoringCase(const String& code);
    std::uint32_t exactly(const String& text);
    [[nodiscard]] const std::vector<String>& texts() const { return texts_; }

private:
    using Positions = std::unordered_map<std::u16string, std::uint32_t>;
    std::uint32_t add(Positions& positions, std::u16string key, const String& text);

    std::vector<String> texts_;
    Positions byCapitals_;
    Positions byText_;
};

struct RegisterRows {
    Labels counters;
    Labels labels;
    std::vector<CounterRow> rows;
    std::vector<CounterRow> rowsAtTheEnd;  // the same table, read again behind the others
    std::vector<bool> typesDraw;           // by counter
    bool entriesRead = false;
    std::vector<CountedRow> papers;  // documents, invoices and reservations
    // Of both tables: of the second one a number, and only where the first has none with it.
    std::vector<CountedRow> entries;
};

// Raises the database's errors, and 13 for what should be a number and is none.
[[nodiscard]] RegisterRows readRegisterRows(Variant& connection, const std::optional<int>& year);

}  // namespace kap::numbering

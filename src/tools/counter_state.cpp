#include "tools/counter_state.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/frame/convert.hpp>
#include <kaputil/frame/plain_text.hpp>
#include <kaputil/util/values.hpp>

namespace kap::tools {
namespace {

std::string literal(const std::string& text) {
    return "'" + util::kapApice(text).utf8() + "'";
}

Variant valueOf(const ado::Recordset& rows, const char* column) {
    return rows.Fields()->Item(column)->Value();
}

std::string textOf(const ado::Recordset& rows, const char* column) {
    const Variant value = valueOf(rows, column);
    std::string text = value.isNull() ? std::string() : convert::toString(value).utf8();
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::optional<std::int64_t> numberOf(const ado::Recordset& rows, const char* column) {
    const Variant value = valueOf(rows, column);
    if (value.isNull()) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(std::llround(convert::toDouble(value)));
}

// The rows of a counter in a table that has its year and some text column for its code.
std::string whose(const CounterState& counter, const std::string& codeColumn) {
    return codeColumn + " = " + literal(counter.code) + " AND Anno = " + plain::text(counter.year);
}

std::vector<Reservation> reservationsOf(ado::Connection& connection, const CounterState& counter) {
    std::vector<Reservation> found;
    const auto rows = connection.Execute("SELECT Numero, Stato FROM vtx_TabProPrenotati WHERE " +
                                         whose(counter, "Codice") + " ORDER BY Numero");
    for (; !rows->Eof(); rows->MoveNext()) {
        found.push_back({numberOf(*rows, "Numero").value_or(0), textOf(*rows, "Stato")});
    }
    return found;
}

std::vector<NumberedDocument> documentsOf(ado::Connection& connection,
                                          const CounterState& counter) {
    std::vector<NumberedDocument> found;
    const auto rows = connection.Execute(
        "SELECT mag_TDocumenti.Numero, mag_TDocumenti.Tipo FROM mag_TDocumenti INNER JOIN "
        "vtx_TabDoc ON vtx_TabDoc.Codice = mag_TDocumenti.Tipo WHERE " +
        whose(counter, "vtx_TabDoc.TipoProg") +
        " ORDER BY mag_TDocumenti.Numero, mag_TDocumenti.Tipo");
    for (; !rows->Eof(); rows->MoveNext()) {
        found.push_back({numberOf(*rows, "Numero").value_or(0), textOf(*rows, "Tipo")});
    }
    return found;
}

// What is missing between two documents, or between one and an end of the sequence. Reserved
// numbers are spoken for, and cut what is missing into pieces.
void addGaps(CounterState& counter, std::int64_t first, std::int64_t last,
             const std::optional<NumberedDocument>& before,
             const std::optional<NumberedDocument>& behind) {
    for (const Reservation& reserved : counter.reservations) {
        if (reserved.number < first || reserved.number > last) {
            continue;
        }
        if (reserved.number > first) {
            counter.gaps.push_back({first, reserved.number - 1, before, behind});
        }
        first = reserved.number + 1;
    }
    if (first <= last) {
        counter.gaps.push_back({first, last, before, behind});
    }
}

void compareWith(const std::vector<NumberedDocument>& documents, CounterState& counter) {
    const std::int64_t end = counter.definitive.value_or(0);
    std::optional<NumberedDocument> before;
    std::int64_t next = 1;  // the first number that is not accounted for
    for (const NumberedDocument& document : documents) {
        if (document.number > end) {
            counter.beyond.push_back(document);
        }
        addGaps(counter, next, std::min(document.number - 1, end), before, document);
        next = std::max(next, document.number + 1);
        before = document;
    }
    addGaps(counter, next, end, before, std::nullopt);
}

}  // namespace

std::vector<CounterState> readCounters(ado::Connection& connection,
                                       const std::optional<std::string>& code,
                                       const std::optional<int>& year) {
    std::string query = "SELECT Codice, Anno, n_Def, n_Prov FROM vtx_TabPro WHERE 1 = 1";
    if (code) {
        query += " AND Codice = " + literal(*code);
    }
    if (year) {
        query += " AND Anno = " + plain::text(*year);
    }
    std::vector<CounterState> counters;
    const auto rows = connection.Execute(query + " ORDER BY Codice, Anno");
    for (; !rows->Eof(); rows->MoveNext()) {
        CounterState counter;
        counter.code = textOf(*rows, "Codice");
        counter.year = static_cast<int>(numberOf(*rows, "Anno").value_or(0));
        counter.definitive = numberOf(*rows, "n_Def");
        counter.provisional = numberOf(*rows, "n_Prov");
        counters.push_back(std::move(counter));
    }
    for (CounterState& counter : counters) {
        counter.reservations = reservationsOf(connection, counter);
        compareWith(documentsOf(connection, counter), counter);
    }
    return counters;
}

}  // namespace kap::tools

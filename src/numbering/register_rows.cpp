#include "numbering/register_rows.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/unicode.hpp"
#include "numbering/number_text.hpp"
#include "numbering/register_analysis.hpp"

namespace kap::numbering {
namespace {

using ado::Field;
using ado::Recordset;

// Beyond this a Double no longer holds every whole number.
constexpr double kHighestNumber = 9007199254740992.0;

// The columns of a table; none when there is no such table.
class TableColumns {
public:
    TableColumns(Variant& connection, const String& table) {
        const auto rows = make<Recordset>();
        try {
            rows->Open(u"SELECT * FROM " + table + u" WHERE 1 = 0", connection);
        } catch (const AutomationError& error) {
            if (error.number() == ado::errors::kUnknownObject) {
                return;
            }
            throw;
        }
        exists_ = true;
        const auto fields = rows->Fields();
        for (std::int32_t i = 0; i < fields->Count(); ++i) {
            names_.insert(unicode::upper(fields->Item(i)->Name().view()));
        }
        rows->Close();
    }

    [[nodiscard]] bool exists() const { return exists_; }
    [[nodiscard]] bool has(std::u16string_view column) const {
        return names_.contains(unicode::upper(column));
    }
    // The column, or a constant in its place.
    [[nodiscard]] String orNull(const char16_t* column) const {
        return has(column) ? String(column) : String(u"NULL AS ") + column;
    }

private:
    bool exists_ = false;
    std::set<std::u16string, std::less<>> names_;
};

// The rows of a query, forward only, by the position of the column.
class RegisterQuery {
public:
    RegisterQuery(Variant& connection, const String& query) {
        rows_->Open(query, connection);
        const auto fields = rows_->Fields();
        for (std::int32_t i = 0; i < fields->Count(); ++i) {
            fields_.push_back(fields->Item(i));
        }
    }

    [[nodiscard]] bool atEnd() const { return rows_->Eof(); }
    void next() { rows_->MoveNext(); }

    // Null is empty; blanks at the end do not count.
    [[nodiscard]] String text(std::size_t column) const {
        const Variant value = fields_[column]->Value();
        return value.isNull() ? String()
                              : String(unicode::trimRight(convert::toString(value).view()));
    }

    // Null is nullopt.
    [[nodiscard]] std::optional<std::int64_t> number(std::size_t column) const {
        const Variant value = fields_[column]->Value();
        if (value.isNull()) {
            return std::nullopt;
        }
        const std::optional<double> number = realOf(value);
        if (!number || !(std::abs(*number) < kHighestNumber)) {
            throw AutomationError(errors::kTypeMismatch, fields_[column]->Name() + u" holds '" +
                                                             convert::toString(value) +
                                                             u"', which is no whole number");
        }
        return std::llround(*number);
    }

    [[nodiscard]] int year(std::size_t column) const {
        return static_cast<int>(number(column).value_or(0));
    }

    // The day of a date; 0 for Null.
    [[nodiscard]] std::int32_t day(std::size_t column) const {
        const Variant value = fields_[column]->Value();
        return value.isNull() ? 0
                              : static_cast<std::int32_t>(std::floor(convert::toDate(value).days));
    }

private:
    // A text is read as the database reads it, whatever the user's language.
    static std::optional<double> realOf(const Variant& value) {
        if (value.type() != VarType::String) {
            return convert::toDouble(value);
        }
        const auto real = plain::readReal(String(unicode::trim(value.as<String>().view())).utf8());
        return real ? std::optional(real->value) : std::nullopt;
    }

    Ref<Recordset> rows_ = make<Recordset>();
    std::vector<Ref<Field>> fields_;
};

bool sameEntry(const CountedRow& left, const CountedRow& right) {
    return left.of == right.of && left.carrier.number == right.carrier.number;
}

bool earlierEntry(const CountedRow& left, const CountedRow& right) {
    return std::tie(left.of, left.carrier.number) < std::tie(right.of, right.carrier.number);
}

class RegisterReader {
public:
    RegisterReader(Variant& connection, const std::optional<int>& year)
        : connection_(connection), year_(year) {}

    RegisterRows read() {
        found_.rows = counters();
        documentTypes();
        documents();
        invoices();
        reservations();
        entries();
        found_.rowsAtTheEnd = counters();
        return std::move(found_);
    }

private:
    // The condition that a column holds the year, or no condition.
    [[nodiscard]] String ofYear(const char16_t* column) const {
        return year_ ? String(u" WHERE ") + column + u" = '" + numberText(*year_) + u"'" : String();
    }

    [[nodiscard]] CounterYear of(const String& counter, int year) {
        return {found_.counters.ignoringCase(counter), year};
    }

    std::vector<CounterRow> counters() {
        std::vector<CounterRow> counters;
        const TableColumns columns(connection_, u"vtx_TabPro");
        RegisterQuery rows(connection_, u"SELECT Codice, Anno, n_Def, n_Prov, GestProvv, " +
                                            columns.orNull(u"Descrizione") + u" FROM vtx_TabPro" +
                                            ofYear(u"Anno"));
        for (; !rows.atEnd(); rows.next()) {
            CounterRow& row = counters.emplace_back();
            row.of = of(rows.text(0), rows.year(1));
            row.definitive = rows.number(2);
            row.provisional = rows.number(3);
            row.keepsProvisional = rows.number(4).value_or(0) != 0;
            row.description = rows.text(5);
        }
        return counters;
    }

    void documentTypes() {
        if (!TableColumns(connection_, u"vtx_TabDoc").exists()) {
            return;
        }
        RegisterQuery rows(connection_, u"SELECT Codice, TipoProg FROM vtx_TabDoc");
        for (; !rows.atEnd(); rows.next()) {
            const std::uint32_t counter = found_.counters.ignoringCase(rows.text(1));
            counterOfType_[found_.labels.ignoringCase(rows.text(0))] = counter;
            found_.typesDraw.resize(found_.counters.texts().size());
            found_.typesDraw[counter] = true;
        }
    }

    // Adds a document or invoice; of a type that is not known nobody can say which counter it
    // belongs to.
    void addPaper(const RegisterQuery& rows, Carrier paper) {
        paper.label = found_.labels.ignoringCase(rows.text(0));
        const auto counter = counterOfType_.find(paper.label);
        const auto number = rows.number(1);
        if (counter == counterOfType_.end() || !number) {
            return;
        }
        paper.number = *number;
        found_.papers.push_back({{counter->second, rows.year(2)}, paper});
    }

    void documents() {
        const TableColumns columns(connection_, u"mag_TDocumenti");
        if (!columns.exists()) {
            return;
        }
        RegisterQuery rows(connection_, u"SELECT Tipo, Numero, Anno, " + columns.orNull(u"Data") +
                                            u", " + columns.orNull(u"MC_Registrazione") +
                                            u" FROM mag_TDocumenti" + ofYear(u"Anno"));
        for (; !rows.atEnd(); rows.next()) {
            Carrier document;
            document.kind = CarrierKind::Document;
            document.day = rows.day(3);
            const String entry = rows.text(4);
            document.registered = !entry.empty() && entry != String(u"0");
            addPaper(rows, document);
        }
    }

    void invoices() {
        if (!TableColumns(connection_, u"mag_TFatture").exists()) {
            return;
        }
        RegisterQuery rows(
            connection_, u"SELECT Tipo, NumFat, Anno, Numero FROM mag_TFatture" + ofYear(u"Anno"));
        for (; !rows.atEnd(); rows.next()) {
            Carrier invoice;
            invoice.kind = CarrierKind::Invoice;
            invoice.ofDocument = rows.number(1) == rows.number(3);
            addPaper(rows, invoice);
        }
    }

    void reservations() {
        if (!TableColumns(connection_, u"vtx_TabProPrenotati").exists()) {
            return;
        }
        RegisterQuery rows(
            connection_,
            u"SELECT Codice, Anno, Numero, Stato FROM vtx_TabProPrenotati" + ofYear(u"Anno"));
        for (; !rows.atEnd(); rows.next()) {
            Carrier reservation;
            reservation.kind = CarrierKind::Reservation;
            reservation.label = found_.labels.exactly(rows.text(3));
            if (const auto number = rows.number(2)) {
                reservation.number = *number;
                found_.papers.push_back({of(rows.text(0), rows.year(1)), reservation});
            }
        }
    }

    void entries() {
        found_.entries = entryHeaders();
        std::ranges::sort(found_.entries, earlierEntry);
        std::vector<CountedRow> lines = entryLines();
        std::ranges::sort(lines, earlierEntry);
        lines.erase(std::unique(lines.begin(), lines.end(), sameEntry), lines.end());
        const std::size_t headers = found_.entries.size();
        for (CountedRow& line : lines) {
            const auto end = found_.entries.begin() + static_cast<std::ptrdiff_t>(headers);
            if (!std::binary_search(found_.entries.begin(), end, line, earlierEntry)) {
                found_.entries.push_back(line);
            }
        }
    }

    std::vector<CountedRow> entryHeaders() {
        if (!TableColumns(connection_, u"con_MovConT").exists() ||
            !TableColumns(connection_, u"con_TabCausali").exists()) {
            return {};
        }
        String query =
            u"SELECT con_TabCausali.Registro, con_MovConT.Protocollo, con_MovConT.Data "
            u"FROM con_MovConT INNER JOIN con_TabCausali ON "
            u"con_TabCausali.Codice = con_MovConT.Causale";
        if (year_) {
            query += u" WHERE con_MovConT.Data >= '" + numberText(*year_) +
                     u"0101' AND con_MovConT.Data < '" + numberText(*year_ + 1) + u"0101'";
        }
        found_.entriesRead = true;
        std::vector<CountedRow> found;
        for (RegisterQuery rows(connection_, query); !rows.atEnd(); rows.next()) {
            const std::int32_t day = rows.day(2);
            addEntry(found, rows.text(0), yearOf(day), rows.number(1), day);
        }
        return found;
    }

    std::vector<CountedRow> entryLines() {
        if (!TableColumns(connection_, u"con_MovConD").exists()) {
            return {};
        }
        found_.entriesRead = true;
        std::vector<CountedRow> found;
        RegisterQuery rows(connection_,
                           u"SELECT Registro, Anno, Protocollo FROM con_MovConD" + ofYear(u"Anno"));
        for (; !rows.atEnd(); rows.next()) {
            addEntry(found, rows.text(0), rows.year(1), rows.number(2), 0);
        }
        return found;
    }

    void addEntry(std::vector<CountedRow>& entries, const String& counter, int year,
                  std::optional<std::int64_t> number, std::int32_t day) {
        if (number) {
            Carrier entry;
            entry.kind = CarrierKind::Entry;
            entry.number = *number;
            entry.day = day;
            entries.push_back({of(counter, year), entry});
        }
    }

    Variant& connection_;
    const std::optional<int>& year_;
    RegisterRows found_;
    std::unordered_map<std::uint32_t, std::uint32_t> counterOfType_;
};

}  // namespace

std::uint32_t Labels::add(Positions& positions, std::u16string key, const String& text) {
    const auto next = static_cast<std::uint32_t>(texts_.size());
    const auto [place, isNew] = positions.try_emplace(std::move(key), next);
    if (isNew) {
        texts_.push_back(text);
    }
    return place->second;
}

std::uint32_t Labels::ignoringCase(const String& code) {
    return add(byCapitals_, unicode::upper(code.view()), code);
}

std::uint32_t Labels::exactly(const String& text) {
    return add(byText_, text.units(), text);
}

RegisterRows readRegisterRows(Variant& connection, const std::optional<int>& year) {
    return RegisterReader(connection, year).read();
}

}  // namespace kap::numbering

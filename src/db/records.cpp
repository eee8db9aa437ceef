#include <kaputil/db/records.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/util/values.hpp>

#include "ado/row_cursor.hpp"
#include "base/ascii.hpp"

namespace kap::db {
namespace {

using ado::ColumnInfo;
using ado::DataTypeEnum;
using ado::Recordset;

constexpr const char16_t* kVersionField = u"AggID";
constexpr std::string_view kVersionColumn = "AggID";
constexpr const char16_t* kDeletedByOthers = u"ANNULLATO_DA_ALTRI";
constexpr const char16_t* kNotGiven = u"°°°";

constexpr const char16_t* kTextDeleted =
    u"Attenzione: Record Eliminato da altro Utente, Operazione Annullata!";
constexpr const char16_t* kTextUpdated =
    u"Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!";
// The blank before the comma is part of the text.
constexpr const char16_t* kTextDeletedMeanwhile =
    u"Attenzione: Record Eliminato da altro Utente contemporaneamente , Operazione Annullata!";

// The runtime cannot make a text of this many characters.
constexpr std::int32_t kOutOfStringSpace = 14;
constexpr std::int32_t kLongestText = 0x1FFFFFFF;

// Without the field objects, which nobody but a client needs.
template <class Visit>
void forEachColumn(const Recordset& recordset, Visit visit) {
    const auto& columns = recordset.rows().columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        visit(columns[i], i);
    }
}

Variant readableValue(DataTypeEnum type, Variant value) {
    if (value.isNull()) {
        return u"";
    }
    if (type == DataTypeEnum::adSingle) {
        return convert::toCurrency(value);
    }
    if (type == DataTypeEnum::adBinary) {
        return util::TSToHex(value);
    }
    return value;
}

String blanks(std::int32_t width) {
    if (width > kLongestText) {
        throw AutomationError(kOutOfStringSpace, u"Out of string space");
    }
    return std::u16string(static_cast<std::size_t>(width), u' ');
}

// What a field of a missing record reads as. Blanks of the field's width for every type that is not
// named, numbers among them: clients bind the string to inputs of fixed width.
Variant neutralValue(const ColumnInfo& column) {
    switch (column.type) {
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
        case DataTypeEnum::adCurrency:
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
        case DataTypeEnum::adLongVarBinary:
            return std::int16_t{0};
        case DataTypeEnum::adBinary:
        case DataTypeEnum::adDBTimeStamp:
        case DataTypeEnum::adLongVarChar:
            return u"";
        default:
            return blanks(column.definedSize);
    }
}

Variant blankFor(DataTypeEnum type) {
    switch (type) {
        case DataTypeEnum::adSingle:
        case DataTypeEnum::adDouble:
        case DataTypeEnum::adCurrency:
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
            return std::int16_t{0};
        case DataTypeEnum::adVarChar:
        case DataTypeEnum::adLongVarChar:
            return u"";
        default:
            return Variant::null();
    }
}

// The value to assign for a property's text. Types that are not named take the text as it is.
Variant valueFor(DataTypeEnum type, const Variant& text) {
    if (util::kapEmpty(text)) {
        return blankFor(type);
    }
    switch (type) {
        case DataTypeEnum::adSingle:
            return convert::toSingle(text);
        case DataTypeEnum::adCurrency:
            return convert::toCurrency(text);
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
            return convert::toDecimal(text);
        case DataTypeEnum::adDBTimeStamp:
            return convert::toDate(text);
        default:
            return text;
    }
}

bool holdsText(const Variant& property) {
    return !property.isNull() && !convert::toString(property).empty();
}

// The row's version; raises 3265 where it has none. It is found without the names by which only a
// client looks fields up.
Variant versionOf(const Recordset& recordset) {
    const auto& columns = recordset.rows().columns();
    const auto found = std::ranges::find_if(columns, [](const ColumnInfo& column) {
        return equalsIgnoringCase(column.name, kVersionColumn);
    });
    return found == columns.end()
               ? recordset.Fields()->Item(kVersionField)->Value()
               : recordset.rows().value(static_cast<std::size_t>(found - columns.begin()));
}

// The row version to compare with: the database's, a mark when the row is gone, or, for a new
// record, whatever makes the comparison succeed.
String versionFound(Recordset& recordset, CProprieta& properties) {
    if (recordset.RecordCount() >= 1) {
        return util::TSToHex(versionOf(recordset));
    }
    const Variant known = properties.Leggi(kVersionField);
    if (holdsText(known)) {
        return kDeletedByOthers;
    }
    recordset.AddNew();
    if (!known.isNull()) {
        return {};
    }
    String version = convert::toString(versionOf(recordset));
    properties.Scrivi(kVersionField, version);
    return version;
}

bool sameVersion(const Variant& known, const String& found) {
    return !known.isNull() && convert::toString(known) == found;
}

void report(CErrore& errore, const char16_t* message) {
    errore.setNumero(std::int16_t{1});
    errore.AddMessaggio(message);
}

void assignFields(Recordset& recordset, const CProprieta& properties) {
    forEachColumn(recordset, [&](const ColumnInfo& column, std::size_t i) {
        const Variant text = properties.Leggi(column.name);
        if (!text.isNull()) {
            recordset.rows().assign(i, valueFor(column.type, text));
        }
    });
}

// The live, updatable recordset that the writing members work on.
Ref<Recordset> openLive(ByRef<Variant> connection, const String& sql, bool deleteNull) {
    return OpenRecordset(
        sql, connection, static_cast<std::int16_t>(ado::CursorTypeEnum::adOpenKeyset),
        static_cast<std::int16_t>(ado::LockTypeEnum::adLockOptimistic), -1, deleteNull,
        /*closeConnection=*/false, static_cast<std::int16_t>(ado::CursorLocationEnum::adUseServer));
}

// Deletes the first record; false when there is none.
bool deleteFirst(ByRef<Variant> connection, const String& sql) {
    const auto recordset = openLive(connection, sql, /*deleteNull=*/false);
    if (recordset->Bof() && recordset->Eof()) {
        return false;
    }
    recordset->Delete();
    recordset->Update();
    recordset->Close();
    return true;
}

std::u16string withoutBlanks(std::u16string_view text) {
    std::u16string kept;
    for (const char16_t unit : text) {
        if (unit != u' ') {
            kept.push_back(unit);
        }
    }
    return kept;
}

// Makes each wanted name a property: of the names given, or none, which stands for all.
void writeWantedNames(CProprieta& properties, std::u16string_view names) {
    if (names == kNotGiven) {
        return;
    }
    if (names.find(u"</") != names.npos) {
        properties.Scrivi(u"", names);
        return;
    }
    for (std::size_t start = 0; start <= names.size();) {
        const std::size_t end = std::min(names.find(u',', start), names.size());
        properties.Scrivi(names.substr(start, end - start), u"");
        start = end + 1;
    }
}

void readWanted(CProprieta& properties, const Recordset& recordset) {
    const auto fields = recordset.Fields();
    const std::int16_t count = properties.Count();
    for (std::int16_t i = 1; i <= count; ++i) {
        const String name = properties.NomeProprieta(i);
        properties.Scrivi(name, fields->Item(name)->Value());
    }
}

void readAll(CProprieta& properties, const Recordset& recordset) {
    forEachColumn(recordset, [&](const ColumnInfo& column, std::size_t i) {
        const String name = column.name;
        // Case-sensitive, unlike everywhere else; deliberate.
        if (name != kVersionField) {
            properties.Scrivi(name, recordset.rows().value(i));
        }
    });
}

}  // namespace

bool DB_Read(ByRef<Variant> connessione, const String& sSQL, ByRef<Variant> stringaProprieta) {
    auto properties = make<CProprieta>();
    const auto recordset = OpenRecordset(sSQL, connessione, -1, -1, -1, /*deleteNull=*/true,
                                         /*closeConnection=*/true);
    const bool found = recordset->RecordCount() >= 1;
    forEachColumn(*recordset, [&](const ColumnInfo& column, std::size_t i) {
        properties->Scrivi(column.name, found
                                            ? readableValue(column.type, recordset->rows().value(i))
                                            : neutralValue(column));
    });
    *stringaProprieta = properties->Leggi();
    recordset->Close();
    return found;
}

bool DB_Update(ByRef<Variant> connessione, const String& sSQL, const Variant& stringaProprieta,
               CErrore& errore) {
    auto properties = make<CProprieta>();
    properties->Scrivi(u"", stringaProprieta);
    const auto recordset = openLive(connessione, sSQL, /*deleteNull=*/true);
    errore.Clear();
    const String found = versionFound(*recordset, *properties);
    if (!sameVersion(properties->Leggi(kVersionField), found)) {
        report(errore, found == kDeletedByOthers ? kTextDeleted : kTextUpdated);
        recordset->Close();
        return false;
    }
    properties->Elimina(kVersionField);  // the client never writes the row version
    assignFields(*recordset, *properties);
    recordset->Update();
    recordset->Close();
    return true;
}

bool DB_Delete(ByRef<Variant> connessione, const String& sSQL, ByRef<Variant> stringaProprieta,
               CErrore& errore) {
    errore.Clear();
    bool deleted = false;
    try {
        deleted = deleteFirst(connessione, sSQL);
        if (!deleted) {
            report(errore, kTextDeleted);
        }
    } catch (const AutomationError&) {
        // Every failure of the deletion reads as another user's doing; deliberate.
        report(errore, kTextDeletedMeanwhile);
    }
    *stringaProprieta = u"";
    return deleted;
}

Ref<CProprieta> kapLeggiRecord(ByRef<Variant> connessione, const String& sStringaSQL,
                               const String& sNomeCampi) {
    auto properties = make<CProprieta>();
    writeWantedNames(*properties, withoutBlanks(sNomeCampi));
    const auto recordset = OpenRecordset(sStringaSQL, connessione);
    const bool atEnd = recordset->Eof();
    if (!atEnd) {
        if (properties->Count() > 0) {
            readWanted(*properties, *recordset);
        } else {
            readAll(*properties, *recordset);
        }
    }
    properties->Scrivi(u"EOF", static_cast<std::int16_t>(atEnd ? 1 : 0));
    return properties;
}

}  // namespace kap::db

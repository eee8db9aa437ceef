#include <algorithm>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "base/unicode.hpp"
#include "sqlscript/held.hpp"
#include "sqlscript/transfer_text.hpp"

namespace kap {
namespace {

using sqlscript::held;
using sqlscript::isBlank;
using sqlscript::textOf;

constexpr const char16_t* kTableName = u"TABLE_NAME";
constexpr const char16_t* kColumnName = u"COLUMN_NAME";

// A row version is the database's own to write.
constexpr std::u16string_view kRowVersion = u"AGGID";

String nameIn(const ado::Recordset& rows, const char16_t* field) {
    return convert::toString(rows.Fields()->Item(field)->Value());
}

bool isEmpty(const ado::Recordset& rows) {
    return rows.Bof() && rows.Eof();
}

// Moves to the row of a column, and tells whether there is one.
bool findColumn(ado::Recordset& columns, const String& name) {
    if (isEmpty(columns)) {
        return false;
    }
    columns.MoveFirst();
    columns.Find(u"COLUMN_NAME='" + name + u"'");
    return !columns.Eof();
}

void writeWhenBlank(CProprieta& parameters, const char16_t* name, const char16_t* value) {
    if (isBlank(parameters, name)) {
        parameters.Scrivi(name, value);
    }
}

// A column that is described twice, as tables of two owners are, is written once: at its first
// place, with its last expression.
void mapColumn(sqlscript::ColumnMap& map, const String& column, const String& expression) {
    const String name = unicode::upper(column);
    const auto known = std::ranges::find(map, name, &sqlscript::ColumnMap::value_type::first);
    if (known == map.end()) {
        map.emplace_back(name, expression);
    } else {
        known->second = expression;
    }
}

Ref<ado::Recordset> describedBy(ado::Connection& connection, const String& table) {
    auto columns = connection.OpenSchema(ado::SchemaEnum::adSchemaColumns,
                                         Array::ofVariants({Variant(), Variant(), table}));
    columns->setActiveConnection(Variant(Ref<Object>()));
    return columns;
}

// A second connection to the same database; unset when the client's connection is of a maker that
// only the client can make connections of.
Ref<ado::Connection> secondConnection(const ado::Connection& held) {
    try {
        return held.openAnother();
    } catch (const AutomationError& error) {
        if (error.number() != ado::errors::kProviderNotFound) {
            throw;
        }
        return {};
    }
}

// The columns of a table that every connection sees.
Ref<ado::Recordset> permanentColumns(ado::Connection& held, const String& table) {
    const auto second = secondConnection(held);
    if (!second) {
        return describedBy(held, table);
    }
    second->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    auto columns = describedBy(*second, table);
    second->Close();
    return columns;
}

Ref<ado::Recordset> emptyColumnList() {
    constexpr std::int32_t kLongestName = 100;
    auto columns = make<ado::Recordset>();
    for (const char16_t* name : {kTableName, kColumnName}) {
        columns->Fields()->Append(name, ado::DataTypeEnum::adVarChar, kLongestName);
    }
    columns->Open();
    return columns;
}

// The columns of a table that only the connection which made it sees.
Ref<ado::Recordset> temporaryColumns(const Ref<ado::Connection>& connection, const String& table) {
    const auto query = make<ado::Recordset>();
    query->Open(u"SELECT TOP 1 * FROM " + table, Variant(connection));
    auto columns = emptyColumnList();
    const auto fields = query->Fields();
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        columns->AddNew();
        columns->Fields()->Item(kTableName)->setValue(table);
        columns->Fields()->Item(kColumnName)->setValue(fields->Item(i)->Name());
        columns->Update();
    }
    query->Close();
    return columns;
}

}  // namespace

Ref<ado::Recordset> CSQL::ColonneTabella(const Ref<ado::Connection>& connessione,
                                         const String& sTabella) {
    return sTabella.view().starts_with(u'#') ? temporaryColumns(connessione, sTabella)
                                             : permanentColumns(*connessione, sTabella);
}

std::vector<std::pair<String, String>> CSQL::columnMap() {
    const CProprieta& parameters = held(parameters_);
    const String from = textOf(parameters, u"FROM");
    const auto source = ColonneTabella(ActiveConnection(), from);
    const auto destination = ColonneTabella(ActiveConnection(), textOf(parameters, u"TO"));
    sqlscript::ColumnMap map;
    if (!isEmpty(*destination)) {
        destination->MoveFirst();
    }
    for (; !destination->Eof(); destination->MoveNext()) {
        const String column = nameIn(*destination, kColumnName);
        if (unicode::upper(column) == kRowVersion) {
            continue;
        }
        // Looked for in any case: a name that cannot be searched is an error of the client's.
        const bool inSource = findColumn(*source, column);
        // An expression of the client's wins, and fills columns that the source lacks.
        const String parameter = nameIn(*destination, kTableName) + u"." + column;
        if (!isBlank(parameters, parameter)) {
            mapColumn(map, column, textOf(parameters, parameter));
        } else if (inSource) {
            mapColumn(map, column, from + u".[" + nameIn(*source, kColumnName) + u"]");
        }
    }
    return map;
}

void CSQL::refuse(const char16_t* message) const {
    error_->setNumero(1);
    error_->AddMessaggio(message);
}

String CSQL::AddTmp() {
    held(error_).Clear();
    CProprieta& parameters = held(parameters_);
    if (isBlank(parameters, u"FROM")) {
        refuse(u"Parametro FROM obbligatorio (tabella di origine)");
    }
    if (isBlank(parameters, u"TO")) {
        refuse(u"Parametro TO obbligatorio (tabella di destinazione)");
    }
    // Deliberate: clients read the defaults that were used in their own parameters.
    writeWhenBlank(parameters, u"WHERE", u"1=1");
    writeWhenBlank(parameters, u"DELETE_FROM", u"NO");
    if (failed()) {
        return {};
    }
    const auto columns = columnMap();
    if (columns.empty()) {
        refuse(u"Nessun campo da collegare tra tabella FROM e tabella TO");
        return {};
    }
    std::u16string text = sqlscript::insertText(parameters, columns);
    if (textOf(parameters, u"DELETE_FROM") == String(u"SI")) {
        text += sqlscript::deleteText(parameters);
    }
    script_ += text;
    return text;
}

}  // namespace kap

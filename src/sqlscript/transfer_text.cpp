#include "sqlscript/transfer_text.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>

#include <kaputil/automation/convert.hpp>
#include <kaputil/util/values.hpp>

#include "base/unicode.hpp"
#include "sqlscript/script_lines.hpp"

namespace kap::sqlscript {
namespace {

constexpr std::int16_t kMaxJoins = 50;
constexpr std::size_t kColumnsALine = 10;

// Quotes in it are deliberately not doubled, nor are they in the messages of single commands.
String messageOf(const CProprieta& parameters) {
    if (!isBlank(parameters, u"MSG_ERRORE")) {
        return textOf(parameters, u"MSG_ERRORE");
    }
    const String from = textOf(parameters, u"FROM");
    const String to = textOf(parameters, u"TO");
    return u"FROM " + String(unicode::trim(from)) + u" TO " + unicode::trim(to);
}

// The columns one behind the other, as `shown` writes each; a line ends behind every tenth.
void appendList(std::u16string& script, const ColumnMap& columns,
                const std::function<void(const ColumnMap::value_type&)>& shown) {
    for (std::size_t i = 1; i <= columns.size(); ++i) {
        shown(columns[i - 1]);
        if (i != columns.size()) {
            script += u',';
        }
        if (i % kColumnsALine == 0) {
            script += kLineEnd;
        }
    }
}

void appendColumnNames(std::u16string& script, const ColumnMap& columns) {
    script += u" ( ";
    appendList(script, columns, [&](const ColumnMap::value_type& column) {
        script += u" [";
        script += column.first;
        script += u']';
    });
    appendLine(script, {u" ) "});
}

void appendExpressions(std::u16string& script, const CProprieta& parameters,
                       const ColumnMap& columns) {
    script += u" SELECT ";
    if (!isBlank(parameters, u"SELECT_OPTIONS")) {
        script += u' ';
        script += textOf(parameters, u"SELECT_OPTIONS");
        script += u' ';
    }
    appendList(script, columns, [&](const ColumnMap::value_type& column) {
        script += u' ';
        script += column.second;
    });
    appendLine(script, {});
}

// Join clauses, condition and check are those of both statements.
void appendRest(std::u16string& script, const CProprieta& parameters) {
    for (std::int16_t number = 1; number <= kMaxJoins; ++number) {
        const String name = u"JOIN" + convert::toString(number);
        if (isBlank(parameters, name)) {
            break;
        }
        appendLine(script, {u" ", textOf(parameters, name)});
    }
    appendLine(script, {u" WHERE ", textOf(parameters, u"WHERE")});
    appendCheck(script);
}

}  // namespace

bool isBlank(const CProprieta& parameters, const String& name) {
    return util::kapEmpty(parameters.Leggi(name));
}

String textOf(const CProprieta& parameters, const String& name) {
    return convert::toString(parameters.Leggi(name));
}

std::u16string insertText(const CProprieta& parameters, const ColumnMap& columns) {
    std::u16string script;
    appendLine(script, {u"SET @ERRORE_DESC='AddTmp(INSERT):   ", messageOf(parameters), u"'"});
    appendLine(script, {u" INSERT ", textOf(parameters, u"TO"), u"  "});
    appendColumnNames(script, columns);
    appendLine(script, {u" "});
    appendExpressions(script, parameters, columns);
    appendLine(script, {u" FROM ", textOf(parameters, u"FROM")});
    appendRest(script, parameters);
    return script;
}

std::u16string deleteText(const CProprieta& parameters) {
    const String from = textOf(parameters, u"FROM");
    std::u16string script;
    appendLine(script, {u" "});
    appendLine(script, {u"SET @ERRORE_DESC='AddTmp(DELETE):   ", messageOf(parameters), u"'"});
    appendLine(script, {u" DELETE ", from, u" FROM ", from});
    appendRest(script, parameters);
    return script;
}

}  // namespace kap::sqlscript

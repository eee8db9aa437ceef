#include "sqlscript/transfer_text.hpp"

#include <cstdint>
#include <functional>

#include <kaputil/frame/convert.hpp>
#include <kaputil/util/values.hpp>

#include "frame/unicode.hpp"
#include "sqlscript/script_lines.hpp"

namespace kap::sqlscript {
namespace {

constexpr std::int16_t kMaxJoins = 50;
constexpr std::int16_t kColumnsALine = 10;

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
void appendList(std::u16string& script, std::int16_t count,
                const std::function<void(std::int16_t)>& shown) {
    std::int16_t onLine = 0;
    for (std::int16_t i = 1; i <= count; ++i) {
        shown(i);
        if (i != count) {
            script += u',';
        }
        if (++onLine == kColumnsALine) {
            script += kLineEnd;
            onLine = 0;
        }
    }
}

void appendColumnNames(std::u16string& script, const CProprieta& columns) {
    script += u" ( ";
    appendList(script, columns.Count(), [&](std::int16_t i) {
        script += u" [";
        script += columns.NomeProprieta(i);
        script += u']';
    });
    appendLine(script, {u" ) "});
}

void appendExpressions(std::u16string& script, const CProprieta& parameters,
                       const CProprieta& columns) {
    script += u" SELECT ";
    if (!isBlank(parameters, u"SELECT_OPTIONS")) {
        script += u' ';
        script += textOf(parameters, u"SELECT_OPTIONS");
        script += u' ';
    }
    appendList(script, columns.Count(), [&](std::int16_t i) {
        script += u' ';
        script += convert::toString(columns.Leggi(i));
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

std::u16string insertText(const CProprieta& parameters, const CProprieta& columns) {
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

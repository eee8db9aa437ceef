#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "base/ascii.hpp"
#include "engine/binder/scope.hpp"
#include "engine/binder/system_values.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/executor/stored_value.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/values/date_settings.hpp"

// SET: what a session does differently from now on.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

DateOrder dateOrderOf(const std::string& word, int line) {
    static constexpr std::pair<std::string_view, DateOrder> kOrders[] = {
        {"MDY", DateOrder::Mdy}, {"DMY", DateOrder::Dmy}, {"YMD", DateOrder::Ymd},
        {"YDM", DateOrder::Ydm}, {"MYD", DateOrder::Myd}, {"DYM", DateOrder::Dym}};
    for (const auto& [name, order] : kOrders) {
        if (word == name) return order;
    }
    throw ServerError(tsql::Message::InvalidDateFormat, {asciiLower(word)}, line);
}

IsolationLevel levelNamed(const std::string& words, int line) {
    static constexpr std::pair<std::string_view, IsolationLevel> kLevels[] = {
        {"READ UNCOMMITTED", IsolationLevel::ReadUncommitted},
        {"READ COMMITTED", IsolationLevel::ReadCommitted},
        {"REPEATABLE READ", IsolationLevel::RepeatableRead},
        {"SERIALIZABLE", IsolationLevel::Serializable},
        {"SNAPSHOT", IsolationLevel::Snapshot}};
    for (const auto& [name, level] : kLevels) {
        if (words == name) return level;
    }
    throw tsql::syntaxError(words, line);
}

bool isOn(const std::string& word, int line) {
    if (word != "ON" && word != "OFF") throw tsql::syntaxError(word, line);
    return word == "ON";
}

DateSettings datesOf(const std::string& language, int line) {
    constexpr int kMonday = 1;
    constexpr int kSunday = 7;
    if (language == "ITALIAN" || language == "ITALIANO") {
        return {DateOrder::Dmy, kMonday, true};
    }
    if (language == "US_ENGLISH" || language == "ENGLISH") {
        return {DateOrder::Mdy, kSunday, false};
    }
    throw tsql::unsupported("SET LANGUAGE " + language, line);
}

}  // namespace

void ScriptRunner::setOption(Frame& frame, Instruction& instruction,
                             const tsql::SetOptionStatement& node) {
    const std::string& option = node.options.front();
    const int line = instruction.line;
    if (option == "IDENTITY_INSERT") {
        setIdentityInsert(frame.program.names(), node, line);
    } else if (option == "CONTEXT_INFO") {
        setContext(
            evaluate(frame, instruction, 0, *node.number, {SqlType::VarBinary, kContextBytes}));
    } else if (node.number) {
        const Value number = evaluate(frame, instruction, 0, *node.number, {SqlType::BigInt});
        setNumber(option, wholeOr(number, 0), line);
    } else if (option == "TRANSACTION ISOLATION LEVEL") {
        state_.isolation = levelNamed(node.value, line);
    } else if (option == "COMPATIBILITY_LEVEL") {
        setCompatibilityLevel(node.value, line);
    } else if (option == "DATEFORMAT") {
        state_.dates.order = dateOrderOf(node.value, line);
        catalogue_.settingsChanged();
    } else if (option == "LANGUAGE") {
        state_.dates = datesOf(node.value, line);
        catalogue_.settingsChanged();
    } else {
        const bool on = isOn(node.value, line);
        for (const std::string& each : node.options) {
            setSwitch(each, on, line);
        }
    }
}

// CONTEXT_INFO() always tells of all the bytes.
void ScriptRunner::setContext(const Value& value) {
    const auto* given = std::get_if<Blob>(&value);
    Blob bytes = given == nullptr ? Blob() : *given;
    bytes.bytes.resize(kContextBytes, '\0');
    state_.context = std::move(bytes);
}

void ScriptRunner::setIdentityInsert(const NameScope& names, const tsql::SetOptionStatement& node,
                                     int line) {
    const bool on = isOn(node.value, line);
    const Table* table = findOwnTable(node.table, names);
    if (table == nullptr) {
        throw ServerError(tsql::Message::ObjectNotFound, {node.table.text()}, line);
    }
    if (on && std::ranges::none_of(table->columns, [](const Column& column) {
            return column.identity.has_value();
        })) {
        throw ServerError(tsql::Message::NoIdentityProperty, {node.table.text()}, line);
    }
    std::string& current = state_.writes.identityInsert;
    if (on && !current.empty() && !sameName(current, table->name)) {
        throw ServerError(
            tsql::Message::IdentityInsertOnElsewhere,
            {catalogue_.databaseName() + "." + withSchema(current), node.table.text()}, line);
    }
    if (on || sameName(current, table->name)) current = on ? table->name : "";
    catalogue_.settingsChanged();
}

void ScriptRunner::setNumber(const std::string& option, std::int64_t number, int line) {
    if (option == "ROWCOUNT") {
        state_.writes.rowLimit = std::max<std::int64_t>(number, 0);
        catalogue_.settingsChanged();
    } else if (option == "LOCK_TIMEOUT") {
        connection_.setLockTimeout(number);
        state_.lockTimeout = static_cast<std::int32_t>(number);
    } else if (option == "TEXTSIZE") {
        constexpr std::int64_t kNoBound = 2147483647;
        state_.textSize = number < 0 ? kNoBound : number == 0 ? kDefaultTextSize : number;
    } else if (option == "DATEFIRST") {
        constexpr std::int64_t kDaysPerWeek = 7;
        if (number < 1 || number > kDaysPerWeek) {
            throw ServerError(tsql::Message::InvalidFirstDay, {}, line);
        }
        state_.dates.firstDay = static_cast<int>(number);
    }
}

void ScriptRunner::setSwitch(const std::string& option, bool on, int line) {
    // What the database always does, so that turning it on says nothing new; turning it off would
    // change results.
    static constexpr std::array kAlwaysOn{
        "ANSI_NULLS",    "ANSI_PADDING",      "ANSI_WARNINGS",          "ARITHABORT",
        "ANSI_DEFAULTS", "ANSI_NULL_DFLT_ON", "CONCAT_NULL_YIELDS_NULL"};
    static constexpr std::array kNoMatter{"NOEXEC",
                                          "PARSEONLY",
                                          "FMTONLY",
                                          "NUMERIC_ROUNDABORT",
                                          "IMPLICIT_TRANSACTIONS",
                                          "CURSOR_CLOSE_ON_COMMIT",
                                          "ANSI_NULL_DFLT_OFF",
                                          "FORCEPLAN",
                                          "REMOTE_PROC_TRANSACTIONS",
                                          "ARITHIGNORE"};
    if (option == "NOCOUNT") {
        state_.noCount = on;
    } else if (option == "XACT_ABORT") {
        state_.abortOnError = on;
    } else if (option == "SHOWPLAN_TEXT" || option == "SHOWPLAN_ALL") {
        state_.showPlan = on;
    } else if (option == "RECURSIVE_TRIGGERS") {
        setDatabaseSetting(kRecursiveTriggers, on);
    } else if (option == "QUOTED_IDENTIFIER") {
        state_.quotedNames = on;
    } else if (std::ranges::find(kAlwaysOn, option) != kAlwaysOn.end()) {
        if (!on) note("SET " + option + " OFF has no effect: the setting stays ON.");
    } else if (std::ranges::find(kNoMatter, option) != kNoMatter.end() && !on) {
        return;
    } else {
        throw tsql::unsupported("SET " + option + (on ? " ON" : " OFF"), line);
    }
}

}  // namespace kap::engine

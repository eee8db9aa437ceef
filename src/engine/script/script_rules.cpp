#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/quoting.hpp"
#include "engine/catalog/bound_rules.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/script/script_runner.hpp"
#include "tsql/lexer.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

// CREATE DEFAULT, CREATE RULE, and what binds them to columns: a constraint for each column.
namespace kap::engine {

using tsql::ServerError;
using tsql::SqlType;

namespace {

constexpr const char* kDefaultConstraint = "D ";
constexpr const char* kCheckConstraint = "C ";

std::string tableInBrackets(const Table& table) {
    return inBrackets(schemaOf(table.name)) + "." + inBrackets(bareName(table.name));
}

// The condition of a rule about a column.
std::string conditionOf(const std::string& rule, const std::string& column) {
    std::string result;
    std::size_t written = 0;
    for (const tsql::Token& token : tsql::tokenize(rule)) {
        if (token.kind != tsql::TokenKind::Variable || token.text.starts_with("@@")) continue;
        result += rule.substr(written, token.start - written) + inBrackets(column);
        written = token.end;
    }
    return result + rule.substr(written);
}

void refuseColumn(const Column& column, bool isDefault, int line) {
    const SqlType type = column.type.type;
    const bool computed = column.computed || column.isRowVersion();
    if (isDefault && computed) throw ServerError(tsql::Message::DefaultOfComputed, {}, line);
    if (isDefault && column.identity) throw ServerError(tsql::Message::DefaultOfIdentity, {}, line);
    if (!isDefault && (computed || tsql::isLarge(type))) {
        throw ServerError(tsql::Message::RuleOfComputed, {}, line);
    }
}

// The statement that binds a default or rule to a column, as a constraint of its table.
std::string bindingOf(const StoredObject& rule, const Table& table, const std::string& column) {
    const std::string name =
        inBrackets(boundRuleName(bareName(rule.name), bareName(table.name), column));
    const std::string alter = "ALTER TABLE " + tableInBrackets(table);
    if (rule.kind == StoredKind::Default) {
        return alter + " ADD CONSTRAINT " + name + " DEFAULT (" + rule.text + ") FOR " +
               inBrackets(column);
    }
    return alter + " WITH NOCHECK ADD CONSTRAINT " + name + " CHECK (" +
           conditionOf(rule.text, column) + ")";
}

}  // namespace

void ScriptRunner::createRule(const tsql::CreateRuleStatement& node, int line) {
    Transactions::WriteScope scope(transactions_);
    store({0, node.isDefault ? StoredKind::Default : StoredKind::Rule,
           nameToMake(node.name, catalogue_, line), "", node.text},
          false, false, line);
    scope.keep();
}

void ScriptRunner::refuseBoundRule(StoredKind kind, const std::string& stored,
                                   const std::string& shown, int line) const {
    for (const ConstraintInfo& each : catalogue_.constraints()) {
        if (!bindsRule(each.name, bareName(stored))) continue;
        throw ServerError(tsql::Message::RuleBound,
                          {kind == StoredKind::Default ? "default" : "rule", shown}, line);
    }
}

// "table.column" or "schema.table.column". Error 15148; 40517 for a type of the user's own, which
// columns do not remember.
ScriptRunner::RuledColumn ScriptRunner::ruledColumn(const std::string& name, int line) const {
    tsql::ObjectName parts = tsql::parseObjectName(name);
    if (catalogue_.aliasType(parts)) {
        throw tsql::unsupported("sp_bindrule and sp_bindefault of a type", line);
    }
    const std::string last = parts.last();
    RuledColumn found;
    parts.parts.pop_back();
    if (!parts.parts.empty()) {
        found.table = catalogue_.find(resolvedName(parts, kDefaultSchema, catalogue_));
    }
    if (found.table != nullptr) found.column = found.table->find(last);
    if (found.column == nullptr) {
        throw ServerError(tsql::Message::NoSuchColumnOrType, {name}, line);
    }
    return found;
}

// The constraint of that type that binds something to the column; null when there is none.
const ConstraintInfo* ScriptRunner::boundConstraint(const std::vector<ConstraintInfo>& constraints,
                                                    const RuledColumn& place,
                                                    const char* type) const {
    const std::string ending = boundRuleName("", bareName(place.table->name), place.column->name);
    const auto found = std::ranges::find_if(constraints, [&](const ConstraintInfo& each) {
        return std::string_view(each.type) == type && sameName(each.table, place.table->name) &&
               each.name.size() > ending.size() &&
               sameName(each.name.substr(each.name.size() - ending.size()), ending);
    });
    return found == constraints.end() ? nullptr : &*found;
}

const StoredObject& ScriptRunner::requireRule(StoredKind kind, const std::string& name,
                                              int line) const {
    const std::string stored =
        resolvedName(tsql::parseObjectName(name), kDefaultSchema, catalogue_);
    for (const StoredObject& object : catalogue_.objects()) {
        if (object.kind == kind && sameName(object.name, stored)) return object;
    }
    throw ServerError(
        kind == StoredKind::Default ? tsql::Message::NoSuchDefault : tsql::Message::NoSuchRule,
        {name}, line);
}

// sp_bindefault and sp_bindrule 'name', 'table.column'; sp_unbindefault and sp_unbindrule
// 'table.column'. Whether it was one of them.
bool ScriptRunner::bindRule(const std::string& procedure, const std::vector<std::string>& arguments,
                            int line, std::vector<ado::Result>& results) {
    const bool isDefault = procedure.ends_with("bindefault");
    const bool unbinds = procedure.starts_with("sp_unbind");
    if (procedure !=
        std::string(unbinds ? "sp_unbind" : "sp_bind") + (isDefault ? "efault" : "rule")) {
        return false;
    }
    const std::size_t wanted = unbinds ? 1 : 2;
    if (arguments.size() < wanted) {
        throw ServerError(tsql::Message::ParameterNotSupplied,
                          {procedure, wanted == 1 || !arguments.empty() ? "@objname"
                                      : isDefault                       ? "@defname"
                                                                        : "@rulename"},
                          line);
    }
    Transactions::WriteScope scope(transactions_);
    const StoredKind kind = isDefault ? StoredKind::Default : StoredKind::Rule;
    const StoredObject* rule = unbinds ? nullptr : &requireRule(kind, arguments[0], line);
    const RuledColumn place = ruledColumn(arguments[wanted - 1], line);
    refuseColumn(*place.column, isDefault, line);
    const std::vector<ConstraintInfo> constraints = catalogue_.constraints();
    const ConstraintInfo* bound =
        boundConstraint(constraints, place, isDefault ? kDefaultConstraint : kCheckConstraint);
    const bool own = isDefault && bound == nullptr && place.column->defaultSql.has_value();
    if (own && !unbinds) throw ServerError(tsql::Message::DefaultOfOwn, {}, line);
    if (own) throw ServerError(tsql::Message::UnbindOfOwn, {arguments[0]}, line);
    if (unbinds && bound == nullptr) {
        throw ServerError(isDefault ? tsql::Message::NoDefaultBound : tsql::Message::NoRuleBound,
                          {arguments[0]}, line);
    }
    // Before anything is executed, which may read the catalogue anew.
    const std::string binding =
        rule == nullptr ? std::string() : bindingOf(*rule, *place.table, place.column->name);
    if (bound != nullptr) {
        executeText("ALTER TABLE " + tableInBrackets(*place.table) + " DROP CONSTRAINT " +
                        inBrackets(bound->name),
                    line, results);
    }
    if (!binding.empty()) executeText(binding, line, results);
    scope.keep();
    note(std::string(isDefault ? "Default" : "Rule") +
         (unbinds ? " unbound from column." : " bound to column."));
    return true;
}

}  // namespace kap::engine

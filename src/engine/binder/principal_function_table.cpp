#include <array>
#include <initializer_list>
#include <utility>

#include "engine/binder/function_table.hpp"

// Who works with a database and what he may: a file has one owner, who may everything.
namespace kap::engine {

using tsql::SqlType;

namespace {

using Roles = std::initializer_list<const char*>;

constexpr Roles kDatabaseRoles = {"public",           "db_owner",     "db_accessadmin",
                                  "db_securityadmin", "db_ddladmin",  "db_backupoperator",
                                  "db_datareader",    "db_datawriter"};
constexpr Roles kServerRoles = {"public",      "sysadmin",   "securityadmin",
                                "serveradmin", "setupadmin", "processadmin",
                                "diskadmin",   "dbcreator",  "bulkadmin"};
constexpr Roles kDenyingRoles = {"db_denydatareader", "db_denydatawriter"};

BoundExpression one() {
    return BoundExpression::expression(sql::number(1), {SqlType::Int}, false);
}

sql::Expression nameArgument(const ScalarCall& call) {
    return sql::collated(call.text(0), {SqlType::NVarChar});
}

sql::Expression isOneOfRoles(const sql::Expression& role, Roles roles) {
    sql::In result{role, {}};
    for (const char* each : roles)
        result.list.push_back(sql::text(each));
    return result;
}

// 1 for a role that the owner has, 0 for one that only takes rights away, NULL for none.
BoundExpression memberOf(ScalarCall& call, Roles roles) {
    const sql::Expression role = nameArgument(call);
    sql::Case answer;
    answer.branches = {{isOneOfRoles(role, roles), sql::number(1)},
                       {isOneOfRoles(role, kDenyingRoles), sql::number(0)}};
    return BoundExpression::expression(std::move(answer), {SqlType::Int}, true);
}

BoundExpression isMember(ScalarCall& call) {
    return memberOf(call, kDatabaseRoles);
}

BoundExpression isServerMember(ScalarCall& call) {
    return memberOf(call, kServerRoles);
}

BoundExpression mayEverything(ScalarCall& /*call*/) {
    return one();
}

BoundExpression ownerId(ScalarCall& call) {
    if (call.arguments.empty()) return one();
    sql::Expression owns =
        sql::Binary{sql::BinaryOperator::Equal, nameArgument(call), sql::text("dbo")};
    return BoundExpression::expression(sql::when(std::move(owns), sql::number(1)), {SqlType::Int},
                                       true);
}

constexpr std::array kPrincipalFunctions = std::to_array<ScalarFunction>({
    {"is_member", 1, 1, isMember},
    {"is_rolemember", 1, 2, isMember},
    {"is_srvrolemember", 1, 2, isServerMember},
    {"has_perms_by_name", 3, 5, mayEverything},
    {"user_id", 0, 1, ownerId},
    {"database_principal_id", 0, 1, ownerId},
    {"suser_id", 0, 1, mayEverything},
    {"getansinull", 0, 1, mayEverything},
});

}  // namespace

std::span<const ScalarFunction> principalFunctions() {
    return kPrincipalFunctions;
}

}  // namespace kap::engine

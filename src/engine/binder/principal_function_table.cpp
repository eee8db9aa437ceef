#include <array>

#include "engine/binder/function_table.hpp"

// Who works with a database and what he may: a file has one owner, who may everything.
namespace kap::engine {

using tsql::SqlType;

namespace {

constexpr const char* kDatabaseRoles =
    "'public', 'db_owner', 'db_accessadmin', 'db_securityadmin', 'db_ddladmin', "
    "'db_backupoperator', 'db_datareader', 'db_datawriter'";
constexpr const char* kServerRoles =
    "'public', 'sysadmin', 'securityadmin', 'serveradmin', 'setupadmin', 'processadmin', "
    "'diskadmin', 'dbcreator', 'bulkadmin'";

BoundExpression number(const char* value) {
    return BoundExpression::expression(value, {SqlType::Int}, false);
}

// 1 for a role that the owner has, 0 for one that only takes rights away, NULL for none.
BoundExpression memberOf(ScalarCall& call, const char* roles) {
    const std::string role = "(" + call.text(0) + ") COLLATE KAP_CI";
    return BoundExpression::expression(
        "(CASE WHEN " + role + " IN (" + roles + ") THEN 1 WHEN " + role +
            " IN ('db_denydatareader', 'db_denydatawriter') THEN 0 END)",
        {SqlType::Int}, true);
}

BoundExpression isMember(ScalarCall& call) {
    return memberOf(call, kDatabaseRoles);
}

BoundExpression isServerMember(ScalarCall& call) {
    return memberOf(call, kServerRoles);
}

BoundExpression mayEverything(ScalarCall& /*call*/) {
    return number("1");
}

BoundExpression ownerId(ScalarCall& call) {
    if (call.arguments.empty()) return number("1");
    return BoundExpression::expression(
        "(CASE WHEN (" + call.text(0) + ") COLLATE KAP_CI = 'dbo' THEN 1 END)", {SqlType::Int},
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

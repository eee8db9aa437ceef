#include "tools/with_database.hpp"

#include <iostream>

#include <kaputil/frame/error.hpp>

#include "tools/exit_codes.hpp"
#include "tools/failure_report.hpp"

namespace kap::tools {
namespace {

int fail(const ado::Connection& connection, const AutomationError& error, bool json, int code) {
    std::cout.flush();
    for (const Failure& failure : failuresOf(connection, error)) {
        printFailure(std::cerr, failure, json);
    }
    return code;
}

}  // namespace

int withDatabase(const std::string& connectionString, bool json,
                 const std::function<int(ado::Connection&)>& work) {
    const auto connection = make<ado::Connection>();
    connection->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    try {
        connection->Open(connectionString);
    } catch (const AutomationError& error) {
        return fail(*connection, error, json, kNoDatabase);
    }
    try {
        return work(*connection);
    } catch (const AutomationError& error) {
        return fail(*connection, error, json, kFailed);
    }
}

}  // namespace kap::tools

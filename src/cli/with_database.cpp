#include "cli/with_database.hpp"

#include <iostream>

#include <kaputil/automation/error.hpp>

#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"

namespace kap::cli {
int withDatabase(const std::string& given, Access access, bool json,
                 const std::function<int(ado::Connection&)>& work) {
    const auto connection = make<ado::Connection>();
    connection->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    try {
        openDatabase(*connection, given, access);
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*connection, error), json);
        return kNoDatabase;
    }
    try {
        return work(*connection);
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(*connection, error), json);
        return kFailed;
    }
}

}  // namespace kap::cli

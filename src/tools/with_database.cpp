#include "tools/with_database.hpp"

#include <iostream>

#include <kaputil/frame/error.hpp>

#include "tools/exit_codes.hpp"
#include "tools/failure_report.hpp"

namespace kap::tools {
int withDatabase(const std::string& connectionString, Access access, bool json,
                 const std::function<int(ado::Connection&)>& work) {
    const auto connection = make<ado::Connection>();
    connection->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    if (access == Access::Reading) {
        connection->setMode(ado::ConnectModeEnum::adModeRead);
    }
    try {
        connection->Open(connectionString);
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

}  // namespace kap::tools

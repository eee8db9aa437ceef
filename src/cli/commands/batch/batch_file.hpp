#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kap::cli {

// One statement of a file of statements.
struct BatchStatement {
    std::string text;
    std::string message;    // what is raised when it fails; empty: the library's own
    std::int32_t line = 1;  // of the file, where the text begins
};

// The statements of a file called `name` in messages. Lines that hold only GO stand between them,
// and a statement may begin with a line "-- message: TEXT":
//
//     -- message: Addebito fallito
//     UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1
//     GO
//     UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2
//
// "GO 3" stands for the statement three times. Throws UsageError for a message without a
// statement, AutomationError for a count that is none.
[[nodiscard]] std::vector<BatchStatement> readStatements(const std::string& script,
                                                         const std::string& name);

}  // namespace kap::cli

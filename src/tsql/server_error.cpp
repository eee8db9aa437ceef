#include "tsql/server_error.hpp"

namespace kap::tsql {

namespace {

constexpr int kSyntaxSeverity = 15;

}  // namespace

ServerError::ServerError(int number, const std::string& message, int line, int severity, int state)
    : std::runtime_error(message),
      number_(number),
      severity_(severity),
      state_(state),
      line_(line) {}

ServerError syntaxError(const std::string& near, int line) {
    return {102, "Incorrect syntax near '" + near + "'.", line, kSyntaxSeverity};
}

ServerError keywordError(const std::string& keyword, int line) {
    return {156, "Incorrect syntax near the keyword '" + keyword + "'.", line, kSyntaxSeverity};
}

ServerError unsupported(const std::string& construct, int line) {
    return {40517,
            "Keyword or statement option '" + construct +
                "' is not supported in this version of the database.",
            line, kSyntaxSeverity};
}

ServerError nestedTooDeeply(int line) {
    return {191,
            "Some part of your SQL statement is nested too deeply. Rewrite the query or break it "
            "up into smaller queries.",
            line, kSyntaxSeverity};
}

}  // namespace kap::tsql

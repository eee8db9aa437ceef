#include "cli/commands/batch/batch_file.hpp"

#include <algorithm>
#include <string_view>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "cli/names.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

constexpr std::string_view kBlanksAndBreaks = " \t\r\n";
constexpr std::string_view kMessageMark = "-- message:";

// Drops the blank lines before the text, counting them.
std::string_view withoutBlankLines(std::string_view text, std::int32_t& line) {
    const std::size_t first = std::min(text.find_first_not_of(kBlanksAndBreaks), text.size());
    const std::string_view blanks = text.substr(0, first);
    line += static_cast<std::int32_t>(std::ranges::count(blanks, '\n'));
    return trimmed(text, kBlanksAndBreaks);
}

BatchStatement statementOf(std::string_view text, std::int32_t firstLine, const std::string& name) {
    BatchStatement made;
    made.line = firstLine;
    std::string_view rest = withoutBlankLines(text, made.line);
    if (!rest.starts_with(kMessageMark)) {
        made.text = rest;
        return made;
    }
    const std::int32_t messageLine = made.line;
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    made.message =
        trimmed(rest.substr(kMessageMark.size(), end - kMessageMark.size()), kBlanksAndBreaks);
    made.text = withoutBlankLines(rest.substr(end), made.line);
    if (made.text.empty()) {
        throw UsageError(name + ", line " + plain::text(messageLine) +
                         ": a message without a statement");
    }
    return made;
}

}  // namespace

std::vector<BatchStatement> readStatements(const std::string& script, const std::string& name) {
    std::vector<BatchStatement> statements;
    for (const ado::ScriptBatch& batch : make<ado::Connection>()->batchesOf(script)) {
        const BatchStatement one = statementOf(batch.text.utf8(), batch.firstLine, name);
        if (!one.text.empty()) {
            statements.insert(statements.end(), static_cast<std::size_t>(batch.count), one);
        }
    }
    return statements;
}

}  // namespace kap::cli

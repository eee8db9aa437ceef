#include "cli/commands/call/call_command.hpp"

#include <iostream>

#include <nlohmann/json.hpp>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>
#include <kaputil/platform/message_box.hpp>

#include "cli/commands/call/call_session.hpp"
#include "cli/commands/call/call_words.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/terminal.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/output/value_text.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

void useLocale(const std::string& name) {
    try {
        setLocale(name);
    } catch (const AutomationError&) {  // raised for names that are not known only
        throw UsageError("unknown language \"" + name + "\"; try it-IT, en-US or en-GB");
    }
}

// "Double  2.68"; of a value that is its type, "Null".
std::string typedText(const Variant& value, const Terminal& terminal) {
    const std::string type = typeText(value);
    const std::string text = literalText(value);
    return type == text ? text : terminal.styled(Style::Dim, type) + "  " + shownText(text);
}

Json typedJson(const Variant& value) {
    Json json = {{"type", typeName(value.type())}};
    if (!value.isEmpty()) {
        json["value"] = jsonValue(value);
    }
    return json;
}

void printText(const CallOutcome& outcome, const Terminal& terminal) {
    if (outcome.hasResult) {
        std::cout << typedText(outcome.result, terminal) << '\n';
    }
    for (const auto& [name, value] : outcome.changed) {
        std::cout << "  " << terminal.styled(Style::Bold, name) << "  "
                  << typedText(value, terminal) << '\n';
    }
}

// Of a call that failed only the arguments that it had written by then.
void printOutcomeAsJson(const CallOutcome& outcome) {
    if (outcome.failure && outcome.changed.empty()) {
        return;
    }
    Json json = outcome.failure ? Json::object() : typedJson(outcome.result);
    json["byref"] = Json::object();
    for (const auto& [name, value] : outcome.changed) {
        json["byref"][name] = typedJson(value);
    }
    std::cout << json.dump() << '\n';
}

}  // namespace

int CallCommand::run() const {
    if (locale) {
        useLocale(*locale);
    }
    if (messageLog) {
        platform::setMessageLog(*messageLog);
    }
    const std::vector<GivenCall> calls = readCalls(words);
    const Terminal terminal = Terminal::ofStandardOutput();
    CallSession session;
    try {
        for (const GivenCall& given : calls) {
            const CallOutcome outcome = session.call(given);
            if (json) {
                printOutcomeAsJson(outcome);
            } else {
                printText(outcome, terminal);
            }
            if (outcome.failure) {
                throw AutomationError(*outcome.failure);
            }
        }
    } catch (const AutomationError& error) {
        std::cout.flush();
        printFailure(std::cerr, {error.number(), 0, 0, error.description()}, json);
        return kFailed;
    }
    return kSuccess;
}

}  // namespace kap::cli

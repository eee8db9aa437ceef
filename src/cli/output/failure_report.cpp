#include "cli/output/failure_report.hpp"

#include <iostream>

#include <nlohmann/json.hpp>

#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

// Half of a surrogate pair cannot be told in UTF-8; what() shows it as U+FFFD.
std::string sentence(const Failure& failure) {
    return AutomationError(failure.number, failure.description).what();
}

}  // namespace

std::vector<Failure> messagesOf(const ado::Connection& connection, std::int32_t firstLine) {
    std::vector<Failure> failures;
    const auto reported = connection.Errors();
    for (std::int32_t i = 0; i < reported->Count(); ++i) {
        const auto error = reported->Item(i);
        const std::int32_t line = error->line() > 0 ? error->line() + firstLine - 1 : 0;
        failures.push_back({error->Number(), error->NativeError(), line, error->Description()});
    }
    return failures;
}

std::vector<Failure> failuresOf(const ado::Connection& connection, const AutomationError& raised,
                                std::int32_t firstLine) {
    std::vector<Failure> failures = messagesOf(connection, firstLine);
    if (failures.empty()) {
        failures.push_back({raised.number(), 0, 0, raised.description()});
    }
    return failures;
}

void printFailure(std::ostream& out, const Failure& failure, bool json) {
    if (failure.isMessage()) {
        if (json) {
            out << nlohmann::ordered_json{{"message", sentence(failure)}}.dump() << '\n';
        } else {
            out << shownText(sentence(failure)) << '\n';
        }
        return;
    }
    if (json) {
        const nlohmann::ordered_json error = {{"number", failure.number},
                                              {"native", failure.native},
                                              {"line", failure.line},
                                              {"description", sentence(failure)}};
        out << nlohmann::ordered_json{{"error", error}}.dump() << '\n';
        return;
    }
    out << "error " << (failure.native != 0 ? failure.native : failure.number);
    if (failure.line > 0) {
        out << ", line " << failure.line;
    }
    out << ": " << shownText(sentence(failure)) << '\n';
}

void reportFailures(const std::vector<Failure>& failures, bool json) {
    std::cout.flush();
    for (const Failure& failure : failures) {
        printFailure(std::cerr, failure, json);
    }
}

}  // namespace kap::cli

#include "migrate/program_copy.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include <kaputil/automation/error.hpp>

namespace kap::migrate {
namespace {

// In the order in which they may need each other.
constexpr std::array<std::string_view, 5> kKinds = {"function", "check", "view", "procedure",
                                                    "trigger"};

std::size_t placeOf(const CopiedProgram& program) {
    return static_cast<std::size_t>(std::ranges::find(kKinds, program.kind) - kKinds.begin());
}

std::string nameOf(const CopiedProgram& program) {
    return "The " + program.kind + " " + program.name.text();
}

}  // namespace

ProgramCopy::ProgramCopy(ado::Connection& from, ado::Connection& to,
                         std::function<void(const std::string&)> tell)
    : to_(to),
      toDialect_(dialectOf(to)),
      read_(toDialect_.reads(dialectOf(from))),
      tell_(std::move(tell)),
      programs_(programsOf(from, dialectOf(from))) {
    std::ranges::stable_sort(programs_, {}, placeOf);
    if (read_) {
        there_ = programsOf(to_, toDialect_);
    }
}

std::vector<std::string> ProgramCopy::schemas() const {
    std::vector<std::string> names;
    for (const CopiedProgram& program : programs_) {
        if (read_ && placeOf(program) < kKinds.size()) {
            names.push_back(program.name.schema);
        }
    }
    return names;
}

void ProgramCopy::copyFunctions() {
    std::vector<const CopiedProgram*> functions;
    for (const CopiedProgram& program : programs_) {
        if (read_ && program.kind == kKinds.front()) {
            functions.push_back(&program);
        }
    }
    copy(functions, false);
}

void ProgramCopy::copyOthers(const std::vector<ado::ObjectName>& tables) {
    std::vector<const CopiedProgram*> others;
    for (const CopiedProgram& program : programs_) {
        const bool wanted =
            tables.empty() || std::ranges::any_of(tables, [&](const ado::ObjectName& table) {
                return table.isAlike(program.table);
            });
        if (!wanted) {
            continue;
        }
        if (!read_) {
            tell_(nameOf(program) + " stays behind: it is written in its database's dialect.");
        } else if (placeOf(program) == kKinds.size() || program.text.empty()) {
            tell_(nameOf(program) + " stays behind: its text is not known.");
        } else {
            others.push_back(&program);
        }
    }
    copy(others, true);
}

void ProgramCopy::copy(std::vector<const CopiedProgram*> programs, bool tells) {
    std::erase_if(programs, [&](const CopiedProgram* each) { return isThere(*each); });
    std::vector<Refusal> refused = attempt(programs);
    while (!refused.empty() && refused.size() < programs.size()) {
        programs.clear();
        for (const Refusal& each : refused) {
            programs.push_back(each.program);
        }
        refused = attempt(programs);
    }
    for (const Refusal& each : refused) {
        if (tells) {
            tell_(nameOf(*each.program) + " stays behind: " + each.reason);
        }
    }
}

std::vector<ProgramCopy::Refusal> ProgramCopy::attempt(
    const std::vector<const CopiedProgram*>& programs) {
    std::vector<Refusal> refused;
    for (const CopiedProgram* program : programs) {
        try {
            make(*program);
            there_.push_back(*program);
        } catch (const AutomationError& error) {
            refused.push_back({program, error.description().utf8()});
            continue;
        }
        if (program->disabled) {
            switchOff(*program);
        }
    }
    return refused;
}

bool ProgramCopy::isThere(const CopiedProgram& program) const {
    return std::ranges::any_of(there_, [&](const CopiedProgram& other) {
        return other.kind == program.kind && other.name.isAlike(program.name);
    });
}

void ProgramCopy::make(const CopiedProgram& program) {
    if (program.kind == "check") {
        to_.Execute("ALTER TABLE " + toDialect_.qualified(program.table) +
                    (program.disabled ? toDialect_.unchecked() : "") + " ADD CONSTRAINT " +
                    toDialect_.quoted(program.name.name) + " CHECK " + program.text);
    } else {
        to_.Execute(program.text);
    }
}

void ProgramCopy::switchOff(const CopiedProgram& program) {
    try {
        to_.Execute(program.kind == "check"
                        ? toDialect_.switchingOffConstraint(program.table, program.name.name)
                        : toDialect_.switchingOffTrigger(program.table, program.name.name));
    } catch (const AutomationError& error) {
        tell_(nameOf(program) + " is switched on: " + error.description().utf8());
    }
}

}  // namespace kap::migrate

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "migrate/copied_tables.hpp"

namespace kap::migrate {

// Copies what a database keeps as texts: checks, functions, views, procedures and triggers. They go
// along where the target reads the source's dialect; what does not is told.
class ProgramCopy {
public:
    // `tell` is given a sentence for whatever is left behind.
    ProgramCopy(ado::Connection& from, ado::Connection& to,
                std::function<void(const std::string&)> tell);

    // The schemas that have any which the target can be given.
    [[nodiscard]] std::vector<std::string> schemas() const;
    // The functions, which tables may need. Those that need tables themselves come later.
    void copyFunctions();
    // Everything else, behind the rows of the tables: triggers would write more of them. With
    // `tables` only what belongs to one of them.
    void copyOthers(const std::vector<ado::ObjectName>& tables);

private:
    struct Refusal {
        const CopiedProgram* program;
        std::string reason;
    };
    // Tries each until no more of them get in, for one may need another. Tells of the rest.
    void copy(std::vector<const CopiedProgram*> programs, bool tells);
    [[nodiscard]] bool isThere(const CopiedProgram& program) const;
    // Tries each once.
    [[nodiscard]] std::vector<Refusal> attempt(const std::vector<const CopiedProgram*>& programs);
    void make(const CopiedProgram& program);
    void switchOff(const CopiedProgram& program);

    ado::Connection& to_;
    const ado::SqlDialect& toDialect_;
    bool read_;  // whether the target reads the source's dialect
    std::function<void(const std::string&)> tell_;
    std::vector<CopiedProgram> programs_;
    std::vector<CopiedProgram> there_;
};

}  // namespace kap::migrate

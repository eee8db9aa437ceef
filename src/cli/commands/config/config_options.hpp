#pragma once

#include <CLI/CLI.hpp>

#include "cli/commands/config/config_command.hpp"

namespace kap::cli {

// The words and options of `kaputil config`, and the command that was typed.
class ConfigOptions {
public:
    // Adds the command to the command line; the object must outlive it.
    void addTo(CLI::App& app);

    [[nodiscard]] bool parsed() const { return command_ != nullptr && command_->parsed(); }
    // Runs what was typed and gives back its exit code.
    [[nodiscard]] int run() const;

private:
    void addShow();
    void addDiff();
    void addExport();
    void addImport();

    CLI::App* command_ = nullptr;
    CLI::App* showCommand_ = nullptr;
    CLI::App* diffCommand_ = nullptr;
    CLI::App* exportCommand_ = nullptr;
    CLI::App* importCommand_ = nullptr;
    ConfigShow show_;
    ConfigDiff diff_;
    ConfigExport export_;
    ConfigImport import_;
};

}  // namespace kap::cli

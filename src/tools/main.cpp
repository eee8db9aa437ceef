// The command line of the library: reads the arguments and runs the command they name.
#include <CLI/CLI.hpp>

#include <cstdint>
#include <iostream>

#include "tools/demo_command.hpp"
#include "tools/exit_codes.hpp"
#include "tools/sql_command.hpp"

namespace {

using namespace kap::tools;

constexpr const char* kVersion = "KAP Utility 2.6 (2.6.0.5)";

CLI::App* addDemo(CLI::App& app, DemoCommand& demo) {
    CLI::App* command =
        app.add_subcommand("demo", "Two users edit the documents of a sample company.");
    command
        ->add_option("--database", demo.database,
                     "Keep the company in this file, made when it is missing; without it the "
                     "demo uses a file of its own and removes it.")
        ->type_name("FILE");
    command->add_option("--seed", demo.seed, "The number that the sample data is made from.")
        ->type_name("N")
        ->capture_default_str();
    command->add_flag("--json", demo.json, "Print one JSON object with every step.");
    return command;
}

CLI::App* addSql(CLI::App& app, SqlCommand& sql) {
    CLI::App* command = app.add_subcommand("sql", "Run a script in the dialect on a database.");
    command->footer(
        "Without --file and --command the script is read from standard input. The script is\n"
        "UTF-8; lines that hold only GO cut it into batches. It ends at the first error.\n"
        "Exit codes: 0 done, 1 an error in the script, 2 wrong usage, 3 no database.");
    command
        ->add_option("--connection", sql.connection,
                     "For example "
                     "\"Provider=KapLocal;Data Source=azienda.db\".")
        ->type_name("STRING")
        ->required();
    CLI::Option* file =
        command->add_option("--file", sql.file, "The file that holds the script.")->type_name("F");
    command->add_option("--command", sql.command, "The script itself.")
        ->type_name("TEXT")
        ->excludes(file);
    command->add_flag("--json", sql.json, "Print one JSON object a line for each result.");
    return command;
}

int runCommand(const CLI::App& demoCommand, const DemoCommand& demo, const SqlCommand& sql) {
    const int code = demoCommand.parsed() ? demo.run() : sql.run();
    // A full disk or a closed pipe shows only here.
    if (!std::cout.flush()) {
        std::cerr << "kaputil: cannot write to standard output\n";
        return kFailed;
    }
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("The command line of KAP Utility.", "kaputil");
    app.set_version_flag("--version", kVersion);
    app.require_subcommand(0, 1);  // none is told below, after words that are no command
    DemoCommand demo;
    SqlCommand sql;
    const CLI::App* demoCommand = addDemo(app, demo);
    addSql(app, sql);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kSuccess : kWrongUsage;
    }
    if (app.get_subcommands().empty()) {
        return app.exit(CLI::RequiredError::Subcommand(1)) == 0 ? kSuccess : kWrongUsage;
    }
    return runCommand(*demoCommand, demo, sql);
}

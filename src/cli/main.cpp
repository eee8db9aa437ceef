// The command line of the library: reads the arguments and runs the command they name.
#include <CLI/CLI.hpp>

#ifdef _WIN32
#include <windows.h>
#endif

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "cli/command_words.hpp"
#include "cli/commands/batch/batch_command.hpp"
#include "cli/commands/call/call_command.hpp"
#include "cli/commands/classes/classes_command.hpp"
#include "cli/commands/config/config_options.hpp"
#include "cli/commands/copy/copy_command.hpp"
#include "cli/commands/describe/describe_command.hpp"
#include "cli/commands/export/export_command.hpp"
#include "cli/commands/numbers/numbers_command.hpp"
#include "cli/commands/registry/registry_options.hpp"
#include "cli/commands/sql/sql_command.hpp"
#include "cli/demo/demo_command.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"

namespace {

using namespace kap::cli;

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

CLI::App* addClasses(CLI::App& app, ClassesCommand& classes) {
    CLI::App* command = app.add_subcommand("classes", "Show the classes and their members.");
    command->footer(
        "Without a name all classes are listed. Names are compared ignoring case; the classes\n"
        "of the platform are called by their whole name, for example ADODB.Connection.");
    command->add_option("name", classes.name, "A class, CLASS.MEMBER, or an enumeration.")
        ->type_name("");
    CLI::Option* json = command->add_flag("--json", classes.json, "Print one JSON object.");
    command
        ->add_flag("--names", classes.names,
                   "Print names only, one a line: of the classes, of a class's members, of a "
                   "member's parameters.")
        ->excludes(json);
    return command;
}

// Its words are told apart before the other arguments are read; those named here are for the help.
CLI::App* addCall(CLI::App& app, CallCommand& call, std::string& forHelp) {
    CLI::App* command = app.add_subcommand("call", "Call members and show what they give.");
    command->footer(
        "MEMBER is one of the general functions (KapRound) or CLASS.MEMBER, of which an object\n"
        "is made (CProprieta.Leggi); calls behind a + go to the same object:\n"
        "\n"
        "  kaputil call KapRound 2.675 2\n"
        "  kaputil call CProprieta.Scrivi Codice 12 + Leggi codice\n"
        "\n"
        "Arguments:\n"
        "  12  -2.5  1E6       numbers as in program text: Integer, Long or Double\n"
        "  true false null empty missing\n"
        "  '#2003-12-25#'  '#2003-12-25 10:30:00#'\n"
        "  type:text           the text converted in the user's language: double:2,5 string:12\n"
        "                      integer: long: single: currency: decimal: date: boolean: byte:\n"
        "  NAME:=value         a named argument, behind those by position\n"
        "  anything else       a text; also digits behind a leading zero\n"
        "Words behind -- are never options.\n"
        "\n"
        "Each result is printed with its type, then the by-reference arguments that have a\n"
        "new value. Message boxes go to the system log unless --message-log names a file.\n"
        "Exit codes: 0 done, 1 a member raised an error, 2 wrong usage.");
    command->add_option("MEMBER ARG... + MEMBER ARG...", forHelp, "What to call.")->type_name("");
    command->add_option("--locale", call.locale, "The language of conversions: it-IT, en-US, ...")
        ->type_name("NAME");
    command->add_option("--message-log", call.messageLog, "The file message boxes are added to.")
        ->type_name("FILE");
    command->add_flag("--json", call.json, "Print one JSON object a line for each result.");
    return command;
}

CLI::App* addSql(CLI::App& app, SqlCommand& sql) {
    CLI::App* command = app.add_subcommand("sql", "Run a script in the dialect on a database.");
    command->footer(
        "Without --file and --command the script is read from standard input. The script is\n"
        "UTF-8, or UTF-16 with a byte-order mark; lines that hold only GO cut it into batches. It\n"
        "ends at the first batch with an error. What it prints goes to standard error.\n"
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
    command->add_flag("--keep-going", sql.keepGoing, "Go on behind a batch with an error.");
    command->add_flag("--plan", sql.plan,
                      "Print how each statement would be gone about instead of running it.");
    command
        ->add_option("--backup", sql.backup,
                     "Copy the database to a new file first; it may be in use meanwhile.")
        ->type_name("F");
    command->add_flag("--check", sql.check, "Check the database first.");
    return command;
}

CLI::App* addExport(CLI::App& app, ExportCommand& exporting) {
    CLI::App* command = app.add_subcommand("export", "Write the rows of a query to a text file.");
    command->footer(
        "The file gets lines of fixed length, described in its section of Schema.ini beside it,\n"
        "which is written anew; with --keep-schema the section is used as it stands.\n"
        "Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database.");
    command->add_option("--connection", exporting.connection, "The connection string.")
        ->type_name("STRING")
        ->required();
    command->add_option("--query", exporting.query, "The query whose rows are written.")
        ->type_name("TEXT")
        ->required();
    command->add_option("--folder", exporting.folder, "The folder of the file.")
        ->type_name("FOLDER")
        ->capture_default_str();
    command->add_option("--name", exporting.name, "The name of the file, as in EXPORT.TXT.")
        ->type_name("NAME")
        ->required();
    command->add_flag("--keep-schema", exporting.keepSchema, "Use the Schema.ini that is there.");
    command
        ->add_option("--message-log", exporting.messageLog, "The file message boxes are added to.")
        ->type_name("FILE");
    command->add_flag("--json", exporting.json, "Print one JSON object.");
    return command;
}

CLI::App* addBatch(CLI::App& app, BatchCommand& batch) {
    CLI::App* command =
        app.add_subcommand("batch", "Run statements as one script: all happen or none.");
    command->footer(
        "FILE is a script as for \"kaputil sql\"; lines that hold only GO stand between the\n"
        "statements. A statement may begin with a line that holds its error message:\n"
        "\n"
        "  -- message: Addebito fallito\n"
        "  UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1\n"
        "  GO\n"
        "  UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2\n"
        "\n"
        "When a statement fails, the server's error, the message and the statement go to\n"
        "standard error, and nothing is changed.\n"
        "Exit codes: 0 done, 1 a statement failed, 2 wrong usage, 3 no database.");
    command->add_option("FILE", batch.file, "The file of statements.")->type_name("")->required();
    command
        ->add_option("--connection", batch.connection,
                     "For example \"Provider=KapLocal;Data Source=azienda.db\".")
        ->type_name("STRING");
    command->add_flag("--dry-run", batch.dryRun, "Print the script instead of running it.");
    command->add_flag("--json", batch.json, "Print one JSON object a line.");
    return command;
}

// Takes the words that an option knows.
void requireWord(const std::string& option, const std::string& given, bool known,
                 const std::string& words) {
    if (!known) {
        throw CLI::ValidationError(option, "\"" + given + "\" is none of " + words);
    }
}

void addLanguage(CLI::App& command, Language& language) {
    command
        .add_option_function<std::string>(
            "--language",
            [&language](const std::string& given) {
                requireWord("--language", given, given == "it" || given == "en", "it, en");
                language = given == "en" ? Language::English : Language::Italian;
            },
            "The language of the page, Italian unless given.")
        ->type_name("it|en");
}

CLI::App* addNumbers(CLI::App& app, NumbersCommand& numbers) {
    CLI::App* command =
        app.add_subcommand("numbers", "Show whether every document number can be accounted for.");
    command->footer(
        "For each counter and year: the last definitive and provisional number given out, who\n"
        "carries the numbers (documents, invoices, accounting entries, reservations), and what is\n"
        "amiss: numbers missing, carried twice or beyond the counter, entries without documents\n"
        "and the reverse, reservations left over, dates that go back, types that changed their\n"
        "counter. Nothing is changed.\n"
        "Exit codes: 0 done, 1 a table cannot be read, 2 wrong usage, 3 no database,\n"
        "4 anomalies, with --fail-on anomalies.");
    command
        ->add_option("--connection", numbers.connection,
                     "For example \"Provider=KapLocal;Data Source=azienda.db\".")
        ->type_name("STRING")
        ->required();
    command->add_option("--counter", numbers.counter, "Only this counter.")->type_name("CODE");
    command->add_option("--year", numbers.year, "Only this year.")->type_name("YEAR");
    command->add_option("--from", numbers.from, "Only numbers from this one on.")->type_name("N");
    command->add_option("--to", numbers.to, "Only numbers up to this one.")->type_name("N");
    command->add_flag("--register", numbers.everyNumber,
                      "Show every number with who carries it, not only what is amiss.");
    command
        ->add_option_function<std::string>(
            "--fail-on",
            [&numbers](const std::string& given) {
                requireWord("--fail-on", given, given == "anomalies", "anomalies");
                numbers.failOnAnomalies = true;
            },
            "What makes the command fail, for scheduled jobs.")
        ->type_name("anomalies");
    CLI::Option* json = command->add_flag("--json", numbers.json, "Print one JSON object.");
    CLI::Option* csv =
        command->add_flag("--csv", numbers.csv, "Print the whole register for spreadsheets.");
    CLI::Option* html = command->add_flag(
        "--html", numbers.html, "Print one page for browsers, which prints well on paper.");
    csv->excludes(json);
    html->excludes(json)->excludes(csv);
    addLanguage(*command, numbers.language);
    command->add_option("--output", numbers.output, "Write to this file instead of printing.")
        ->type_name("FILE");
    return command;
}

CLI::App* addDescribe(CLI::App& app, DescribeCommand& describe) {
    CLI::App* command = app.add_subcommand("describe", "Show what a database is made of.");
    command->footer(
        "Tables with their columns, keys, checks, triggers and numbers of rows; views, procedures\n"
        "and functions. The page for browsers draws which tables refer to which.\n"
        "Exit codes: 0 done, 1 an error, 2 wrong usage, 3 no database.");
    command->add_option("--connection", describe.connection, "The connection string.")
        ->type_name("STRING")
        ->required();
    command->add_option("--table", describe.table, "Only this table.")->type_name("NAME");
    CLI::Option* json = command->add_flag("--json", describe.json, "Print one JSON object.");
    command
        ->add_flag("--html", describe.html,
                   "Print one page for browsers, which prints well on paper.")
        ->excludes(json);
    addLanguage(*command, describe.language);
    command->add_option("--output", describe.output, "Write to this file instead of printing.")
        ->type_name("FILE");
    return command;
}

CLI::App* addCopy(CLI::App& app, CopyCommand& copy) {
    CLI::App* command = app.add_subcommand("copy", "Copy the tables of a database to another one.");
    command->footer(
        "Tables are made with their columns, primary keys and identities; each is compared with\n"
        "its source at the end, by the number of rows and a checksum. A copy that was interrupted\n"
        "goes on where it stopped when it is started again.\n"
        "Exit codes: 0 all tables are equal, 1 an error or a difference, 2 wrong usage,\n"
        "3 no database.");
    command->add_option("--from", copy.from, "The connection string of the source.")
        ->type_name("STRING")
        ->required();
    command->add_option("--to", copy.to, "The connection string of the target.")
        ->type_name("STRING")
        ->required();
    command->add_option("--table", copy.tables, "Only this table; several may be given.")
        ->type_name("NAME");
    command->add_flag("--json", copy.json, "Print one JSON object a line for each table.");
    return command;
}

// The commands and what was typed for each.
class CommandLine {
public:
    CommandLine() {
        app_.set_version_flag("--version", kVersion);
        app_.require_subcommand(0, 1);  // none is told below, after words that are no command
        demoCommand_ = addDemo(app_, demo_);
        classesCommand_ = addClasses(app_, classes_);
        callCommand_ = addCall(app_, call_, wordsForHelp_);
        addSql(app_, sql_);
        batchCommand_ = addBatch(app_, batch_);
        config_.addTo(app_);
        registryCommand_ = addRegistry(app_, registry_);
        exportCommand_ = addExport(app_, export_);
        numbersCommand_ = addNumbers(app_, numbers_);
        copyCommand_ = addCopy(app_, copy_);
        describeCommand_ = addDescribe(app_, describe_);
    }

    int run(std::vector<std::string> arguments) {
        try {
            parse(std::move(arguments));
        } catch (const CLI::ParseError& error) {
            return app_.exit(error) == 0 ? kSuccess : kWrongUsage;
        }
        if (app_.get_subcommands().empty()) {
            return app_.exit(CLI::RequiredError::Subcommand(1)) == 0 ? kSuccess : kWrongUsage;
        }
        return runParsed();
    }

private:
    void parse(std::vector<std::string> arguments) {
        if (!arguments.empty() && arguments.front() == callCommand_->get_name()) {
            std::vector<std::string> behind(arguments.begin() + 1, arguments.end());
            call_.words = takeWords(*callCommand_, behind);
            arguments.resize(1);
            std::ranges::move(behind, std::back_inserter(arguments));
        }
        std::ranges::reverse(arguments);
        app_.parse(std::move(arguments));
    }

    int runParsed() const {
        int code = kWrongUsage;
        try {
            code = runCommand();
        } catch (const UsageError& error) {
            std::cout.flush();
            std::cerr << "kaputil: " << shownText(error.what()) << '\n';
        } catch (const std::bad_alloc&) {
            std::cerr << "kaputil: there is not enough memory\n";
            code = kFailed;
        }
        // A full disk or a closed pipe shows only here.
        if (!std::cout.flush()) {
            std::cerr << "kaputil: cannot write to standard output\n";
            return kFailed;
        }
        return code;
    }

    int runCommand() const {
        if (demoCommand_->parsed()) {
            return demo_.run();
        }
        if (classesCommand_->parsed()) {
            return classes_.run();
        }
        if (batchCommand_->parsed()) {
            return batch_.run();
        }
        if (config_.parsed()) {
            return config_.run();
        }
        if (registryCommand_->parsed()) {
            return registry_.run();
        }
        if (exportCommand_->parsed()) {
            return export_.run();
        }
        if (numbersCommand_->parsed()) {
            return numbers_.run();
        }
        if (copyCommand_->parsed()) {
            return copy_.run();
        }
        if (describeCommand_->parsed()) {
            return describe_.run();
        }
        return callCommand_->parsed() ? call_.run() : sql_.run();
    }

    CLI::App app_{"The command line of KAP Utility.", "kaputil"};
    DemoCommand demo_;
    ClassesCommand classes_;
    CallCommand call_;
    SqlCommand sql_;
    BatchCommand batch_;
    ConfigOptions config_;
    RegistryCommand registry_;
    ExportCommand export_;
    NumbersCommand numbers_;
    CopyCommand copy_;
    DescribeCommand describe_;
    std::string wordsForHelp_;
    const CLI::App* demoCommand_ = nullptr;
    const CLI::App* classesCommand_ = nullptr;
    const CLI::App* callCommand_ = nullptr;
    const CLI::App* registryCommand_ = nullptr;
    const CLI::App* exportCommand_ = nullptr;
    const CLI::App* batchCommand_ = nullptr;
    const CLI::App* numbersCommand_ = nullptr;
    const CLI::App* copyCommand_ = nullptr;
    const CLI::App* describeCommand_ = nullptr;
};

}  // namespace

#ifdef _WIN32
// The system gives arguments in its own code page; the whole of them it tells when it is asked.
int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::u8string argument = std::filesystem::path(argv[i]).u8string();
        arguments.emplace_back(argument.begin(), argument.end());
    }
    SetConsoleOutputCP(CP_UTF8);
    return CommandLine().run(std::move(arguments));
}
#else
int main(int argc, char** argv) {
    return CommandLine().run({argv + 1, argv + argc});
}
#endif

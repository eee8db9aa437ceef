#include "cli/commands/shell/shell_commands.hpp"

#include <algorithm>
#include <array>
#include <iostream>
#include <sstream>

#include <kaputil/automation/error.hpp>

#include "base/ascii.hpp"
#include "cli/commands/describe/describe_output.hpp"
#include "cli/commands/import/import_command.hpp"
#include "cli/commands/shell/pager.hpp"
#include "cli/language_option.hpp"
#include "cli/names.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/language.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/text_file.hpp"
#include "migrate/copied_tables.hpp"

namespace kap::cli {
namespace {

using ShellWords = std::vector<std::string>;

struct ShellCommand {
    const char* name;
    const char* arguments;
    const char* help;
    const char* italianHelp;
    void (*run)(const ShellWords& words, ShellState& state);
};

const std::string& wordAt(const ShellWords& words, std::size_t index, const char* what) {
    if (index >= words.size()) {
        throw UsageError(std::string(what) + " is missing; :help tells the commands");
    }
    return words[index];
}

// "on", "off", or the other one of what it is.
bool switched(const ShellWords& words, bool now) {
    if (words.size() < 2) {
        return !now;
    }
    if (!equalsIgnoringCase(words[1], "on") && !equalsIgnoringCase(words[1], "off")) {
        throw UsageError("it is on or off");
    }
    return equalsIgnoringCase(words[1], "on");
}

void showTables(const ShellWords& /*words*/, ShellState& state) {
    runStatements(state.connection,
                  "SELECT TABLE_NAME AS [Name], TABLE_TYPE AS [Kind] "
                  "FROM INFORMATION_SCHEMA.TABLES ORDER BY TABLE_NAME",
                  state.settings);
}

void showPrograms(const ShellWords& /*words*/, ShellState& state) {
    runStatements(state.connection,
                  "SELECT ROUTINE_NAME AS [Name], ROUTINE_TYPE AS [Kind] "
                  "FROM INFORMATION_SCHEMA.ROUTINES ORDER BY ROUTINE_NAME",
                  state.settings);
}

std::string requireTable(const std::string& name, ShellState& state) {
    const std::vector<std::string> tables = state.names.tables();
    for (const std::string& table : tables) {
        if (equalsIgnoringCase(table, name)) {
            return table;
        }
    }
    throw UsageError("there is no table " + name + suggestion(name, tables));
}

void describeTable(const ShellWords& words, ShellState& state) {
    const std::string table = requireTable(wordAt(words, 1, "the table"), state);
    const Terminal terminal = Terminal::ofStandardOutput();
    std::stringbuf buffer;
    std::ostream shown(&buffer);
    printFacts(shown, readDatabaseFacts(state.connection, table), terminal);
    showPaged(buffer.str(), terminal);
}

std::string kindOf(const migrate::CopiedIndex& index) {
    switch (index.kind) {
        case migrate::CopiedIndex::Kind::PrimaryKey:
            return "primary key";
        case migrate::CopiedIndex::Kind::UniqueKey:
            return "unique key";
        case migrate::CopiedIndex::Kind::Index:
            break;
    }
    return index.unique ? "unique index" : "index";
}

void showIndexes(const ShellWords& words, ShellState& state) {
    const ado::SqlDialect& dialect = migrate::dialectOf(state.connection);
    std::vector<std::string> tables;
    if (words.size() > 1) {
        tables.push_back(requireTable(words[1], state));
    } else {
        tables = migrate::tablesOf(state.connection, dialect);
    }
    std::stringbuf buffer;
    std::ostream shown(&buffer);
    for (const std::string& table : tables) {
        for (const migrate::CopiedIndex& index :
             migrate::indexesOf(state.connection, dialect, ado::ObjectName(table))) {
            shown << shownText(table) << "  " << shownText(index.name) << "  " << kindOf(index)
                  << " (" << shownText(migrate::joined(index.columns())) << ")\n";
        }
    }
    showPaged(buffer.str(), Terminal::ofStandardOutput());
}

void chooseMode(const ShellWords& words, ShellState& state) {
    const std::vector<std::string> names = formNames();
    if (words.size() > 1 && !chooseForm(words[1], state.settings)) {
        throw UsageError("there is no mode " + words[1] + suggestion(words[1], names));
    }
    if (words.size() < 2) {
        std::cout << "The modes are " << migrate::joined(names) << ".\n";
    }
}

void switchTiming(const ShellWords& words, ShellState& state) {
    state.settings.timing = switched(words, state.settings.timing);
    std::cout << "Timing is " << (state.settings.timing ? "on" : "off") << ".\n";
}

void switchPlan(const ShellWords& words, ShellState& state) {
    state.plan = switched(words, state.plan);
    std::cout << (state.plan ? "Statements are explained instead of run; :plan runs them again.\n"
                             : "Statements are run.\n");
}

void importFile(const ShellWords& words, ShellState& state) {
    ImportCommand import;
    import.table = wordAt(words, 1, "the table");
    import.file = wordAt(words, 2, "the file");
    if (words.size() > 3) {
        import.locale = words[3];
    }
    static_cast<void>(import.runOn(state.connection));
}

void exportRows(const ShellWords& words, ShellState& state) {
    const std::string& file = wordAt(words, 1, "the file");
    wordAt(words, 2, "the query");
    const auto form = formOfFile(file);
    if (!form) {
        throw UsageError(
            "the file's ending tells its form: .csv, .tsv, .md, .html, .json or .jsonl");
    }
    std::string query;
    for (std::size_t i = 2; i < words.size(); ++i) {
        query += words[i] + " ";
    }
    runInto(state.connection, state.variables.expanded(query), *form, file);
    std::cout << "The rows are in " << shownText(file) << '\n';
}

void runFile(const ShellWords& words, ShellState& state) {
    const std::string script = textOfFile(wordAt(words, 1, "the file"));
    runStatements(state.connection, state.variables.prepared(script), state.settings);
    state.names.forget();
}

void setShellVariable(const ShellWords& words, ShellState& state) {
    if (words.size() < 2) {
        for (const auto& [name, value] : state.variables.all()) {
            std::cout << name << " = " << shownText(value) << '\n';
        }
    } else if (words.size() == 2) {
        state.variables.forget(words[1]);
    } else {
        state.variables.set(words[1], words[2]);
    }
}

void quit(const ShellWords& /*words*/, ShellState& state) {
    state.done = true;
}

void help(const ShellWords& words, ShellState& state);

constexpr auto kShellCommands = std::to_array<ShellCommand>(
    {{":tables", "", "the tables and views", "le tabelle e le viste", &showTables},
     {":describe", "TABLE", "a table's columns, keys and triggers",
      "colonne, chiavi e trigger di una tabella", &describeTable},
     {":indexes", "[TABLE]", "the keys and indexes", "le chiavi e gli indici", &showIndexes},
     {":procs", "", "the procedures and functions", "le procedure e le funzioni", &showPrograms},
     {":mode", "[MODE]", "how rows are shown: table, vertical, csv, ...",
      "come si mostrano le righe: table, vertical, csv, ...", &chooseMode},
     {":timing", "[on|off]", "how long each statement takes", "quanto dura ogni istruzione",
      &switchTiming},
     {":plan", "[on|off]", "explains statements instead of running them",
      "spiega le istruzioni invece di eseguirle", &switchPlan},
     {":import", "TABLE FILE [LOCALE]", "brings the rows of a file into a table",
      "porta le righe di un file in una tabella", &importFile},
     {":export", "FILE \"QUERY\"", "writes rows to a .csv, .tsv, .md, .html, .json, .jsonl",
      "scrive righe in un .csv, .tsv, .md, .html, .json, .jsonl", &exportRows},
     {":r", "FILE", "runs a script", "esegue uno script", &runFile},
     {":setvar", "[NAME [VALUE]]", "what stands for $(NAME) in statements",
      "che cosa sta al posto di $(NAME) nelle istruzioni", &setShellVariable},
     {":help", "", "this text", "questo testo", &help},
     {":quit", "", "leaves, as Ctrl-D does", "esce, come Ctrl-D", &quit}});

void help(const ShellWords& /*words*/, ShellState& /*state*/) {
    constexpr std::size_t kRoom = 30;
    const bool italian = userLanguage() == Language::Italian;
    std::cout
        << (italian
                ? "Un'istruzione finisce con ; in fondo alla riga, o con una riga GO; quello che "
                  "crea\n"
                  "procedure, funzioni o trigger finisce solo con GO. Ctrl-C annulla.\n"
                : "A statement ends with ; at the end of a line, or with a line GO; what makes a\n"
                  "procedure, function or trigger ends with GO alone. Ctrl-C cancels.\n");
    for (const ShellCommand& command : kShellCommands) {
        std::cout << "  " << padded(std::string(command.name) + " " + command.arguments, kRoom)
                  << (italian ? command.italianHelp : command.help) << '\n';
    }
    std::cout << std::flush;
}

const ShellCommand* find(const std::string& name) {
    const auto* const found = std::ranges::find_if(kShellCommands, [&](const ShellCommand& each) {
        return equalsIgnoringCase(each.name, name);
    });
    return found == kShellCommands.end() ? nullptr : found;
}

}  // namespace

std::vector<std::string> shellCommandNames() {
    std::vector<std::string> names;
    names.reserve(kShellCommands.size());
    for (const ShellCommand& command : kShellCommands) {
        names.emplace_back(command.name);
    }
    return names;
}

void runShellCommand(const std::string& line, ShellState& state) {
    const ShellWords words = wordsOfLine(trimmed(line, " \t;"));
    const ShellCommand* command = find(words.front());
    try {
        if (command == nullptr) {
            throw UsageError("there is no command " + words.front() +
                             suggestion(words.front(), shellCommandNames()));
        }
        command->run(words, state);
    } catch (const UsageError& error) {
        std::cerr << shownText(error.what()) << '\n';
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(state.connection, error), false);
    }
}

}  // namespace kap::cli

#include "cli/demo/demo_command.hpp"

#include <filesystem>
#include <iostream>
#include <system_error>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/platform/folders.hpp>

#include "automation/clock.hpp"
#include "base/quoting.hpp"
#include "cli/commands/numbers/numbers_output.hpp"
#include "cli/demo/demo_report.hpp"
#include "cli/demo/demo_story.hpp"
#include "cli/demo/sample_company.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/output_file.hpp"
#include "cli/output/terminal.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/temporary_folder.hpp"

namespace kap::cli {
namespace {

// A value in quotes may hold what would otherwise end it.
String connectionStringFor(const std::string& file) {
    return "Provider=KapLocal;Data Source=" + inQuotes(file);
}

bool isNew(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return error == std::errc::no_such_file_or_directory || (!error && size == 0);
}

int fail(const std::string& sentence, int code) {
    std::cout.flush();
    std::cerr << "kaputil: " << sentence << '\n';
    return code;
}

int fail(const std::string& doing, const ado::Connection& connection, const AutomationError& error,
         int code) {
    std::cout.flush();
    std::cerr << "kaputil: " << doing << '\n';
    for (const Failure& failure : failuresOf(connection, error)) {
        printFailure(std::cerr, failure, /*json=*/false);
    }
    return code;
}

// A company made by half is none: the next run begins again with a new file.
void removeUnfinished(const std::string& file) {
    for (const char* companion : {"", "-wal", "-shm", "-journal"}) {
        std::error_code ignored;  // the failure that is told is the one that came before
        std::filesystem::remove(file + companion, ignored);
    }
}

// Looks at what the file holds, and fills it when it is new. Gives back an exit code.
int prepare(const DemoCommand& options, const std::string& file, const String& connectionString,
            DemoReport& report) {
    const bool create = isNew(file);
    const auto connection = make<ado::Connection>();
    try {
        connection->Open(connectionString);
    } catch (const AutomationError& error) {
        return fail("cannot open " + file, *connection, error, kNoDatabase);
    }
    try {
        if (create) {
            createSampleCompany(*connection, options.seed);
        } else if (!holdsSampleCompany(*connection)) {
            return fail(file +
                            " is a database, but not the sample company's, and was left alone; "
                            "name a new file",
                        kFailed);
        }
        report.company(options.database ? file : "a temporary file", create, options.seed,
                       sampleCompanySizes(*connection));
    } catch (const AutomationError& error) {
        if (create) {
            connection->Close();
            removeUnfinished(file);
        }
        return fail("cannot use " + file, *connection, error, kFailed);
    }
    return kSuccess;
}

std::string hintFor(const DemoCommand& options) {
    if (!options.database) {
        return {};
    }
    return "Look further:  kaputil sql --connection \"Provider=KapLocal;Data Source=" +
           *options.database + "\" --command \"SELECT TOP 5 * FROM Clienti\"";
}

// Beside a database that is kept, else among what the user keeps, where the next demo replaces it.
std::filesystem::path registerFile(const DemoCommand& options) {
    if (!options.database) {
        return platform::dataFolder() / "registro-demo.html";
    }
    std::filesystem::path file = *options.database;
    return file.replace_filename(file.stem().string() + "-registro.html");
}

// The demo has shown what it had to show: what keeps the file from being written is only told.
void writeRegister(const DemoCommand& options, const String& connectionString, DemoReport& report) {
    const std::filesystem::path file = registerFile(options);
    std::string failure;
    try {
        Variant connection(connectionString);
        NumbersView view;
        view.registers = numbering::readRegisters(connection);
        if (file.has_parent_path()) {
            std::filesystem::create_directories(file.parent_path());
        }
        writeWholeFile(file.string(), [&view](std::ostream& out) {
            printNumbersHtml(out, view, Language::Italian, "Ferramenta Campione S.r.l.",
                             localNow());
        });
    } catch (const std::filesystem::filesystem_error& error) {
        failure = error.what();
    } catch (const UsageError& error) {
        failure = error.what();
    }
    report.numberRegister(file.string(), failure);
}

}  // namespace

int DemoCommand::run() const {
    std::optional<TemporaryFolder> folder;
    std::string file;
    if (database) {
        file = *database;
    } else {
        file = (folder.emplace().path() / "azienda.db").string();
    }
    const String connectionString = connectionStringFor(file);
    DemoReport report(std::cout, Terminal::ofStandardOutput(), json);
    if (const int code = prepare(*this, file, connectionString, report); code != kSuccess) {
        return code;
    }
    try {
        tellStory(report, connectionString);
        writeRegister(*this, connectionString, report);
    } catch (const AutomationError& error) {
        return fail(
            "the demo ended with error " + plain::text(error.number()) + ": " + error.what(),
            kFailed);
    } catch (const StoryError& error) {
        return fail(error.what(), kFailed);
    }
    report.finish(hintFor(*this));
    return report.allExpected() ? kSuccess : kFailed;
}

}  // namespace kap::cli

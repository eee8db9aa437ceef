#include "cli/commands/shell/statement_output.hpp"

#include <array>
#include <chrono>
#include <iostream>
#include <memory>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "cli/commands/shell/interruption.hpp"
#include "cli/commands/shell/pager.hpp"
#include "cli/commands/sql/table_printer.hpp"
#include "cli/output/failure_report.hpp"
#include "cli/output/output_file.hpp"
#include "cli/output/terminal.hpp"

namespace kap::cli {
namespace {

struct NamedForm {
    const char* name;
    const char* ending;  // of files in it
    AnswerForm form;
};

constexpr auto kForms = std::to_array<NamedForm>({{"vertical", "", AnswerForm::Vertical},
                                                  {"csv", ".csv", AnswerForm::Csv},
                                                  {"tsv", ".tsv", AnswerForm::Tsv},
                                                  {"markdown", ".md", AnswerForm::Markdown},
                                                  {"html", ".html", AnswerForm::Html},
                                                  {"json", ".json", AnswerForm::Json},
                                                  {"json-lines", ".jsonl", AnswerForm::JsonLines}});

std::unique_ptr<AnswerWriter> writerFor(const ShellSettings& settings, std::ostream& out,
                                        const Terminal& terminal) {
    return settings.form ? answerWriter(*settings.form, out, Language::Italian)
                         : tableAnswers(out, terminal);
}

// A person wants to know what became of every statement, whatever form rows have.
void print(std::ostream& out, AnswerWriter& writer, ado::Recordset& answer,
           const ShellSettings& settings) {
    const auto written = answer.rowsAffected();
    const bool rows = answer.State() == ado::ObjectStateEnum::adStateOpen;
    if (rows || !written || !settings.form || settings.form == AnswerForm::Json) {
        writer.write(answer);
    } else {
        out << '(' << *written << (*written == 1 ? " row affected)\n" : " rows affected)\n");
    }
}

// Runs a batch and prints its answers as they come. Whether it went through.
bool runBatch(ado::Connection& connection, const ado::ScriptBatch& batch,
              const ShellSettings& settings, const Terminal& terminal) {
    PagedOutput screen(terminal);
    std::ostream out(&screen);
    const auto writer = writerFor(settings, out, terminal);
    std::vector<Failure> told;
    bool failed = false;
    bool interrupted = false;
    {
        const Interruption interruption(connection);
        connection.Errors()->Clear();
        try {
            connection.executeEach(
                batch.text, [&](ado::Recordset& answer) { print(out, *writer, answer, settings); },
                readingFor(*writer));
        } catch (const AutomationError& error) {
            told = failuresOf(connection, error, batch.firstLine);
            failed = true;
        }
        writer->finish();
        if (!failed) {
            told = messagesOf(connection, batch.firstLine);
        }
        interrupted = interruption.happened();
    }
    screen.finish();
    if (failed && interrupted) {
        std::cerr << "Cancelled.\n";
    } else {
        reportFailures(told, false);
    }
    return !failed;
}

}  // namespace

std::vector<std::string> formNames() {
    std::vector<std::string> names = {"table"};
    for (const NamedForm& form : kForms) {
        names.emplace_back(form.name);
    }
    return names;
}

bool chooseForm(const std::string& name, ShellSettings& settings) {
    if (equalsIgnoringCase(name, "table")) {
        settings.form.reset();
        return true;
    }
    for (const NamedForm& form : kForms) {
        if (equalsIgnoringCase(name, form.name)) {
            settings.form = form.form;
            return true;
        }
    }
    return false;
}

std::optional<AnswerForm> formOfFile(const std::string& file) {
    const std::string name = asciiLower(file);
    for (const NamedForm& form : kForms) {
        if (*form.ending != '\0' && name.ends_with(form.ending)) {
            return form.form;
        }
    }
    return std::nullopt;
}

bool runStatements(ado::Connection& connection, const std::string& script,
                   const ShellSettings& settings) {
    const Terminal terminal = Terminal::ofStandardOutput();
    const auto start = std::chrono::steady_clock::now();
    bool whole = true;
    try {
        for (const ado::ScriptBatch& batch : connection.batchesOf(script)) {
            for (int i = 0; whole && i < batch.count; ++i) {
                whole = runBatch(connection, batch, settings, terminal);
            }
        }
    } catch (const AutomationError& error) {
        reportFailures(failuresOf(connection, error), false);
        whole = false;
    }
    if (settings.timing) {
        const std::chrono::duration<double, std::milli> taken =
            std::chrono::steady_clock::now() - start;
        std::cout << "Time: " << plain::fixed(taken.count(), 1) << " ms\n" << std::flush;
    }
    return whole;
}

void runInto(ado::Connection& connection, const std::string& script, AnswerForm form,
             const std::string& file) {
    writeWholeFile(file, [&](std::ostream& out) {
        const auto writer = answerWriter(form, out, Language::Italian);
        const Interruption interruption(connection);
        connection.executeEach(
            script, [&](ado::Recordset& answer) { writer->write(answer); }, readingFor(*writer));
        writer->finish();
    });
}

}  // namespace kap::cli

#include "cli/demo/demo_script.hpp"

#include <utility>
#include <vector>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "cli/demo/sample_company.hpp"

namespace kap::cli {
namespace {

constexpr const char* kDuplicate = "La riga 20 è già nel documento";

// Somebody who collects statements in a script and runs it. Each member does one thing of the
// library and gives back the step to show.
class Script {
public:
    Script(std::string user, const String& connectionString, std::string document)
        : user_(std::move(user)), document_(std::move(document)) {
        sql_->setConnectionString(connectionString);
    }

    // A table of the user's own connection with the lines still to be moved.
    void prepareLines(const std::string& lines) const {
        sql_->ActiveConnection()->Execute(
            "CREATE TABLE #Righe (Anno smallint, Tipo varchar(3), Numero int, Riga int, "
            "Descrizione varchar(60), Qta decimal(12, 3), Prezzo money) "
            "INSERT INTO #Righe VALUES " +
            lines);
    }

    Step transfer(const NamedTexts& parameters) {
        sql_->Clear();
        for (const auto& [name, value] : parameters) {
            sql_->Parametri()->Scrivi(name, value);
        }
        sql_->AddTmp();
        Step step = stepOf("AddTmp");
        step.arguments = parameters;
        step.values = parameters;
        step.message = messages();
        return step;
    }

    Step command(const std::string& statement, const std::string& message) {
        sql_->Command(statement, message);
        Step step = stepOf("Command");
        step.arguments = {{"CommandText", statement}, {"MessaggioErrore", message}};
        step.values = {{"MessaggioErrore", message}};
        return step;
    }

    // Runs the script; what it left shows in the lines of the document.
    Step execute() {
        Step step = stepOf("Execute");
        step.result = sql_->Execute();
        step.message = messages();
        const auto rows = sql_->ActiveConnection()->Execute(
            "SELECT COUNT(*), ISNULL(SUM(Importo), 0) FROM mag_RDocumenti WHERE " + document_);
        step.values = {{"Righe", textIn(*rows, 0)}, {"Importo", textIn(*rows, 1)}};
        return step;
    }

private:
    [[nodiscard]] Step stepOf(const char* member) const {
        Step step;
        step.user = user_;
        step.member = member;
        return step;
    }

    static std::string textIn(const ado::Recordset& rows, std::int32_t column) {
        return convert::toString(rows.Fields()->Item(column)->Value()).utf8();
    }

    // The messages of the error object on one line.
    [[nodiscard]] std::string messages() const {
        if (sql_->Errore()->MsgToString().as<String>().empty()) {
            return {};
        }
        std::string all;
        const Variant array = sql_->Errore()->MsgToArray();
        const Array& messages = array.as<Array>();
        for (std::int32_t i = messages.lowerBound(); i <= messages.upperBound(); ++i) {
            all += (all.empty() ? "" : " / ") + convert::toString(messages.at(i)).utf8();
        }
        return all;
    }

    std::string user_;
    std::string document_;
    Ref<CSQL> sql_ = make<CSQL>();
};

class ScriptChapters {
public:
    ScriptChapters(DemoReport& report, const String& connectionString, std::string document,
                   int number)
        : report_(report),
          document_(std::move(document)),
          number_(number),
          anna_("Anna", connectionString, document_),
          bruno_("Bruno", connectionString, document_) {}

    void tell() {
        moveLines();
        failAndLeaveNothing();
    }

private:
    void moveLines() {
        report_.chapter("Lines moved in one script",
                        "Anna's new lines wait in a table that only her connection sees. One "
                        "script moves them into the quotation and works out their amounts.",
                        "");
        anna_.prepareLines("(" + key() + ", 10, 'Trapano a percussione', 2, 89.90), (" + key() +
                           ", 20, 'Serie di punte', 5, 12.50)");
        expect(anna_.transfer({{"FROM", "#Righe"},
                               {"TO", "mag_RDocumenti"},
                               {"DELETE_FROM", "SI"},
                               {"mag_RDocumenti.Importo", "#Righe.Qta * #Righe.Prezzo"}}),
               "", "");
        expect(anna_.command(
                   "UPDATE mag_TDocumenti SET Annotazioni = 'Righe aggiunte' WHERE " + document_,
                   "Annotazione fallita"),
               "", "");
        Step step = anna_.execute();
        const bool done = step.result == true;
        expect(std::move(step), "2", "", done);
    }

    void failAndLeaveNothing() {
        report_.chapter("A script that fails",
                        "The second statement of Bruno's script is refused: the server's error "
                        "and his own message tell why, and the first one is undone.",
                        "");
        expect(bruno_.command("DELETE mag_RDocumenti WHERE Riga = 10 AND " + document_,
                              "Cancellazione fallita"),
               "", "");
        expect(bruno_.command("INSERT INTO mag_RDocumenti (Anno, Tipo, Numero, Riga) VALUES (" +
                                  key() + ", 20)",
                              kDuplicate),
               "", "");
        Step refused = bruno_.execute();
        const bool failed = refused.result == false;
        expect(std::move(refused), "2", kDuplicate, failed);
        expect(anna_.transfer({{"FROM", "mag_RDocumenti"},
                               {"TO", "#Righe"},
                               {"WHERE", document_},
                               {"DELETE_FROM", "SI"}}),
               "", "");
        Step back = anna_.execute();
        const bool done = back.result == true;
        expect(std::move(back), "0", "", done);
    }

    [[nodiscard]] std::string key() const {
        return plain::text(kCurrentYear) + ", 'PRV', " + plain::text(number_);
    }

    // `lines` are those that the document then has, `message` is how the messages end.
    void expect(Step step, const std::string& lines, const std::string& message,
                bool andAlso = true) {
        step.expected =
            andAlso && (message.empty() ? step.message.empty() : step.message.ends_with(message)) &&
            (lines.empty() || step.values.front().second == lines);
        report_.add(step);
    }

    DemoReport& report_;
    std::string document_;
    int number_;
    Script anna_;
    Script bruno_;
};

}  // namespace

void tellOfScripts(DemoReport& report, const String& connectionString, const std::string& document,
                   int number) {
    ScriptChapters(report, connectionString, document, number).tell();
}

}  // namespace kap::cli

#include "cli/demo/demo_story.hpp"

#include <chrono>
#include <utility>

#include <kaputil/automation/decimal.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/automation/variant.hpp>

#include "cli/demo/demo_configuration.hpp"
#include "cli/demo/demo_host.hpp"
#include "cli/demo/demo_script.hpp"
#include "cli/demo/demo_user.hpp"
#include "cli/demo/demo_values.hpp"

namespace kap::cli {
namespace {

constexpr const char* kUpdatedByOthers =
    "Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!";
constexpr const char* kDeletedByOthers =
    "Attenzione: Record Eliminato da altro Utente, Operazione Annullata!";

// Documents are the header's rows; lines belong to them by the same three columns.
std::string keyIs(const char* type, int number) {
    return "Anno = " + plain::text(kCurrentYear) + " AND Tipo = '" + type +
           "' AND Numero = " + plain::text(number);
}

std::string documentQuery(const char* type, int number) {
    return "SELECT * FROM mag_TDocumenti WHERE " + keyIs(type, number);
}

std::string lastLineQuery(const char* type, int number) {
    return "SELECT MAX(Riga) FROM mag_RDocumenti WHERE " + keyIs(type, number);
}

Date dayOf(std::chrono::year_month_day date) {
    constexpr std::chrono::sys_days kOrigin = std::chrono::year{1899} / 12 / 30;
    return {static_cast<double>((std::chrono::sys_days(date) - kOrigin).count())};
}

class Story {
public:
    Story(DemoReport& report, const String& connectionString)
        : report_(report),
          connectionString_(connectionString),
          anna_("Anna", connectionString),
          bruno_("Bruno", connectionString) {}

    void tell() {
        const int invoice = numberOf("FAI", "MAX");
        openTheSameInvoice(invoice);
        firstToSaveWins(invoice);
        deletedMeanwhile(numberOf("PRV", "MIN"));
        const int added = takeNumber();
        addDocument(added);
        nextNumberIsBehind(added);
        smallHelpers(invoice, added);
        tellOfScripts(report_, connectionString_, keyIs("PRV", added), added);
        tellOfValues(report_, anna_);
        tellOfConfiguration(report_, connectionString_);
    }

private:
    // The lowest or highest number of the current year's documents of a type.
    int numberOf(const char* type, const char* aggregate) {
        const Step found = anna_.look(std::string("SELECT ") + aggregate +
                                          "(Numero) AS Numero FROM mag_TDocumenti WHERE Anno = " +
                                          plain::text(kCurrentYear) + " AND Tipo = '" + type + "'",
                                      "Numero");
        const int number = plain::readInt(found.values.front().second).value_or(0);
        if (number == 0) {
            throw StoryError("the sample company has no document of type " + std::string(type) +
                             " of " + plain::text(kCurrentYear) +
                             " left; start again with a new file");
        }
        return number;
    }

    void expect(Step step, bool asItShould) {
        step.expected = asItShould;
        report_.add(step);
    }

    void expect(Step step, bool result, const std::string& message, bool andAlso = true) {
        const bool asItShould = step.result == result && step.message == message && andAlso;
        expect(std::move(step), asItShould);
    }

    void openTheSameInvoice(int number) {
        const std::string query = documentQuery("FAI", number);
        report_.chapter("Two users open the same invoice",
                        "Each form holds the record as a property string; AGGID is its version.",
                        query);
        expect(anna_.read(query, {"Cliente", "Totale", "Sconto", "Note", "AGGID"}), true, "");
        Step read = bruno_.read(query, {"Cliente", "Totale", "Sconto", "Note", "AGGID"});
        expect(std::move(read), true, "", bruno_.value("AGGID") == anna_.value("AGGID"));
    }

    void firstToSaveWins(int number) {
        const std::string query = documentQuery("FAI", number);
        const std::string oldVersion = anna_.value("AGGID");
        const bool before = anna_.value("Note") == "Consegna urgente";
        const char* note = before ? "Consegna entro venerdì" : "Consegna urgente";
        const Decimal discount = before ? Decimal(5) : Decimal(75, 1);

        report_.chapter("The first to save wins",
                        "Anna saves. Bruno still holds the old version and is refused.", "");
        expect(anna_.change({{"Sconto", discount}, {"Note", note}}), true);
        const std::string discountText = anna_.value("Sconto");
        expect(anna_.save(query), true, "");
        Step again = anna_.read(query, {"Sconto", "Note", "AGGID"});
        expect(std::move(again), true, "",
               anna_.value("AGGID") != oldVersion && anna_.value("Note") == note &&
                   anna_.value("Sconto") == discountText);

        expect(bruno_.change({{"Note", "Porto assegnato"}}), true);
        expect(bruno_.save(query), false, kUpdatedByOthers);
        Step seen = bruno_.read(query, {"Sconto", "Note", "AGGID"});
        expect(std::move(seen), true, "", bruno_.value("Note") == note);
    }

    void deletedMeanwhile(int number) {
        const std::string query = documentQuery("PRV", number);
        report_.chapter("A document disappears under somebody's hands",
                        "Bruno edits a quotation that Anna deletes meanwhile.", query);
        expect(bruno_.read(query, {"Data", "Cliente", "Note", "AGGID"}), true, "");
        expect(anna_.remove(query), true, "");
        expect(bruno_.change({{"Note", "Valido 30 giorni"}}), true);
        expect(bruno_.save(query), false, kDeletedByOthers);
    }

    // The number of the next quotation, looked at or, in mode S, taken.
    static Step askForNumber(DemoUser& user, const char* mode) {
        return user.callConnected("Progressivi", {{"sTipoDoc", "PRV"},
                                                  {"cDefinitivoProvvisorio", "D"},
                                                  {"CLeggoScrivo", mode},
                                                  {"nAnno", std::int16_t{kCurrentYear}},
                                                  {"nNumero", 0.0},
                                                  {"GestionePrenotati", std::int16_t{1}}});
    }

    int takeNumber() {
        report_.chapter("A number for one only",
                        "Both look at the number of the next quotation (L) and see the same; Anna "
                        "takes it (S).",
                        "");
        Step seen = askForNumber(anna_, "L");
        const nlohmann::ordered_json next = seen.result;
        expect(std::move(seen), next.is_number());
        Step alsoSeen = askForNumber(bruno_, "L");
        const bool same = alsoSeen.result == next;
        expect(std::move(alsoSeen), same);
        Step taken = askForNumber(anna_, "S");
        const bool hers = taken.result == next;
        expect(std::move(taken), hers);
        return next.get<int>();
    }

    void nextNumberIsBehind(int taken) {
        Step seen = askForNumber(bruno_, "L");
        const bool behind = seen.result > taken;
        expect(std::move(seen), behind);
    }

    void addDocument(int number) {
        const std::string query = documentQuery("PRV", number);
        report_.chapter(
            "A new document",
            "Reading what is not there gives an empty form; filling and saving it adds the record.",
            query);
        Step empty = anna_.read(query, {"Numero", "Sconto", "Data", "Note", "AGGID"});
        const bool neutral = anna_.value("Numero") == std::string(4, ' ') &&
                             anna_.value("Sconto") == "0" && anna_.value("Data").empty() &&
                             anna_.value("Note") == std::string(80, ' ') &&
                             anna_.value("AGGID").empty();
        expect(std::move(empty), false, "", neutral);
        const Date day = dayOf(std::chrono::year{kCurrentYear} / 12 / 31);
        expect(anna_.change({{"Anno", std::int32_t{kCurrentYear}},
                             {"Tipo", "PRV"},
                             {"Numero", std::int32_t{number}}}),
               true);
        expect(anna_.change({{"Data", day},
                             {"Cliente", std::int32_t{1001}},
                             {"Valuta", "EUR"},
                             {"Note", "Richiesta telefonica"}}),
               true);
        expect(anna_.save(query), true, "");
        Step back = bruno_.read(query, {"Numero", "Data", "Cliente", "Note", "AGGID"});
        expect(std::move(back), true, "",
               bruno_.value("Note") == "Richiesta telefonica" && !bruno_.value("AGGID").empty());
    }

    void smallHelpers(int invoice, int quotation) {
        report_.chapter("Small helpers",
                        "Fields of the invoice's customer; the next line of the invoice, the first "
                        "of the quotation.",
                        "");
        Step customer = anna_.look(
            "SELECT Clienti.* FROM Clienti INNER JOIN mag_TDocumenti ON "
            "mag_TDocumenti.Cliente = Clienti.Codice WHERE " +
                keyIs("FAI", invoice),
            "RagioneSociale, Localita");
        const bool found = customer.values.size() == 3 && customer.values[2].second == "0";
        expect(std::move(customer), found);

        constexpr std::int16_t kStep = 10;
        Step next = anna_.nextLine(lastLineQuery("FAI", invoice), kStep);
        const bool afterTheLast = next.result.get<int>() % kStep == 0 && next.result > kStep;
        expect(std::move(next), afterTheLast);
        Step first = anna_.nextLine(lastLineQuery("PRV", quotation), kStep);
        const bool isFirst = first.result == kStep;
        expect(std::move(first), isFirst);
    }

    DemoReport& report_;
    String connectionString_;
    DemoUser anna_;
    DemoUser bruno_;
};

}  // namespace

void tellStory(DemoReport& report, const String& connectionString) {
    Story(report, connectionString).tell();
    tellOfTheHost(report, "Anna", connectionString);
}

}  // namespace kap::cli

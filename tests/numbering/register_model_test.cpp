// Random companies, written by several processes at once, whose registers are compared with those
// that a plain model makes of the same rows: it looks at every number by itself and reads every row
// for it.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/numbering/number_register.hpp>

#include "numbering/company.hpp"
#include "numbering/register_text.hpp"
#include "support/prepared_tables.hpp"
#include "support/processes.hpp"
#include "support/seed.hpp"
#include "support/temporary_folder.hpp"

namespace kap::numbering::test {
namespace {

using Texts = std::vector<std::string>;
using Row = std::vector<std::string>;

constexpr Date kToday{45839};  // 1 July 2025
constexpr const char* kThisYear = "2025";

// The rows of a query as texts, Null as "-".
std::vector<Row> rowsOf(const Ref<ado::Connection>& database, const std::string& query) {
    std::vector<Row> all;
    const auto rows = database->Execute(String(query));
    for (; !rows->Eof(); rows->MoveNext()) {
        Row& row = all.emplace_back();
        for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
            const Variant value = rows->Fields()->Item(i)->Value();
            row.push_back(value.isNull() ? "-" : convert::toString(value).utf8());
        }
    }
    return all;
}

bool isRegistered(const Row& document) {
    return document[4] != "-" && !document[4].empty() && document[4] != "0";
}

// What the tables hold, the counter of a document's type beside it.
struct Tables {
    std::vector<Row> counters;      // code, year, definitive, provisional, keeps provisional
    std::vector<Row> documents;     // counter, year, number, type, entry, date as yyyymmdd
    std::vector<Row> invoices;      // counter, year, number, type, number of the document
    std::vector<Row> reservations;  // counter, year, number, state
    std::vector<Row> headers;       // counter, year, number
    std::vector<Row> lines;         // counter, year, number
    std::set<std::string> drawing;  // counters that types draw from
    std::set<std::string> changed;  // "counter year other", both ways, of moved documents

    explicit Tables(const Ref<ado::Connection>& database)
        : counters(rowsOf(database,
                          "SELECT Codice, Anno, n_Def, n_Prov, GestProvv FROM "
                          "vtx_TabPro")),
          documents(rowsOf(database,
                           "SELECT TipoProg, Anno, Numero, Tipo, MC_Registrazione, "
                           "CONVERT(varchar(8), Data, 112) FROM mag_TDocumenti, vtx_TabDoc "
                           "WHERE Tipo = Codice")),
          invoices(rowsOf(database,
                          "SELECT TipoProg, Anno, NumFat, Tipo, Numero FROM "
                          "mag_TFatture, vtx_TabDoc WHERE Tipo = Codice")),
          reservations(
              rowsOf(database, "SELECT Codice, Anno, Numero, Stato FROM vtx_TabProPrenotati")),
          headers(rowsOf(database,
                         "SELECT Registro, YEAR(Data), Protocollo FROM con_MovConT, "
                         "con_TabCausali WHERE Causale = Codice")),
          lines(rowsOf(database, "SELECT Registro, Anno, Protocollo FROM con_MovConD")) {
        for (const Row& row : rowsOf(database, "SELECT TipoProg FROM vtx_TabDoc")) {
            drawing.insert(row[0]);
        }
        moveDocuments();
    }

private:
    using Place = std::pair<std::string, std::string>;  // counter and year

    static bool holds(const std::vector<Row>& rows, const Place& place, const std::string& number) {
        return std::ranges::any_of(rows, [&](const Row& row) {
            return row[0] == place.first && row[1] == place.second && row[2] == number;
        });
    }
    [[nodiscard]] bool hasEntry(const Place& place, const std::string& number) const {
        return holds(headers, place, number) || holds(lines, place, number);
    }

    // Documents stand where their entry is, when only one other counter has it and no document or
    // invoice for it.
    void moveDocuments() {
        std::set<Place> places;
        for (const auto* rows : {&counters, &documents, &invoices, &reservations}) {
            for (const Row& row : *rows) {
                places.insert({row[0], row[1]});
            }
        }
        std::vector<Row> moved = documents;
        for (Row& row : moved) {
            if (!isRegistered(row) || hasEntry({row[0], row[1]}, row[2])) {
                continue;
            }
            std::vector<Place> found;
            for (const Place& place : places) {
                if (place.second == row[1] && place.first != row[0] && hasEntry(place, row[2]) &&
                    !holds(documents, place, row[2]) && !holds(invoices, place, row[2])) {
                    found.push_back(place);
                }
            }
            if (found.size() == 1) {
                changed.insert(row[0] + " " + row[1] + " " + found[0].first);
                changed.insert(found[0].first + " " + row[1] + " " + row[0]);
                row[0] = found[0].first;
            }
        }
        documents = moved;
    }
};

// The register of one counter and year.
class Model {
public:
    Model(const Tables& tables, std::string counter, std::string year)
        : tables_(tables), counter_(std::move(counter)), year_(std::move(year)) {
        for (const Row& row : tables.counters) {
            if (row[0] == counter_ && row[1] == year_) {
                definitive_ = std::stoi(row[2]);
                provisional_ = row[4] == "0" ? 0 : std::stoi(row[3]);
            }
        }
        for (int number = kLowest; number <= kHighest; ++number) {
            look(number);
        }
        endMissing(definitive_ + 1);
    }

    [[nodiscard]] const std::multiset<std::string>& lines() const { return lines_; }
    [[nodiscard]] const std::multiset<std::string>& anomalies() const { return anomalies_; }

private:
    static constexpr int kLowest = -1;
    static constexpr int kHighest = 400;

    [[nodiscard]] bool mine(const Row& row, int number) const {
        return row[0] == counter_ && row[1] == year_ && row[2] == std::to_string(number);
    }

    void look(int number) {
        const std::string text = std::to_string(number);
        std::vector<Row> documents;
        std::vector<Row> invoices;
        std::vector<Row> reservations;
        for (const Row& row : tables_.documents) {
            if (mine(row, number)) documents.push_back(row);
        }
        for (const Row& row : tables_.invoices) {
            if (mine(row, number)) invoices.push_back(row);
        }
        for (const Row& row : tables_.reservations) {
            if (mine(row, number)) reservations.push_back(row);
        }
        auto entries = std::ranges::count_if(tables_.headers,
                                             [&](const Row& row) { return mine(row, number); });
        if (entries == 0) {
            entries = std::ranges::any_of(tables_.lines,
                                          [&](const Row& row) { return mine(row, number); });
        }

        std::multiset<std::string> carriers;
        std::string registered;
        auto papers = documents.size();
        bool allUnregistered = true;
        for (const Row& row : documents) {
            carriers.insert(row[3] + " " + text + (isRegistered(row) ? "*" : ""));
            allUnregistered = allUnregistered && !isRegistered(row);
        }
        for (const Row& row : invoices) {
            carriers.insert("invoice " + row[3] + " " + text);
            const bool itsDocument =
                row[4] == text && std::ranges::any_of(documents, [&](const Row& document) {
                    return document[3] == row[3];
                });
            papers += itsDocument ? 0 : 1;
        }
        for (int i = 0; i < entries; ++i) {
            carriers.insert("entry " + text);
        }
        bool open = false;
        for (const Row& row : reservations) {
            const bool nothing = row[3].empty() || row[3] == "-";
            carriers.insert("reservation " + text + (nothing ? "" : " " + row[3]));
            open = open || (row[3] != "U" && row[3] != "M");
        }

        const bool inside = number >= 1 && number <= definitive_;
        const bool used = papers > 0 || entries > 0;
        if (carriers.empty()) {
            if (inside && missingFrom_ == 0) missingFrom_ = number;
            return;
        }
        endMissing(number);
        const bool doubled =
            papers > 1 || entries > 1 || reservations.size() > 1 ||
            (papers == 1 && entries == 1 && documents.size() == 1 && allUnregistered);
        const bool provisional = !inside && number >= 1 && number <= provisional_;
        lines_.insert(text +
                      (doubled       ? " doubled"
                       : !used       ? " reserved"
                       : inside      ? " used"
                       : provisional ? " provisional"
                                     : " beyond") +
                      shown(carriers));
        if (doubled) tell(text + " doubled");
        if (used && !inside && (doubled || !provisional)) tell(text + " beyond");
        if (entries > 0 && papers == 0 && tables_.drawing.contains(counter_)) {
            tell(text + " entry without document");
        }
        if (!allUnregistered && entries == 0) tell(text + " document without entry");
        if (used && open) tell(text + " reserved in use");
        if (!used && open && year_ < kThisYear) tell(text + " reservation expired");
        if (!used && !open) tell(text + " reservation unused");
        for (const Row& row : documents) {
            if (row[5] == "-") continue;
            if (row[5].substr(0, 4) != year_) tell(text + " other year");
            const bool back = std::ranges::any_of(tables_.documents, [&](const Row& other) {
                return other[0] == counter_ && other[1] == year_ && other[5] != "-" &&
                       std::stoi(other[2]) < number && other[5] > row[5];
            });
            if (back) tell(text + " date back");
        }
    }

    void endMissing(int number) {
        if (missingFrom_ == 0) return;
        const int last = std::min(number - 1, definitive_);
        const std::string range = rangeText(missingFrom_, last);
        lines_.insert(range + " missing");
        tell(range + " missing");
        missingFrom_ = 0;
    }

    void tell(const std::string& anomaly) { anomalies_.insert(anomaly); }

    static std::string shown(const std::multiset<std::string>& carriers) {
        std::string text;
        for (const std::string& one : carriers) {
            text += (text.empty() ? ": " : ", ") + one;
        }
        return text;
    }

    const Tables& tables_;
    std::string counter_;
    std::string year_;
    int definitive_ = 0;
    int provisional_ = 0;
    int missingFrom_ = 0;
    std::multiset<std::string> lines_;
    std::multiset<std::string> anomalies_;
};

// The same of the register itself, the carriers of a line in the order of their texts.
std::multiset<std::string> linesFound(const NumberRegister& of) {
    std::multiset<std::string> found;
    for (const RegisterLine& line : linesOf(of)) {
        std::multiset<std::string> carriers;
        for (const Carrier& one : line.carriers) {
            carriers.insert(carrierText(of, one));
        }
        std::string text = rangeText(line.first, line.last) + " " + std::string(nameOf(line.state));
        const char* separator = ": ";
        for (const std::string& one : carriers) {
            text += separator + one;
            separator = ", ";
        }
        found.insert(text);
    }
    return found;
}

std::multiset<std::string> anomaliesFound(const NumberRegister& of) {
    std::multiset<std::string> found;
    for (const Anomaly& one : of.anomalies) {
        if (one.kind != AnomalyKind::CounterChanged) {
            found.insert(rangeText(one.first, one.last) + " " + anomalyName(one.kind));
        }
    }
    return found;
}

std::set<std::string> changesFound(const std::vector<NumberRegister>& all) {
    std::set<std::string> found;
    for (const NumberRegister& one : all) {
        for (const Anomaly& anomaly : one.anomalies) {
            if (anomaly.kind == AnomalyKind::CounterChanged) {
                found.insert(one.counter.utf8() + " " + std::to_string(one.year) + " " +
                             anomaly.other.utf8());
            }
        }
    }
    return found;
}

int configured(const char* variable, int otherwise) {
    const char* text = std::getenv(variable);
    return text == nullptr ? otherwise : std::atoi(text);
}

// A company of some hundred operations by `processes` programs.
Ref<ado::Connection> company(const kap::test::TemporaryFolder& folder, std::mt19937& random,
                             int processes) {
    const std::string file = folder.database(std::to_string(random()) + ".db");
    const std::string settings = file + ";Synchronous=Off";
    auto database = open(settings);
    kap::test::prepare(database, String(schema()));
    database->Execute(
        u"DROP TABLE vtx_TabProPrenotati;"
        u"CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, Stato "
        u"varchar(1) NULL);"
        u"ALTER TABLE mag_TDocumenti ADD Data datetime NULL;"
        u"INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT'), ('NCR', 'FAT'), ('DDT', 'BOL');"
        u"INSERT INTO con_TabCausali VALUES ('FVE', 'FAT'), ('FV2', 'FA2');"
        u"INSERT INTO vtx_TabPro VALUES ('FAT', 2025, 0, 0, 0), ('FAT', 2024, 5, 0, 0), "
        u"('BOL', 2025, 2, 6, 1), ('FA2', 2025, 3, 0, 0), ('ACQ', 2025, 4, 0, 0)");
    std::vector<pid_t> programs;
    for (int i = 0; i < processes; ++i) {
        programs.push_back(startProgram(
            "keep_books", {settings, std::to_string(random()), std::to_string(60 / processes)}));
    }
    for (const pid_t program : programs) {
        EXPECT_TRUE(succeeds(program));
    }
    return database;
}

TEST(RegisterOfRandomCompanies, IsThatOfAPlainModel) {
    const int companies = configured("KAPUTIL_COMPANIES", 5);
    std::cout << "KAPUTIL_COMPANIES=" << companies << '\n';
    std::mt19937 random(test::randomSeed());
    const kap::test::TemporaryFolder folder;
    int compared = 0;
    for (int i = 0; i < companies; ++i) {
        const auto database = company(folder, random, 1 + i % 4);
        const Tables tables(database);
        Variant connection(database);
        const auto registers = readRegisters(connection, {.today = kToday});
        EXPECT_EQ(changesFound(registers), tables.changed);
        for (const NumberRegister& one : registers) {
            const Model model(tables, one.counter.utf8(), std::to_string(one.year));
            EXPECT_EQ(linesFound(one), model.lines()) << one.counter.utf8() << " " << one.year;
            EXPECT_EQ(anomaliesFound(one), model.anomalies())
                << one.counter.utf8() << " " << one.year;
            ++compared;
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << "company " << i;
    }
    std::cout << compared << " registers compared\n";
    EXPECT_GE(compared, companies);
}

}  // namespace
}  // namespace kap::numbering::test

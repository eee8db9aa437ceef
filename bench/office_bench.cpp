// A day of an office, replayed as fast as it goes: several programs on one file that look records
// up, show lists, change records and issue numbered documents with their rows.

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/data/error_numbers.hpp>
#include <kaputil/db/records.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/numbering/document_numbers.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "bench/job.hpp"
#include "bench/processes.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;
using kap::String;
using kap::Variant;
using kap::bench::Growth;

constexpr std::chrono::milliseconds kOfficeTime{3000};
constexpr int kCustomers = 10'000;
constexpr int kArticles = 10'000;
constexpr int kRowsPerDocument = 10;

class OfficeFile {
public:
    OfficeFile() {
        const auto connection = open();
        connection->Execute(
            u"CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(60), Citta varchar(40), "
            u"Fido money, AggID timestamp);"
            u"CREATE TABLE Articoli (Codice int PRIMARY KEY, Descrizione varchar(60), Prezzo "
            u"money, Giacenza float);"
            u"CREATE TABLE Documenti (Numero int PRIMARY KEY, Cliente int, Data datetime);"
            u"CREATE TABLE RigheDocumento (Numero int, Riga int, Articolo int, Quantita float, "
            u"Prezzo money, PRIMARY KEY (Numero, Riga));"
            u"CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5));"
            u"CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def int, n_Prov int, "
            u"GestProvv int, PRIMARY KEY (Codice, Anno));"
            u"INSERT INTO vtx_TabPro VALUES ('A', 2025, 0, 0, 0);"
            u"CREATE INDEX CittaDeiClienti ON Clienti (Citta);"
            u"WITH c (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 10000) INSERT INTO "
            u"Clienti (Codice, Nome, Citta, Fido) SELECT n, 'Cliente ' + convert(varchar(8), n), "
            u"'Citta ' + convert(varchar(8), n % 200), 1000 FROM c OPTION (MAXRECURSION 0);"
            u"WITH c (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 10000) INSERT INTO "
            u"Articoli SELECT n, 'Articolo ' + convert(varchar(8), n), n * 0.25, 100 FROM c OPTION "
            u"(MAXRECURSION 0)");
        connection->Close();
    }

    [[nodiscard]] Ref<kap::ado::Connection> open() const {
        auto connection = kap::make<kap::ado::Connection>();
        connection->Open(folder_.database());
        return connection;
    }

private:
    kap::test::TemporaryFolder folder_;
};

// One program of the office. Of twenty things that it does twelve look a record up, five show a
// list, two change a record, and one issues a document.
class OfficeProgram {
public:
    OfficeProgram(const OfficeFile& file, int process)
        : opened_(file.open()), connection_(opened_), random_(process * 7'919 + 1) {}

    void doNext() {
        constexpr int kKinds = 20;
        const int kind = done_++ % kKinds;
        if (kind == 0) {
            issueDocument();
        } else if (kind % 10 == 5) {
            changeCustomer();
        } else if (kind % 4 == 2) {
            showCustomers();
        } else {
            lookUpArticle();
        }
    }

private:
    int any(int count) {
        constexpr std::int64_t kFactor = 48'271;
        constexpr std::int64_t kModulus = 2'147'483'647;
        random_ = static_cast<std::int64_t>(random_) * kFactor % kModulus;
        return static_cast<int>(random_ % count) + 1;
    }

    static void require(bool done, const char* what) {
        if (!done) throw std::runtime_error(what);
    }

    void lookUpArticle() {
        Variant record;
        require(
            kap::db::DB_Read(
                connection_,
                "SELECT * FROM Articoli WHERE Codice = " + std::to_string(any(kArticles)), record),
            "an article is missing");
    }

    void showCustomers() {
        constexpr int kCities = 200;
        const auto rows =
            kap::db::OpenRecordset("SELECT Codice, Nome FROM Clienti WHERE Citta = 'Citta " +
                                       std::to_string(any(kCities) - 1) + "' ORDER BY Nome",
                                   connection_, -1, -1, -1, /*DeleteNull=*/false);
        require(rows->RecordCount() == kCustomers / kCities, "customers are missing");
    }

    // Another program may have changed the record meanwhile: then it is read again.
    void changeCustomer() {
        const String query =
            "SELECT * FROM Clienti WHERE Codice = " + std::to_string(any(kCustomers));
        constexpr int kMostTries = 100;
        for (int tries = 0; tries < kMostTries; ++tries) {
            Variant record;
            require(kap::db::DB_Read(connection_, query, record), "a customer is missing");
            if (saved(query, record)) return;
        }
        throw std::runtime_error("a customer could not be saved");
    }

    bool saved(const String& query, const Variant& record) {
        const auto errore = kap::make<kap::CErrore>();
        try {
            return kap::db::DB_Update(connection_, query, record, *errore);
        } catch (const kap::AutomationError& error) {
            if (error.number() != kap::ado::errors::kConcurrency) throw;
            return false;
        }
    }

    void issueDocument() {
        constexpr int kMostTries = 100;
        std::int32_t number = 0;
        for (int tries = 0; number <= 0; ++tries) {
            require(tries < kMostTries, "no number was given out");
            number = kap::convert::toLong(kap::numbering::Progressivi(
                u"", u"D", u"S", 2025, 0, connection_, u"A", u"vtx_TabDoc", 0, numberError_));
        }
        const std::string n = std::to_string(number);
        const auto sql = kap::make<kap::CSQL>();
        sql->setActiveConnection(opened_);
        sql->Command("INSERT INTO Documenti VALUES (" + n + ", " + std::to_string(any(kCustomers)) +
                         ", '20250615')",
                     u"Documento non inserito");
        for (int row = 1; row <= kRowsPerDocument; ++row) {
            const std::string article = std::to_string(any(kArticles));
            sql->Command("INSERT INTO RigheDocumento VALUES (" + n + ", " + std::to_string(row) +
                             ", " + article + ", 1, 9.75)",
                         u"Riga non inserita");
            sql->Command("UPDATE Articoli SET Giacenza = Giacenza - 1 WHERE Codice = " + article,
                         u"Giacenza non aggiornata");
        }
        require(sql->Execute(), "a document was not written");
    }

    Ref<kap::ado::Connection> opened_;
    Variant connection_;
    Ref<kap::CErrore> numberError_;
    std::int64_t random_;
    int done_ = 0;
};

// All programs together take so long for one thing.
Growth officeOf(double programs) {
    const OfficeFile file;
    const auto work =
        kap::bench::inProcesses(static_cast<int>(programs), kOfficeTime, [&](int process) {
            auto program = std::make_shared<OfficeProgram>(file, process);
            return [program] { program->doNext(); };
        });
    const auto connection = file.open();
    const auto rows = connection->Execute(
        u"SELECT (SELECT COUNT(*) FROM Documenti) - (SELECT n_Def FROM vtx_TabPro), (SELECT "
        u"COUNT(*) FROM RigheDocumento) - 10 * (SELECT n_Def FROM vtx_TabPro)");
    for (std::int32_t column = 0; column < 2; ++column) {
        if (kap::convert::toLong(rows->Fields()->Item(column)->Value()) != 0) {
            throw std::runtime_error("documents are missing");
        }
    }
    constexpr double kNanosecondsPerSecond = 1e9;
    return {kNanosecondsPerSecond / work.perSecond, 0};
}

KAP_BENCH_GROWTH({.name = "office: programs on one file",
                  .sizes = "programs",
                  .item = "one thing done, by all together",
                  .at = {1, 2, 4, 8, 16},
                  .take = officeOf,
                  .most = 1.5});

}  // namespace

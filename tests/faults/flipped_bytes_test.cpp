// Single bytes of a file that change by themselves: how many are read as other values without an
// error, and how many of these a check and a back-up find.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "faults/random_runs.hpp"
#include "support/database.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

// A small company, with what a file of programs holds: keys, texts, amounts, dates, references.
constexpr const char16_t* kCompany =
    u"CREATE TABLE Clienti (Codice int IDENTITY PRIMARY KEY, Nome varchar(40) NOT NULL, Citta "
    u"char(20), Dal datetime, Visto smalldatetime, Nato date, Sconto decimal(5,2), Fido money, "
    u"Peso real, Attivo bit NOT NULL, Chiave uniqueidentifier, AggID timestamp)"
    u"CREATE INDEX PerNome ON Clienti (Nome)"
    u"CREATE TABLE Fatture (Numero int PRIMARY KEY, Cliente int NOT NULL REFERENCES Clienti "
    u"(Codice), Data datetime NOT NULL, Totale money NOT NULL CHECK (Totale >= 0), Nota "
    u"varchar(200), AggID timestamp)"
    u"CREATE INDEX PerData ON Fatture (Data, Numero)";
constexpr const char16_t* kRowsOfCompany =
    u"DECLARE @i int = 1 WHILE @i <= 150 BEGIN "
    u"INSERT INTO Clienti (Nome, Citta, Dal, Visto, Nato, Sconto, Fido, Peso, Attivo, Chiave) "
    u"VALUES ('Cliente numero ' + CAST(@i AS varchar(9)), 'Bologna', DATEADD(minute, @i * 7919, "
    u"'20010203 04:05:06.123'), DATEADD(hour, @i, '20020304 05:06'), DATEADD(day, @i, "
    u"'19700101'), @i % 30 + 0.25, @i * 1000.5, @i / 8.0, @i % 2, NEWID()) "
    u"INSERT INTO Fatture (Numero, Cliente, Data, Totale, Nota) VALUES (@i * 3, @i, DATEADD(day, "
    u"@i, '20240101'), @i * 12.34, REPLICATE('nota ', @i % 7)) SET @i = @i + 1 END";

class FlippedBytes : public testing::Test {
protected:
    FlippedBytes() {
        const auto connection = test::open(folder_.database("intero.db"));
        connection->Execute(kCompany);
        connection->Execute(kRowsOfCompany);
        sound_ = contents(connection);
        connection->Execute(
            String("BACKUP DATABASE a TO DISK = '" + folder_.file("copia.db") + "'"));
        bytes_ = test::contentOf(folder_.file("copia.db"));
    }

    // Every value, as a client reads them.
    static std::string contents(const Ref<ado::Connection>& connection) {
        std::string all;
        for (const char16_t* query :
             {u"SELECT * FROM Clienti ORDER BY Codice", u"SELECT * FROM Fatture ORDER BY Numero",
              u"SELECT Nome FROM Clienti ORDER BY Nome",
              u"SELECT F.Numero, C.Nome FROM Fatture F JOIN Clienti C ON C.Codice = F.Cliente "
              u"ORDER BY F.Numero"}) {
            const auto rows = connection->Execute(query);
            for (; !rows->Eof(); rows->MoveNext()) {
                for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
                    const Variant value = test::fieldOf(rows, i);
                    all += value.isNull() || value.isArray() ? std::string("-")
                                                             : convert::toString(value).utf8();
                    all += '|';
                }
            }
        }
        return all;
    }

    enum class Seen : std::uint8_t { Same, Error, Other };

    [[nodiscard]] Seen read() const {
        try {
            const auto connection = test::open(folder_.database("guasto.db") + ";Mode=Read");
            connection->setCommandTimeout(10);
            return contents(connection) == sound_ ? Seen::Same : Seen::Other;
        } catch (const AutomationError&) {
            return Seen::Error;
        }
    }

    [[nodiscard]] bool fails(const std::string& script) const {
        try {
            const auto connection = test::open(folder_.database("guasto.db"));
            connection->setCommandTimeout(10);
            connection->Execute(String(script));
            return false;
        } catch (const AutomationError&) {
            return true;
        }
    }

    void put(const std::string& bytes) const {
        for (const char* end : {"", "-wal", "-shm"}) {
            std::filesystem::remove(folder_.file(std::string("guasto.db") + end));
        }
        test::putFile(folder_.file("guasto.db"), bytes);
    }

    test::TemporaryFolder folder_;
    std::string sound_;
    std::string bytes_;
};

TEST_F(FlippedBytes, AreFoundByACheckAsFarAsAnythingShowsThem) {
    put(bytes_);
    ASSERT_EQ(Seen::Same, read());
    ASSERT_FALSE(fails("DBCC CHECKDB"));
    int errors = 0;
    int others = 0;
    int found = 0;
    int stopped = 0;
    const auto flip = [&](std::uint32_t seed) {
        std::mt19937 random(seed);
        std::string damaged = bytes_;
        char& byte = damaged[random() % damaged.size()];
        byte = static_cast<char>(byte ^ static_cast<char>(1 + random() % 255));
        put(damaged);
        const Seen seen = read();
        errors += seen == Seen::Error ? 1 : 0;
        if (seen != Seen::Other) {
            return;
        }
        ++others;
        found += fails("DBCC CHECKDB") ? 1 : 0;
        put(damaged);
        const std::string copy = folder_.file("seconda.db");
        std::filesystem::remove(copy);
        const bool refused = fails("BACKUP DATABASE a TO DISK = '" + copy + "'");
        stopped += refused ? 1 : 0;
        EXPECT_EQ(!refused, std::filesystem::exists(copy));
    };
    test::withRandomSeeds(flip, [&] {
        return ": " + std::to_string(errors) + " changed bytes end in an error, " +
               std::to_string(others) + " are read as other values; of these a check finds " +
               std::to_string(found) + ", a back-up " + std::to_string(stopped);
    });
}

}  // namespace
}  // namespace kap

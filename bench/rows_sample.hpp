#pragma once

#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "tests/support/temporary_folder.hpp"

namespace kap::bench {

inline constexpr int kSampleRows = 1'000'000;
inline constexpr const char* kSampleQuery =
    "SELECT Id, Codice, Descrizione, Quantita, Prezzo, Sconto, Data, Magazzino, Peso, Nota FROM "
    "Righe";

// A table of a million rows, and a folder for what is made of it.
class RowsSample {
public:
    static RowsSample& get() {
        static RowsSample sample;
        return sample;
    }

    [[nodiscard]] std::string file(const std::string& name) const { return folder_.file(name); }
    [[nodiscard]] std::string database() const { return folder_.file("bench.db"); }
    [[nodiscard]] Ref<ado::Connection> open() const {
        auto connection = make<ado::Connection>();
        connection->Open("Provider=KapLocal;Data Source=" + database());
        return connection;
    }

    ~RowsSample() = default;
    RowsSample(const RowsSample&) = delete;
    RowsSample& operator=(const RowsSample&) = delete;

private:
    RowsSample() {
        open()->Execute(
            u"CREATE TABLE Righe (Id int PRIMARY KEY, Codice varchar(12), Descrizione varchar(40), "
            u"Quantita float, Prezzo money, Sconto real, Data datetime, Magazzino smallint, "
            u"Peso float, Nota varchar(20));"
            u"WITH c (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM c WHERE n < 1000) "
            u"INSERT INTO Righe SELECT (a.n - 1) * 1000 + b.n, 'ART' + convert(varchar(8), b.n), "
            u"'Descrizione dell''articolo ' + convert(varchar(8), a.n), b.n / 4.0, a.n * 1.25, "
            u"b.n % 50, dateadd(day, a.n, '20200101'), b.n % 9, a.n / 8.0, 'nota ' + "
            u"convert(varchar(8), b.n % 100) FROM c AS a CROSS JOIN c AS b OPTION (MAXRECURSION "
            u"0)");
    }

    test::TemporaryFolder folder_;
};

}  // namespace kap::bench

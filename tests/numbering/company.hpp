#pragma once

#include <string>

#include <kaputil/numbering/document_numbers.hpp>
#include <kaputil/numbering/used_numbers.hpp>

#include "support/database.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap::numbering::test {

using namespace kap::test;

// The tables that numbering reads, empty. `gestProvv` and `number` are column types.
inline std::string schema(const std::string& gestProvv = "int", const std::string& number = "int") {
    return "CREATE TABLE vtx_TabDoc (Codice varchar(3) PRIMARY KEY, TipoProg varchar(5));"
           "CREATE TABLE vtx_TabPro (Codice varchar(5), Anno smallint, n_Def " +
           number + " NULL, n_Prov " + number + " NULL, GestProvv " + gestProvv +
           " NULL, PRIMARY KEY (Codice, Anno));"
           "CREATE TABLE vtx_TabProPrenotati (Codice varchar(5), Anno smallint, Numero int, Stato "
           "varchar(1) NULL, PRIMARY KEY (Codice, Anno, Numero));"
           "CREATE TABLE mag_TDocumenti (Anno smallint, Tipo varchar(3), Numero int, "
           "MC_Registrazione varchar(10) NULL);"
           "CREATE TABLE mag_TFatture (Anno smallint, Tipo varchar(3), Numero int, NumFat int);"
           "CREATE TABLE con_TabCausali (Codice varchar(5), Registro varchar(5));"
           "CREATE TABLE con_MovConT (Protocollo int, Causale varchar(5), Data datetime);"
           "CREATE TABLE con_MovConD (Protocollo int, Anno smallint, Registro varchar(5));";
}

// A company in memory: invoices (FAI) and credit notes (NCR) draw from the counter FAT of 2025,
// delivery notes (DDT) from BOL.
class Company {
public:
    explicit Company(const std::string& gestProvv = "int", const std::string& number = "int")
        : string_(memoryDatabase()), connection_(open(string_)) {
        run(schema(gestProvv, number));
        run("INSERT INTO vtx_TabDoc VALUES ('FAI', 'FAT'), ('NCR', 'FAT'), ('DDT', 'BOL');"
            "INSERT INTO con_TabCausali VALUES ('FVE', 'FAT')");
    }

    void run(const std::string& script) const { kap::test::prepare(connection_, String(script)); }
    // The counter FAT of 2025, values as literals.
    void counter(const std::string& definitive, const std::string& provisional = "0",
                 const std::string& gestProvv = "0") const {
        run("DELETE FROM vtx_TabPro; INSERT INTO vtx_TabPro VALUES ('FAT', 2025, " + definitive +
            ", " + provisional + ", " + gestProvv + ")");
    }
    void reserve(int number, const std::string& state = "''") const {
        run("INSERT INTO vtx_TabProPrenotati VALUES ('FAT', 2025, " + std::to_string(number) +
            ", " + state + ")");
    }
    void document(int number, const std::string& type = "FAI",
                  const std::string& entry = "NULL") const {
        run("INSERT INTO mag_TDocumenti VALUES (2025, '" + type + "', " + std::to_string(number) +
            ", " + entry + ")");
    }
    void invoice(int number, const std::string& type = "FAI") const {
        run("INSERT INTO mag_TFatture VALUES (2025, '" + type + "', " + std::to_string(number) +
            ", " + std::to_string(number) + ")");
    }
    void entry(int number) const {
        run("INSERT INTO con_MovConD VALUES (" + std::to_string(number) + ", 2025, 'FAT')");
    }

    // One value, with its type.
    [[nodiscard]] std::string value(const std::string& query) const {
        return shown(kap::test::valueOf(connection_, String(query)));
    }
    [[nodiscard]] std::string definitive() const { return value("SELECT n_Def FROM vtx_TabPro"); }
    [[nodiscard]] std::string provisional() const { return value("SELECT n_Prov FROM vtx_TabPro"); }
    // The state of a reservation, or that it is gone.
    [[nodiscard]] std::string state(int number) const {
        const auto rows = connection_->Execute(String(
            "SELECT Stato FROM vtx_TabProPrenotati WHERE Numero = " + std::to_string(number)));
        return rows->Eof() ? "gone" : shown(fieldOf(rows, 0));
    }
    [[nodiscard]] const Ref<ado::Connection>& connection() const { return connection_; }
    [[nodiscard]] const std::string& connectionString() const { return string_; }

private:
    std::string string_;
    Ref<ado::Connection> connection_;
};

// What a caller asks for, most of it as callers usually do.
struct Ask {
    const char* type = "FAI";
    const char* sequence = "D";
    const char* mode = "L";
    double number = 0;
    int handling = 0;
    const char* counter = "°°°";
    const char* types = "vtx_TabDoc";
    std::int16_t year = 2025;
};

// Somebody who asks for numbers, and what became of it.
class Caller {
public:
    explicit Caller(const Company& company) : connection_(company.connection()) {}

    std::string progressivi(const Ask& ask) {
        return shown(Progressivi(ask.type, ask.sequence, ask.mode, ask.year, ask.number,
                                 connection_, ask.counter, ask.types,
                                 static_cast<std::int16_t>(ask.handling), errore_));
    }
    std::string old(const Ask& ask) {
        return shown(Progressivi_OLD(ask.type, ask.sequence, ask.mode, ask.year, ask.number,
                                     connection_, ask.counter, ask.types, errore_));
    }
    [[nodiscard]] std::string message() const {
        return errore_->Numero().as<String>() == String(u"0")
                   ? std::string()
                   : errore_->LeggiAttributo(u"ERR_MSG1").as<String>().utf8();
    }
    [[nodiscard]] Ref<CErrore>& errore() { return errore_; }
    [[nodiscard]] Variant& connection() { return connection_; }

private:
    Variant connection_;
    Ref<CErrore> errore_;
};

}  // namespace kap::numbering::test

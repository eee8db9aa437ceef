#include "cli/demo/sample_company.hpp"

#include <string_view>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "cli/demo/insert_script.hpp"
#include "cli/demo/random_source.hpp"
#include "cli/demo/sample_documents.hpp"
#include "cli/demo/sample_people.hpp"
#include "cli/demo/sample_schema.hpp"

namespace kap::cli {
namespace {

void insertCurrencies(ado::Connection& connection) {
    struct Currency {
        const char* code;
        const char* description;
        int decimals;
        std::int64_t rate;  // in millionths
    };
    constexpr Currency kCurrencies[] = {
        {"EUR", "Euro", 2, 1'000'000},
        {"USD", "Dollaro statunitense", 2, 1'082'400},
        {"GBP", "Sterlina inglese", 2, 846'100},
        {"CHF", "Franco svizzero", 2, 952'600},
        {"JPY", "Yen giapponese", 0, 163'850'000},
        {"ITL", "Lira italiana", 0, 1'936'270'000},
    };
    InsertScript rows(connection, "vtx_TabVal (Codice, Descrizione, Dec_Imp, Cambio)");
    for (const Currency& currency : kCurrencies) {
        SqlRow row;
        row.text(currency.code).text(currency.description).number(currency.decimals);
        rows.add(row.amount(currency.rate, 6));
    }
    rows.finish();
}

void insertDocumentTypes(ado::Connection& connection) {
    InsertScript types(connection, "vtx_TabDoc (Codice, Descrizione, TipoProg)");
    for (const DocumentType& type : kDocumentTypes) {
        types.add(SqlRow().text(type.code).text(type.description).text(type.counter));
    }
    types.finish();

    InsertScript reasons(connection, "con_TabCausali (Codice, Descrizione, Registro)");
    reasons.add(SqlRow().text("FVE").text("Fattura di vendita").text("FAT"));
    reasons.add(SqlRow().text("NCV").text("Nota di credito di vendita").text("FAT"));
    reasons.finish();
}

const char* counterDescription(std::string_view counter) {
    if (counter == "ORD") {
        return "Ordini clienti";
    }
    if (counter == "BOL") {
        return "Documenti di trasporto";
    }
    return counter == "PRE" ? "Preventivi" : "Registro IVA vendite";
}

// Orders have provisional numbers of their own; invoice numbers are now and then reserved ahead.
void insertCounters(ado::Connection& connection, const LastNumbers& lastNumbers) {
    InsertScript counters(connection,
                          "vtx_TabPro (Codice, Anno, Descrizione, n_Def, n_Prov, GestProvv)");
    InsertScript reserved(connection, "vtx_TabProPrenotati (Codice, Anno, Numero, Stato)");
    for (const auto& [counter, last] : lastNumbers) {
        const auto& [code, year] = counter;
        const bool provisional = code == "ORD";
        SqlRow row;
        row.text(code).number(year).text(counterDescription(code)).number(last);
        counters.add(row.number(provisional ? last / 4 : 0).number(provisional ? 1 : 0));
        if (code == "FAT" && year == kCurrentYear) {
            for (const int ahead : {2, 3, 6}) {
                reserved.add(SqlRow().text(code).number(year).number(last + ahead).text(""));
            }
        }
    }
    counters.finish();
    reserved.finish();
}

void insertConfiguration(ado::Connection& connection) {
    struct Setting {
        const char* group;
        const char* application;
        const char* procedure;
        const char* module;
        const char* field;
        const char* value;
    };
    constexpr Setting kSettings[] = {
        {"DEFAULT", "Azienda", "Campione", "Dati", "RagioneSociale", "Ferramenta Campione S.r.l."},
        {"DEFAULT", "Azienda", "Campione", "Dati", "Valuta", "EUR"},
        {"DEFAULT", "Vendite", "Documenti", "Testata", "TipoProposto", "FAI"},
        {"DEFAULT", "Vendite", "Documenti", "Testata", "ScontoMassimo", "15"},
        {"DEFAULT", "Vendite", "Documenti", "Righe", "Passo", "10"},
        {"DEFAULT", "Vendite", "Documenti", "Stampe", "Fattura",
         "<TITOLO>Fattura</TITOLO><VIDSTA>V</VIDSTA><COPIE>2</COPIE>"},
        {"DEFAULT", "Vendite", "Documenti", "Stampe", "Etichette",
         "<TITOLO>Etichette</TITOLO><COPIE>1</COPIE><ADD_RUNTIME>1</ADD_RUNTIME>"},
        {"DEFAULT", "Magazzino", "Articoli", "Ricerca", "PerCodice", "1"},
        {"UFFICIO", "Vendite", "Documenti", "Testata", "ScontoMassimo", "25"},
        {"UFFICIO", "Vendite", "Documenti", "Stampe", "Fattura",
         "<TITOLO>Fattura</TITOLO><VIDSTA>S</VIDSTA><COPIE>3</COPIE>"},
        {"BANCO", "Vendite", "Documenti", "Testata", "TipoProposto", "DDT"},
    };
    InsertScript rows(connection,
                      "KAP_CFG (Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag)");
    for (const Setting& setting : kSettings) {
        SqlRow row;
        row.text(setting.group).text(setting.application).text(setting.procedure);
        row.text(setting.module).text(setting.field).text(setting.value);
        rows.add(row.text("1"));
    }
    rows.finish();
}

void fill(ado::Connection& connection, std::uint64_t seed) {
    RandomSource random(seed);
    connection.Execute(sampleSchema());
    insertCurrencies(connection);
    insertDocumentTypes(connection);
    insertConfiguration(connection);
    insertCustomers(connection, random);
    const std::vector<Product> products = makeProducts();
    insertProducts(connection, products);
    insertCounters(connection, insertDocuments(connection, random, products));
}

}  // namespace

void createSampleCompany(ado::Connection& connection, std::uint64_t seed) {
    connection.BeginTrans();
    try {
        fill(connection, seed);
    } catch (const AutomationError&) {
        connection.RollbackTrans();
        throw;
    }
    connection.CommitTrans();
}

bool holdsSampleCompany(ado::Connection& connection) {
    try {
        const auto mark = connection.Execute(
            u"SELECT Valore FROM KAP_CFG WHERE Gruppo = 'DEFAULT' AND Applicazione = 'Azienda' AND "
            u"Procedura = 'Campione' AND Campo = 'RagioneSociale'");
        return !mark->Eof();
    } catch (const AutomationError& error) {
        if (error.number() == ado::errors::kUnknownObject ||
            error.number() == ado::errors::kCommandText) {
            return false;  // no such table, or one without these columns
        }
        throw;
    }
}

std::vector<TableSize> sampleCompanySizes(ado::Connection& connection) {
    std::vector<TableSize> sizes = {{"customers", "Clienti"},
                                    {"products", "mag_Articoli"},
                                    {"documents", "mag_TDocumenti"},
                                    {"document lines", "mag_RDocumenti"}};
    for (TableSize& size : sizes) {
        const auto rows = connection.Execute("SELECT COUNT(*) FROM " + size.table);
        size.rows = convert::toLong(rows->Fields()->Item(std::int32_t{0})->Value());
    }
    return sizes;
}

}  // namespace kap::cli

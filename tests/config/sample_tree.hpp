#pragma once

#include <string>

#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>

#include "support/database.hpp"
#include "support/prepared_tables.hpp"

namespace kap::test {

// The root of the group UFFICIO with the module Vendite\Ordini\Stampa, which has no fields yet.
inline Ref<CFG_Applicazioni> sampleRoot() {
    auto root = make<CFG_Applicazioni>();
    root->setGruppo(u"UFFICIO");
    root->Add(u"Vendite")->Procedure()->Add(u"Ordini")->Moduli()->Add(u"Stampa");
    return root;
}

inline Ref<CFG_Campi> sampleFields(const Ref<CFG_Applicazioni>& root) {
    return root->Item(u"Vendite")->Procedure()->Item(u"Ordini")->Moduli()->Item(u"Stampa")->Campi();
}

// A database with the empty configuration table KAP_CFG, whose columns take Null.
inline Ref<ado::Connection> openConfiguration() {
    auto connection = openMemory();
    kap::test::prepare(
        connection,
        u"CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), "
        u"Procedura varchar(30), Modulo varchar(30), Campo varchar(30), Valore nvarchar(200), "
        u"Flag varchar(10), Note varchar(40))");
    return connection;
}

// Adds a row for a field of the module Vendite\Ordini\Stampa.
inline void addRow(const Ref<ado::Connection>& connection, const std::string& group,
                   const std::string& field, const std::string& value,
                   const std::string& flag = "0") {
    connection->Execute(
        "INSERT INTO KAP_CFG (Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag) "
        "VALUES ('" +
        group + "', 'Vendite', 'Ordini', 'Stampa', '" + field + "', N'" + value + "', '" + flag +
        "')");
}

// The rows of the table, one a line: "GROUP APPLICATION PROCEDURE MODULE FIELD=VALUE/FLAG".
inline std::string rowsOf(const Ref<ado::Connection>& connection) {
    std::string all;
    const auto rows = connection->Execute(
        u"SELECT * FROM KAP_CFG ORDER BY Gruppo, Applicazione, Procedura, Modulo, Campo, Valore");
    for (; !rows->Eof(); rows->MoveNext()) {
        for (const char16_t* column : {u"Gruppo", u"Applicazione", u"Procedura", u"Modulo"}) {
            all += fieldOf(rows, column).as<String>().utf8() + " ";
        }
        all += fieldOf(rows, u"Campo").as<String>().utf8() + "=" +
               fieldOf(rows, u"Valore").as<String>().utf8() + "/" +
               fieldOf(rows, u"Flag").as<String>().utf8() + "\n";
    }
    return all;
}

}  // namespace kap::test

// Loading a configuration of 200,000 fields beside bare SQLite reading the rows of the same query.

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>

#include "bench/job.hpp"
#include "engine/sqlite/collation.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using kap::Ref;
using kap::String;

constexpr int kApplications = 4;
constexpr int kProcedures = 25;
constexpr int kModules = 20;
constexpr int kFields = 100;
constexpr int kAllFields = kApplications * kProcedures * kModules * kFields;
// One field in ten is customised by the group.
constexpr int kEvery = 10;
constexpr int kConfigurationRows = kAllFields + kAllFields / kEvery;

std::string name(const char* what, int number) {
    return std::string(what) + " numero " + kap::plain::text(number);
}

// The rows of one module: those of all its fields for everybody, some for the group.
std::string moduleRows(int application, int procedure, int module) {
    std::string script =
        "INSERT INTO KAP_CFG (Gruppo, Applicazione, Procedura, Modulo, Campo, Valore, Flag) "
        "VALUES ";
    const std::string place = "', '" + name("Applicazione", application) + "', '" +
                              name("Procedura", procedure) + "', '" + name("Modulo", module) +
                              "', '";
    for (int field = 0; field < kFields; ++field) {
        const std::string rest = place + name("Campo", field) + "', 'valore del campo " +
                                 kap::plain::text(field) + "', '1')";
        script += std::string(field == 0 ? "('" : ", ('") + "DEFAULT" + rest;
        if (field % kEvery == 0) {
            script += ", ('UFFICIO" + rest;
        }
    }
    return script;
}

// Declares an application as a program does.
void declare(kap::CFG_Applicazioni& root, int application) {
    const auto procedures = root.Add(name("Applicazione", application))->Procedure();
    for (int procedure = 0; procedure < kProcedures; ++procedure) {
        const auto modules = procedures->Add(name("Procedura", procedure))->Moduli();
        for (int module = 0; module < kModules; ++module) {
            const auto fields = modules->Add(name("Modulo", module))->Campi();
            for (int field = 0; field < kFields; ++field) {
                fields->Add(name("Campo", field))->setValoreDefault(u"nessun valore");
            }
        }
    }
}

class ConfigurationDatabase {
public:
    static ConfigurationDatabase& get() {
        static ConfigurationDatabase database;
        return database;
    }

    [[nodiscard]] const Ref<kap::CFG_Applicazioni>& root() const { return root_; }
    [[nodiscard]] sqlite3* bare() const { return bare_.get(); }

private:
    ConfigurationDatabase() {
        const std::string file = folder_.file("bench.db");
        connection_->Open("Provider=KapLocal;Data Source=" + file);
        connection_->Execute(
            u"CREATE TABLE KAP_CFG (Gruppo varchar(30) NOT NULL, Applicazione varchar(30) NOT "
            u"NULL, Procedura varchar(30) NOT NULL, Modulo varchar(30) NOT NULL, Campo varchar(30) "
            u"NOT NULL, Valore varchar(2000) NOT NULL, Flag varchar(10) NOT NULL, PRIMARY KEY "
            u"(Gruppo, Applicazione, Procedura, Modulo, Campo))");
        root_->setGruppo(u"UFFICIO");
        root_->setActiveConnection(connection_);
        connection_->BeginTrans();
        for (int application = 0; application < kApplications; ++application) {
            addRows(application);
            declare(*root_, application);
        }
        connection_->CommitTrans();
        openBare(file);
    }
    ~ConfigurationDatabase() {
        bare_.reset();
        connection_->Close();
    }

    void addRows(int application) {
        for (int procedure = 0; procedure < kProcedures; ++procedure) {
            for (int module = 0; module < kModules; ++module) {
                connection_->Execute(moduleRows(application, procedure, module));
            }
        }
    }

    void openBare(const std::string& file) {
        sqlite3* handle = nullptr;
        if (sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
            throw std::runtime_error("the configuration cannot be opened bare");
        }
        bare_.reset(handle);
        kap::engine::registerCollations(handle);  // the columns name it
    }

    struct Close {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };

    kap::test::TemporaryFolder folder_;
    Ref<kap::ado::Connection> connection_ = kap::make<kap::ado::Connection>();
    Ref<kap::CFG_Applicazioni> root_ = kap::make<kap::CFG_Applicazioni>();
    std::unique_ptr<sqlite3, Close> bare_;
};

std::string lastFieldsGroup(const kap::CFG_Applicazioni& root, int field) {
    return root.Item(name("Applicazione", kApplications - 1))
        ->Procedure()
        ->Item(name("Procedura", kProcedures - 1))
        ->Moduli()
        ->Item(name("Modulo", kModules - 1))
        ->Campi()
        ->Item(name("Campo", field))
        ->Gruppo()
        .utf8();
}

void loadConfiguration(benchmark::State& state) {
    kap::CFG_Applicazioni& root = *ConfigurationDatabase::get().root();
    for (auto _ : state) {
        root.CaricaCfgPersonalizzati();
    }
    if (lastFieldsGroup(root, kFields - 1) != "DEFAULT" ||
        lastFieldsGroup(root, kFields - kEvery) != "UFFICIO") {
        state.SkipWithError("the fields are not loaded");
    }
    state.SetItemsProcessed(state.iterations() * kConfigurationRows);
}

// The statement of the load, and every column of its rows copied out.
void readBareConfiguration(benchmark::State& state) {
    std::string applications;
    for (int i = 0; i < kApplications; ++i) {
        applications += (i == 0 ? "'" : ",'") + name("Applicazione", i) + "'";
    }
    const std::string from =
        " AS Ordina, * FROM KAP_CFG WHERE Applicazione IN (" + applications + ") AND Gruppo = ";
    const std::string query =
        "SELECT '0'" + from + "'DEFAULT' UNION SELECT '1'" + from + "'UFFICIO' ORDER BY Ordina";
    std::int64_t rows = 0;
    std::size_t characters = 0;
    for (auto _ : state) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(ConfigurationDatabase::get().bare(), query.c_str(), -1, &statement,
                               nullptr) != SQLITE_OK) {
            state.SkipWithError("the bare query does not compile");
            break;
        }
        rows = 0;
        std::string copy;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            ++rows;
            for (int column = 0; column < sqlite3_column_count(statement); ++column) {
                copy.assign(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
                            static_cast<std::size_t>(sqlite3_column_bytes(statement, column)));
                characters += copy.size();
            }
        }
        sqlite3_finalize(statement);
        benchmark::DoNotOptimize(characters);
    }
    if (rows != kConfigurationRows) {
        state.SkipWithError("rows are missing");
    }
    state.SetItemsProcessed(state.iterations() * kConfigurationRows);
}

// The same load of a program that knows one application of four.
void loadOneApplication(benchmark::State& state) {
    const auto root = kap::make<kap::CFG_Applicazioni>();
    root->setGruppo(u"UFFICIO");
    root->setActiveConnection(ConfigurationDatabase::get().root()->ActiveConnection());
    declare(*root, kApplications - 1);
    for (auto _ : state) {
        root->CaricaCfgPersonalizzati();
    }
    if (lastFieldsGroup(*root, kFields - 1) != "DEFAULT") {
        state.SkipWithError("the fields are not loaded");
    }
    state.SetItemsProcessed(state.iterations() * kConfigurationRows / kApplications);
}

// Looks up a hundred fields, in other letters, of a module that has so many.
template <int Fields>
void lookUpFields(benchmark::State& state) {
    constexpr int kLookUps = 100;
    const auto fields = kap::make<kap::CFG_Campi>();
    std::vector<String> names;
    for (int i = 0; i < Fields; ++i) {
        fields->Add(name("Campo", i));
        if (i % (Fields / kLookUps) == 0) {
            names.emplace_back("CAMPO NUMERO " + kap::plain::text(i));
        }
    }
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const String& wanted : names) {
            if (!fields->Item(wanted)->Personalizzato()) {
                ++found;
            }
        }
    }
    if (found != kLookUps) {
        state.SkipWithError("fields are missing");
    }
    state.SetItemsProcessed(state.iterations() * kLookUps);
}

KAP_BENCH_PAIR("configuration: load 200,000 fields of 2,000 modules, 220,000 rows",
               {"CFG_Applicazioni::Load, the whole tree", loadConfiguration},
               {"sqlite3_step over the same rows, texts copied", readBareConfiguration}, 2.0);
KAP_BENCH_PAIR("configuration: a row of 200,000 fields beside one of 50,000",
               {"a tree of 200,000 fields, a field", loadConfiguration},
               {"a tree of 50,000 fields, a field", loadOneApplication}, 1.3);
KAP_BENCH_PAIR("configuration: look up a field of 30,000 beside one of 300",
               {"by name among 30,000 fields", lookUpFields<30'000>},
               {"by name among 300 fields", lookUpFields<300>}, 2.0);

}  // namespace

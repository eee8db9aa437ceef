// Passwords: kept for what has to be opened again, and shown to nobody.
#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>
#include <kaputil/sqlscript/csql.hpp>

#include "cli/command_line.hpp"
#include "server.hpp"
#include "support/shown.hpp"

namespace kap::ado {
namespace {

constexpr const char* kPassword = "geheim;{x}";

bool holdsPassword(const std::string& text) {
    return text.find("geheim") != std::string::npos;
}

class ServerPasswords : public test::ServerTest {
protected:
    // The connection string without its password.
    [[nodiscard]] std::string withoutPassword() const {
        std::string text = database_->connection();
        const std::string pair = "PWD=\"" + std::string(kPassword) + "\";";
        return text.erase(text.find(pair), pair.size());
    }
};

TEST_F(ServerPasswords, AreNotInTheConnectionStringOfAnOpenConnection) {
    EXPECT_FALSE(holdsPassword(connection_->ConnectionString().utf8()));
    EXPECT_EQ(connection_->ConnectionString(), String(withoutPassword()));
    const auto persistent = database_->open(";Persist Security Info=True");
    EXPECT_TRUE(holdsPassword(persistent->ConnectionString().utf8()));
}

TEST_F(ServerPasswords, AreStillKnownWhenTheConnectionIsOpenedAgain) {
    connection_->Close();
    connection_->Open();
    EXPECT_EQ(value("SELECT 1"), "Long 1");
    const auto separately = make<Connection>();
    separately->Open(String(withoutPassword()), u"kap", kPassword);
    separately->Close();
    separately->Open();
    EXPECT_EQ(test::shown(test::valueOf(separately, u"SELECT 1")), "Long 1");
}

TEST_F(ServerPasswords, AreStillKnownToTheSecondConnectionOfATransfer) {
    run("CREATE TABLE origine (a int, b int); CREATE TABLE archivio (a int, b int, c int)");
    const auto separately = make<Connection>();
    separately->Open(String(withoutPassword()), u"kap", kPassword);
    for (const auto& connection : {connection_, separately}) {
        const auto sql = make<CSQL>();
        sql->setActiveConnection(connection);
        sql->Parametri()->Scrivi(u"FROM", u"origine");
        sql->Parametri()->Scrivi(u"TO", u"archivio");
        const String text = sql->AddTmp();
        EXPECT_NE(text.utf8().find("origine.[a], origine.[b]"), std::string::npos) << text.utf8();
    }
}

TEST_F(ServerPasswords, AreKnownToAScriptThatOpensItsOwnConnection) {
    const auto sql = make<CSQL>();
    sql->setConnectionString(String(database_->connection()));
    EXPECT_FALSE(holdsPassword(sql->ConnectionString().utf8()));
    EXPECT_EQ(sql->ActiveConnection()->State(), ObjectStateEnum::adStateOpen);
}

TEST_F(ServerPasswords, AreNotInWhatTheCommandLineSays) {
    std::string text = database_->connection();
    text.replace(text.find(database_->name()), database_->name().size(), "gibtsnicht");
    const std::string strings[] = {
        text, "Driver={Gibts nicht};PWD=geheim", "Driver=x;PWD={geheim",
        "Provider=MSDASQL;Extended Properties='DSN=gibtsnicht;PWD=geheim'"};
    for (const std::string& string : strings) {
        const auto outcome =
            tests::kaputil({"sql", "--connection", string, "--command", "SELECT 1"});
        EXPECT_EQ(outcome.exitCode, 3) << outcome.err;
        EXPECT_NE(outcome.err, "");
        EXPECT_FALSE(holdsPassword(outcome.out + outcome.err)) << outcome.err;
    }
}

}  // namespace
}  // namespace kap::ado

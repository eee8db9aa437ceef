#include "drivers/odbc/connect_text.hpp"

#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>
#include <kaputil/data/error_numbers.hpp>

namespace kap::ado::odbc {
namespace {

using std::chrono::seconds;

ConnectText made(const std::string& text, const std::vector<std::string>& installed = {"FreeTDS"}) {
    return connectTextOf(ConnectionString::parse(text), installed, seconds(15));
}

std::string textOf(const std::string& text,
                   const std::vector<std::string>& installed = {"FreeTDS"}) {
    return made(text, installed).text;
}

TEST(ConnectText, PassesTheKeysOfOdbcOnAsTheyAre) {
    EXPECT_EQ(textOf("Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=5432;UID=kap;Option=1"),
              "Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=5432;UID=kap;Option=1;");
    EXPECT_EQ(textOf("DSN=Azienda;UID=sa"), "DSN=Azienda;UID=sa;");
    EXPECT_EQ(textOf("Provider=MSDASQL;DSN=Azienda;User ID=sa;Password=x"),
              "DSN=Azienda;UID=sa;PWD=x;");
}

TEST(ConnectText, NamesTheVersionThatTheDriverWouldGuess) {
    EXPECT_EQ(textOf("Driver=FreeTDS;Server=s"), "TDS_Version=7.4;Driver={FreeTDS};Server=s;");
    EXPECT_EQ(textOf("Driver=FreeTDS;TDS_Version=7.1"), "Driver={FreeTDS};TDS_Version=7.1;");
    EXPECT_EQ(textOf("Provider=SQLOLEDB;Server=s;TDS_Version=7.1"),
              "Driver={FreeTDS};TDS_Version=7.1;Server=s;");
}

TEST(ConnectText, PutsValuesWithSignsInBraces) {
    EXPECT_EQ(textOf("DSN=A;PWD='a;b}c'"), "DSN=A;PWD={a;b}}c};");
}

TEST(ConnectText, TranslatesTheServersProviders) {
    EXPECT_EQ(
        textOf("Provider=SQLOLEDB.1;Data Source=srv;Initial Catalog=azienda;User ID=sa;"
               "Password=p;Persist Security Info=True;Application Name=Gestione"),
        "Driver={FreeTDS};TDS_Version=7.4;Server=srv;Database=azienda;UID=sa;PWD=p;APP=Gestione;");
    EXPECT_EQ(
        textOf("Provider=SQLNCLI11;Server=srv;Database=azienda;Integrated Security=SSPI"),
        "Driver={FreeTDS};TDS_Version=7.4;Server=srv;Database=azienda;Trusted_Connection=Yes;");
    EXPECT_EQ(textOf("Provider=MSOLEDBSQL;Data Source=tcp:srv,1444;UID=sa"),
              "Driver={FreeTDS};TDS_Version=7.4;Port=1444;Server=srv;UID=sa;");
    EXPECT_EQ(textOf("Provider=SQLOLEDB;Data Source=(local)"),
              "Driver={FreeTDS};TDS_Version=7.4;Server=localhost;");
}

TEST(ConnectText, PrefersTheMakersNewestDriver) {
    EXPECT_EQ(textOf("Provider=SQLOLEDB;Data Source=srv,1444",
                     {"FreeTDS", "ODBC Driver 17 for SQL Server", "ODBC Driver 18 for SQL Server",
                      "SQL Server Native Client 11.0"}),
              "Driver={ODBC Driver 18 for SQL Server};Server=srv,1444;");
}

TEST(ConnectText, SaysWhatToInstall) {
    try {
        (void)made("Provider=SQLOLEDB;Data Source=srv;Password=geheim", {"PostgreSQL Unicode"});
        FAIL() << "it was accepted";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kProviderNotFound);
        EXPECT_EQ(error.description(),
                  String(u"Provider 'SQLOLEDB' needs an ODBC driver for such servers, and none is "
                         u"installed. Install the package tdsodbc, or the server maker's own "
                         u"driver."));
    }
}

TEST(ConnectText, TheProviderOfOdbcNamesADataSource) {
    EXPECT_EQ(textOf("Provider=MSDASQL.1;Data Source=Azienda;Initial Catalog=db;User ID=sa"),
              "DSN=Azienda;Database=db;UID=sa;");
    EXPECT_EQ(textOf("Provider=MSDASQL;Extended Properties=\"DSN=Azienda;UID=x\""),
              "DSN=Azienda;UID=x");
}

TEST(ConnectText, TakesTheTimeoutFromTheKeysOrTheProperty) {
    EXPECT_EQ(made("DSN=A").timeout, seconds(15));
    EXPECT_EQ(made("DSN=A;Connect Timeout=3").timeout, seconds(3));
    EXPECT_EQ(made("Provider=SQLOLEDB;Data Source=s;Timeout=0").timeout, seconds(0));
    EXPECT_THROW(made("DSN=A;Connect Timeout=drei"), AutomationError);
    EXPECT_THROW(made("DSN=A;Connect Timeout=-1"), AutomationError);
}

TEST(ConnectText, SaysWhetherResultsMayBeOpenAtATime) {
    EXPECT_EQ(textOf("Provider=SQLNCLI;Server=s;MARS Connection=True"),
              "Driver={FreeTDS};TDS_Version=7.4;Server=s;MARS_Connection=Yes;");
    EXPECT_FALSE(made("Provider=SQLNCLI;Server=s;MARS Connection=True").oneResult);
    EXPECT_TRUE(made("DSN=A;MultipleActiveResultSets=False").oneResult);
    EXPECT_EQ(textOf("DSN=A;MultipleActiveResultSets=False"), "DSN=A;");
    EXPECT_FALSE(made("DSN=A").oneResult);
}

TEST(ConnectText, KnowsThePasswordToHideIt) {
    EXPECT_EQ(made("DSN=A;PWD=geheim").password, "geheim");
    EXPECT_EQ(made("Provider=SQLOLEDB;Data Source=s;Password=geheim").password, "geheim");
    EXPECT_EQ(made("DSN=A").password, "");
}

TEST(ConnectText, KnowsWhetherConnectionsAreKept) {
    EXPECT_FALSE(made("DSN=A").pooling.wanted);
    for (const char* keys : {"OLE DB Services=-1", "OLE DB Services=1", "OLE DB Services=-5",
                             "Pooling=True", "Pooling=yes"}) {
        EXPECT_TRUE(made(std::string("DSN=A;") + keys).pooling.wanted) << keys;
        EXPECT_EQ(textOf(std::string("DSN=A;") + keys), "DSN=A;");
    }
    for (const char* keys : {"OLE DB Services=-2", "OLE DB Services=0", "OLE DB Services=-4",
                             "Pooling=False", "OLE DB Services=-1;Pooling=No"}) {
        EXPECT_FALSE(made(std::string("DSN=A;") + keys).pooling.wanted) << keys;
    }
    const Pooling rules = made(
                              "Provider=SQLOLEDB;Server=s;Pooling=True;Max Pool Size=5;"
                              "Min Pool Size=1;Connection Lifetime=600")
                              .pooling;
    EXPECT_EQ(rules.most, 5);
    EXPECT_EQ(rules.lifetime, seconds(600));
    EXPECT_THROW((void)made("DSN=A;OLE DB Services=all"), AutomationError);
}

TEST(ConnectText, AsksForACopyToReadInTheDriversWords) {
    EXPECT_EQ(textOf("Provider=SQLOLEDB;Server=s;Application Intent=readonly"),
              "Driver={FreeTDS};TDS_Version=7.4;Server=s;ApplicationIntent=ReadOnly;");
    EXPECT_EQ(textOf("Driver=FreeTDS;TDS_Version=7.4;ApplicationIntent=ReadWrite"),
              "Driver={FreeTDS};TDS_Version=7.4;ApplicationIntent=ReadWrite;");
    EXPECT_EQ(textOf("Driver={PostgreSQL Unicode};ApplicationIntent=ReadOnly;Server=a"),
              "Driver={PostgreSQL Unicode};Server=a;pqopt={target_session_attrs=prefer-standby};");
    EXPECT_EQ(textOf("Driver={PostgreSQL Unicode};pqopt={keepalives_idle=10};"
                     "ApplicationIntent=ReadOnly"),
              "Driver={PostgreSQL Unicode};pqopt={keepalives_idle=10 "
              "target_session_attrs=prefer-standby};");
    EXPECT_EQ(textOf("Driver={PostgreSQL Unicode};pqopt={target_session_attrs=standby};"
                     "ApplicationIntent=ReadOnly"),
              "Driver={PostgreSQL Unicode};pqopt={target_session_attrs=standby};");
    EXPECT_EQ(textOf("Driver={PostgreSQL Unicode};ApplicationIntent=ReadWrite"),
              "Driver={PostgreSQL Unicode};");
    EXPECT_THROW((void)textOf("DSN=A;ApplicationIntent=Sometimes"), AutomationError);
}

TEST(ConnectText, KnowsTheProvidersOfServers) {
    for (const char* name :
         {"SQLOLEDB", "sqloledb.1", "SQLNCLI", "SQLNCLI10.1", "MSOLEDBSQL19", "MSDASQL"}) {
        EXPECT_TRUE(isServerProvider(name)) << name;
    }
    for (const char* name : {"", "KapLocal", "SQLOLEDBX", "SQL"}) {
        EXPECT_FALSE(isServerProvider(name)) << name;
    }
}

}  // namespace
}  // namespace kap::ado::odbc

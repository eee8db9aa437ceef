#include "data/driver.hpp"
#include "drivers/driver_registry.hpp"

#include <gtest/gtest.h>
#include <kaputil/data/error_numbers.hpp>

namespace kap::ado {
namespace {

std::string driverRefusalOf(std::string_view text) {
    try {
        (void)driverFor(ConnectionString::parse(text));
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number(), errors::kProviderNotFound);
        return error.description().utf8();
    }
    return "(accepted)";
}

TEST(Driver, TheProviderNameIgnoresCase) {
    EXPECT_EQ(&driverFor(ConnectionString::parse("provider=KAPLOCAL")),
              &driverFor(ConnectionString::parse("Provider=KapLocal;Data Source=a.db")));
}

TEST(Driver, AnUnknownProviderIsNamedTogetherWithWhatExists) {
    EXPECT_EQ(driverRefusalOf("Provider=Jet.4.0;Data Source=a.mdb"),
              "Provider 'Jet.4.0' cannot be found. There are KapLocal (a database in one "
              "file) and the providers of database servers: SQLOLEDB, MSOLEDBSQL, SQLNCLI, "
              "MSDASQL.");
}

TEST(Driver, AConnectionStringWithoutProviderSaysHowToBegin) {
    EXPECT_EQ(driverRefusalOf("Data Source=a.db"),
              "The connection string names no provider. Begin it with Provider=KapLocal;Data "
              "Source=<file>, or for a database server with Provider=SQLOLEDB;Data "
              "Source=<server>, Driver={<ODBC driver>} or DSN=<name>.");
}

TEST(Driver, TheFirstMessageIsWhatIsRaised) {
    const DriverError error({{208, -2147217865, "42S02", "Invalid object name 'x'.", 1},
                             {3621, -2147217900, "01000", "The statement has been terminated.", 1}},
                            u"KapLocal");
    EXPECT_EQ(error.number(), -2147217865);
    EXPECT_EQ(error.description().utf8(), "Invalid object name 'x'.");
    EXPECT_EQ(error.source().utf8(), "KapLocal");
    EXPECT_EQ(error.messages().size(), 2U);
}

TEST(Driver, AMessageWithStrayBytesIsStillShown) {
    const DriverError error({{824, -2147467259, "HY000", "damaged: \xFF!", 0}});
    EXPECT_EQ(error.description().utf8(), "damaged: ?!");
}

TEST(Driver, EveryDataTypeHasItsStorage) {
    using enum DataTypeEnum;
    for (const auto type : {adBoolean, adUnsignedTinyInt, adSmallInt, adInteger, adBigInt,
                            adCurrency, adNumeric, adDecimal}) {
        EXPECT_EQ(storageOf(type), Storage::Integer) << static_cast<int>(type);
    }
    for (const auto type : {adSingle, adDouble, adDate, adDBDate, adDBTime, adDBTimeStamp}) {
        EXPECT_EQ(storageOf(type), Storage::Real) << static_cast<int>(type);
    }
    for (const auto type :
         {adChar, adWChar, adVarChar, adVarWChar, adLongVarChar, adLongVarWChar, adGUID, adBSTR}) {
        EXPECT_EQ(storageOf(type), Storage::Text) << static_cast<int>(type);
    }
    for (const auto type : {adBinary, adVarBinary, adLongVarBinary}) {
        EXPECT_EQ(storageOf(type), Storage::Binary) << static_cast<int>(type);
    }
}

}  // namespace
}  // namespace kap::ado

#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "session_support.hpp"

namespace kap::ado::embedded::test {
namespace {

using enum ParameterDirectionEnum;

RequestParameter number(std::int64_t value, ParameterDirectionEnum direction = adParamInput) {
    RequestParameter parameter;
    parameter.type = DataTypeEnum::adInteger;
    parameter.direction = direction;
    parameter.value = value;
    return parameter;
}

RequestParameter text(std::string value) {
    RequestParameter parameter;
    parameter.type = DataTypeEnum::adVarWChar;
    parameter.value = std::move(value);
    return parameter;
}

Reply run(Session& session, Request& request) {
    Reply reply;
    session.execute(request, reply);
    return reply;
}

TEST(Requests, PutTheirParametersInThePlaceOfTheMarks) {
    const auto session = openSession(":memory:marks");
    (void)session->execute(
        "CREATE TABLE t (a int, b nvarchar(20)); "
        "INSERT INTO t VALUES (1, N'però'), (2, N'x')");
    Request request;
    request.text = "SELECT a FROM t WHERE b = ? AND a < ?";
    request.parameters = {text("PERÒ"), number(5)};
    EXPECT_EQ(shown(run(*session, request).results.back()), "1");
    request.parameters = {text("x"), number(2)};
    EXPECT_EQ(shown(run(*session, request).results.back()), "");
}

TEST(Requests, WriteValuesThatNoTextCouldHold) {
    const auto session = openSession(":memory:values");
    (void)session->execute("CREATE TABLE t (a varbinary(10), b nvarchar(20), c money)");
    Request request;
    request.text = "INSERT INTO t VALUES (?, ?, ?)";
    RequestParameter bytes;
    bytes.type = DataTypeEnum::adVarBinary;
    bytes.value = std::string("\0'\xFF", 3);
    RequestParameter amount;
    amount.type = DataTypeEnum::adCurrency;
    amount.value = std::int64_t{12345};
    request.parameters = {bytes, text("it's; DROP TABLE t"), amount};
    EXPECT_EQ(run(*session, request).results.back().rowsAffected, 1);
    EXPECT_EQ(rowsOf(*session, "SELECT a, b, c FROM t"), "0x0027FF, 'it's; DROP TABLE t', 12345");
}

TEST(Requests, TakeNullForAParameter) {
    const auto session = openSession(":memory:null");
    Request request;
    request.text = "SELECT isnull(?, -1)";
    request.parameters = {number(0)};
    request.parameters[0].value = std::monostate{};
    EXPECT_EQ(shown(run(*session, request).results.back()), "-1");
}

TEST(Requests, RefuseAMarkWithoutAParameter) {
    const auto session = openSession(":memory:missing");
    Request request;
    request.text = "SELECT ?, ?";
    request.parameters = {number(1)};
    EXPECT_EQ(errorOf([&] { (void)run(*session, request); }).value().nativeNumber, 137);
}

TEST(Requests, CallAProcedureByItsName) {
    const auto session = openSession(":memory:procedure");
    (void)session->execute(
        "CREATE PROC p @a int, @b int OUTPUT, @c varchar(10) = 'x' AS SET @b = @a * 2 "
        "SELECT @c AS c RETURN 7");
    Request request;
    request.text = "p";
    request.procedure = true;
    request.parameters = {number(0, adParamReturnValue), number(21), number(0, adParamOutput)};
    const Reply reply = run(*session, request);
    EXPECT_EQ(shown(reply.results.back()), "'x'");
    EXPECT_EQ(request.parameters[0].value, Value(std::int64_t{7}));
    EXPECT_EQ(request.parameters[2].value, Value(std::int64_t{42}));
}

TEST(Requests, CallAProcedureWithNamedParameters) {
    const auto session = openSession(":memory:named");
    (void)session->execute("CREATE PROC p @a int = 1, @b int = 2 AS SELECT @a, @b");
    Request request;
    request.text = "p";
    request.procedure = true;
    request.parameters = {number(9)};
    request.parameters[0].name = "@b";
    EXPECT_EQ(shown(run(*session, request).results.back()), "1, 9");
}

TEST(Requests, ReportWhatAScriptPrints) {
    const auto session = openSession(":memory:messages");
    Request request;
    request.text = "PRINT 'one' RAISERROR ('two', 5, 1)";
    const Reply reply = run(*session, request);
    ASSERT_EQ(reply.messages.size(), 2U);
    EXPECT_EQ(reply.messages[0].text, "one");
    EXPECT_FALSE(reply.messages[0].isError());
    EXPECT_EQ(reply.messages[1].text, "two");
    EXPECT_EQ(reply.messages[1].nativeNumber, 50000);
    EXPECT_EQ(reply.messages[1].number, 0);
}

TEST(Requests, RaiseTheFirstErrorAndTellThemAll) {
    const auto session = openSession(":memory:errors");
    Request request;
    request.text = "PRINT 'before'; SELECT 1/0; RAISERROR ('own', 16, 1)";
    Reply reply;
    try {
        session->execute(request, reply);
        FAIL() << "nothing was raised";
    } catch (const DriverError& error) {
        EXPECT_EQ(error.number(), errors::kCommandText);
        EXPECT_EQ(error.description().utf8(), "Divide by zero error encountered.");
        ASSERT_EQ(error.messages().size(), 3U);
        EXPECT_EQ(error.messages()[2].nativeNumber, 50000);
    }
}

TEST(Requests, EndWhenTheirTimeIsUp) {
    const auto session = openSession(":memory:timeout");
    for (const char* script : {"WAITFOR DELAY '00:01:00'", "DECLARE @i int WHILE 1 = 1 SET @i = 1",
                               "WITH n AS (SELECT 1 AS i UNION ALL SELECT i + 1 FROM n) "
                               "SELECT count(*) FROM n OPTION (MAXRECURSION 0)"}) {
        Request request;
        request.text = script;
        request.timeout = std::chrono::seconds(1);
        const auto error = errorOf([&] { (void)run(*session, request); });
        EXPECT_EQ(error.value().number, errors::kTimeout) << script;
        EXPECT_EQ(error.value().text, "Query timeout expired");
    }
    EXPECT_EQ(rowsOf(*session, "SELECT 1"), "1");
}

}  // namespace
}  // namespace kap::ado::embedded::test

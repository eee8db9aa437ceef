#include "ado/procedure_parameters.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "base/ascii.hpp"
#include "base/quoting.hpp"
#include "data/driver.hpp"
#include "tsql/lexer.hpp"

namespace kap::ado {
namespace {

using enum DataTypeEnum;

using Named = std::pair<std::string_view, DataTypeEnum>;
constexpr auto kSqlTypes = std::to_array<Named>({
    {"bit", adBoolean},
    {"boolean", adBoolean},
    {"tinyint", adUnsignedTinyInt},
    {"smallint", adSmallInt},
    {"int", adInteger},
    {"integer", adInteger},
    {"bigint", adBigInt},
    {"decimal", adNumeric},
    {"numeric", adNumeric},
    {"money", adCurrency},
    {"smallmoney", adCurrency},
    {"real", adSingle},
    {"float", adDouble},
    {"double precision", adDouble},
    {"date", adDBDate},
    {"datetime", adDBTimeStamp},
    {"datetime2", adDBTimeStamp},
    {"smalldatetime", adDBTimeStamp},
    {"timestamp without time zone", adDBTimeStamp},
    {"time", adDBTime},
    {"char", adChar},
    {"character", adChar},
    {"varchar", adVarChar},
    {"character varying", adVarChar},
    {"text", adLongVarChar},
    {"nchar", adWChar},
    {"nvarchar", adVarWChar},
    {"ntext", adLongVarWChar},
    {"binary", adBinary},
    {"varbinary", adVarBinary},
    {"bytea", adLongVarBinary},
    {"image", adLongVarBinary},
    {"uniqueidentifier", adGUID},
    {"sql_variant", adVariant},
    {"uuid", adGUID},
});

DataTypeEnum typeOfSql(const std::string& name) {
    const std::string lower = asciiLower(name);
    const auto found = std::ranges::find(kSqlTypes, lower, &Named::first);
    return found == kSqlTypes.end() ? adVarWChar : found->second;
}

// A name of a procedure as it is given: [vendite].[Totale].
struct ProcedureName {
    std::string schema;  // empty: none is said
    std::string name;
};

std::string withoutBrackets(std::string name) {
    if (name.size() > 1 && (name.front() == '[' || name.front() == '"')) {
        name = name.substr(1, name.size() - 2);
    }
    return name;
}

ProcedureName procedureName(const String& given) {
    std::string rest = given.utf8();
    const std::size_t point = rest.rfind('.');
    if (point == std::string::npos) {
        return {{}, withoutBrackets(std::move(rest))};
    }
    ProcedureName result{{}, withoutBrackets(rest.substr(point + 1))};
    rest.erase(point);
    const std::size_t before = rest.rfind('.');
    result.schema = withoutBrackets(before == std::string::npos ? rest : rest.substr(before + 1));
    return result;
}

// The rows of a view of the catalogue that are about a procedure.
std::string conditionFor(const ProcedureName& wanted, const std::string& prefix) {
    std::string condition = prefix + "_name = " + textConstant(wanted.name);
    if (!wanted.schema.empty()) {
        condition += " AND " + prefix + "_schema = " + textConstant(wanted.schema);
    }
    return condition;
}

std::int32_t numberOr(const Variant& value, std::int32_t otherwise) {
    return value.isNull() ? otherwise : convert::toLong(value);
}

ParameterDirectionEnum directionOf(const String& mode) {
    return mode == String(u"IN") ? ParameterDirectionEnum::adParamInput
                                 : ParameterDirectionEnum::adParamInputOutput;
}

Ref<Parameter> returnValue() {
    auto parameter = make<Parameter>();
    parameter->setName(u"@RETURN_VALUE");
    parameter->setType(adInteger);
    parameter->setDirection(ParameterDirectionEnum::adParamReturnValue);
    return parameter;
}

Ref<Parameter> described(const Recordset& row) {
    const auto value = [&](const char16_t* name) { return row.Fields()->Item(name)->Value(); };
    auto parameter = make<Parameter>();
    parameter->setName(convert::toString(value(u"parameter_name")));
    parameter->setType(typeOfSql(convert::toString(value(u"data_type")).utf8()));
    parameter->setDirection(directionOf(convert::toString(value(u"parameter_mode"))));
    parameter->setSize(std::max(0, numberOr(value(u"character_maximum_length"), 0)));
    if (parameter->Type() == adNumeric) {
        parameter->setPrecision(
            static_cast<std::uint8_t>(numberOr(value(u"numeric_precision"), 0)));
        parameter->setNumericScale(static_cast<std::uint8_t>(numberOr(value(u"numeric_scale"), 0)));
    }
    return parameter;
}

}  // namespace

std::vector<Ref<Parameter>> parametersOfProcedure(Connection& connection, const String& name) {
    const ProcedureName wanted = procedureName(name);
    const auto known =
        connection.Execute("SELECT routine_name FROM information_schema.routines WHERE " +
                           conditionFor(wanted, "routine"));
    if (known->Eof()) {
        throw DriverError({{2812, errors::kCommandText, "42000",
                            "Could not find stored procedure '" + name.utf8() + "'.", 0}});
    }
    std::vector<Ref<Parameter>> parameters = {returnValue()};
    const auto rows = connection.Execute(
        "SELECT parameter_name, data_type, parameter_mode, character_maximum_length, "
        "numeric_precision, numeric_scale FROM information_schema.parameters WHERE " +
        conditionFor(wanted, "specific") + " AND ordinal_position > 0 ORDER BY ordinal_position");
    for (; !rows->Eof(); rows->MoveNext()) {
        parameters.push_back(described(*rows));
    }
    return parameters;
}

std::size_t markCount(std::string_view script) {
    const auto tokens = tsql::tokenize(script);
    return static_cast<std::size_t>(std::ranges::count_if(
        tokens, [](const tsql::Token& token) { return token.kind == tsql::TokenKind::Parameter; }));
}

}  // namespace kap::ado

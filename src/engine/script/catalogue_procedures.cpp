#include <algorithm>
#include <array>
#include <utility>

#include "base/ascii.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/script/catalogue_procedures.hpp"
#include "engine/script/script_runner.hpp"
#include "engine/values/value.hpp"

// sp_tables, sp_columns, sp_pkeys: what programs ask about the tables of a database. Their answers
// are queries of the views by which it describes itself.
namespace kap::engine {

namespace {

constexpr const char* kTables =
    "SELECT convert(sysname, db_name()) AS TABLE_QUALIFIER, convert(sysname, TABLE_SCHEMA) AS "
    "TABLE_OWNER, convert(sysname, TABLE_NAME) AS TABLE_NAME, convert(varchar(32), CASE TABLE_TYPE "
    "WHEN 'BASE TABLE' THEN 'TABLE' ELSE TABLE_TYPE END) AS TABLE_TYPE, convert(varchar(254), "
    "NULL) "
    "AS REMARKS FROM INFORMATION_SCHEMA.TABLES WHERE (@name IS NULL OR TABLE_NAME LIKE @name) AND "
    "(@owner IS NULL OR TABLE_SCHEMA LIKE @owner) ORDER BY 4, 1, 2, 3";

constexpr const char* kColumns =
    "SELECT convert(sysname, db_name()) AS TABLE_QUALIFIER, convert(sysname, TABLE_SCHEMA) AS "
    "TABLE_OWNER, convert(sysname, TABLE_NAME) AS TABLE_NAME, convert(sysname, COLUMN_NAME) AS "
    "COLUMN_NAME, convert(smallint, CASE DATA_TYPE WHEN 'char' THEN 1 WHEN 'numeric' THEN 2 WHEN "
    "'decimal' THEN 3 WHEN 'money' THEN 3 WHEN 'smallmoney' THEN 3 WHEN 'int' THEN 4 WHEN "
    "'smallint' THEN 5 WHEN 'float' THEN 6 WHEN 'real' THEN 7 WHEN 'date' THEN 91 WHEN 'datetime' "
    "THEN 11 WHEN 'smalldatetime' THEN 11 WHEN 'varchar' THEN 12 WHEN 'text' THEN -1 WHEN 'binary' "
    "THEN -2 WHEN 'timestamp' THEN -2 WHEN 'varbinary' THEN -3 WHEN 'image' THEN -4 WHEN 'bigint' "
    "THEN -5 WHEN 'tinyint' THEN -6 WHEN 'bit' THEN -7 WHEN 'nchar' THEN -8 WHEN 'nvarchar' THEN "
    "-9 WHEN 'time' THEN -9 WHEN 'datetime2' THEN -9 WHEN 'datetimeoffset' THEN -9 WHEN 'ntext' "
    "THEN "
    "-10 WHEN 'uniqueidentifier' THEN -11 END) AS DATA_TYPE, convert(sysname, "
    "DATA_TYPE + CASE WHEN columnproperty(object_id(quotename(TABLE_SCHEMA) + '.' + "
    "quotename(TABLE_NAME)), COLUMN_NAME, 'IsIdentity') = 1 "
    "THEN ' identity' ELSE '' END) AS TYPE_NAME, convert(int, isnull(NUMERIC_PRECISION, CASE "
    "DATA_TYPE WHEN 'bit' THEN 1 WHEN 'datetime' THEN 23 WHEN 'smalldatetime' THEN 16 WHEN 'date' "
    "THEN 10 WHEN 'time' THEN 8 WHEN 'datetime2' THEN 19 WHEN 'datetimeoffset' THEN 26 ELSE "
    "CHARACTER_MAXIMUM_LENGTH END + CASE WHEN DATA_TYPE IN ('time', 'datetime2', 'datetimeoffset') "
    "AND DATETIME_PRECISION > 0 THEN DATETIME_PRECISION + 1 ELSE 0 END)) AS [PRECISION], "
    "convert(int, CASE DATA_TYPE WHEN 'time' THEN 16 WHEN 'datetime2' THEN 38 WHEN "
    "'datetimeoffset' THEN 52 WHEN "
    "'int' THEN 4 WHEN 'smallint' THEN 2 WHEN 'tinyint' THEN 1 WHEN 'bigint' THEN 8 WHEN 'bit' "
    "THEN "
    "1 WHEN 'money' THEN 21 WHEN 'smallmoney' THEN 12 WHEN 'float' THEN 8 WHEN 'real' THEN 4 WHEN "
    "'datetime' THEN 16 WHEN 'smalldatetime' THEN 16 WHEN 'timestamp' THEN 8 WHEN 'decimal' THEN "
    "NUMERIC_PRECISION + 2 WHEN 'numeric' THEN NUMERIC_PRECISION + 2 WHEN 'nchar' THEN "
    "CHARACTER_MAXIMUM_LENGTH * 2 WHEN 'nvarchar' THEN CHARACTER_MAXIMUM_LENGTH * 2 ELSE "
    "CHARACTER_MAXIMUM_LENGTH END + CASE WHEN DATA_TYPE IN ('time', 'datetime2', 'datetimeoffset') "
    "AND DATETIME_PRECISION > 0 THEN DATETIME_PRECISION * 2 + 2 ELSE 0 END) AS LENGTH, "
    "convert(smallint, CASE DATA_TYPE WHEN 'time' THEN DATETIME_PRECISION WHEN 'datetime2' THEN "
    "DATETIME_PRECISION WHEN 'datetimeoffset' THEN DATETIME_PRECISION WHEN 'datetime' THEN "
    "3 WHEN 'smalldatetime' THEN 0 ELSE NUMERIC_SCALE END) AS SCALE, convert(smallint, CASE WHEN "
    "NUMERIC_PRECISION IS NULL THEN NULL ELSE 10 END) AS RADIX, convert(smallint, CASE IS_NULLABLE "
    "WHEN 'YES' THEN 1 ELSE 0 END) AS NULLABLE, convert(varchar(254), NULL) AS REMARKS, "
    "COLUMN_DEFAULT AS COLUMN_DEF, ORDINAL_POSITION, convert(varchar(254), IS_NULLABLE) AS "
    "IS_NULLABLE FROM INFORMATION_SCHEMA.COLUMNS WHERE (@name IS NULL OR TABLE_NAME LIKE @name) "
    "AND "
    "(@owner IS NULL OR TABLE_SCHEMA LIKE @owner) AND (@column IS NULL OR COLUMN_NAME LIKE "
    "@column) "
    "ORDER BY 1, 2, 3, ORDINAL_POSITION";

constexpr const char* kPrimaryKeys =
    "SELECT convert(sysname, db_name()) AS TABLE_QUALIFIER, convert(sysname, k.TABLE_SCHEMA) AS "
    "TABLE_OWNER, convert(sysname, k.TABLE_NAME) AS TABLE_NAME, convert(sysname, k.COLUMN_NAME) AS "
    "COLUMN_NAME, convert(smallint, k.ORDINAL_POSITION) AS KEY_SEQ, convert(sysname, "
    "k.CONSTRAINT_NAME) AS PK_NAME FROM INFORMATION_SCHEMA.KEY_COLUMN_USAGE k JOIN "
    "INFORMATION_SCHEMA.TABLE_CONSTRAINTS c ON c.CONSTRAINT_NAME = k.CONSTRAINT_NAME AND "
    "c.TABLE_NAME = k.TABLE_NAME AND c.TABLE_SCHEMA = k.TABLE_SCHEMA WHERE c.CONSTRAINT_TYPE = "
    "'PRIMARY KEY' AND k.TABLE_NAME = @name AND (@owner IS NULL OR k.TABLE_SCHEMA = @owner) "
    "ORDER BY 2, 3, KEY_SEQ";

constexpr const char* kDatabases =
    "SELECT convert(sysname, name) AS DATABASE_NAME, convert(int, NULL) AS DATABASE_SIZE, "
    "convert(varchar(254), NULL) AS REMARKS FROM sys.databases ORDER BY 1";

// Rules have the numbers of ODBC: 0 cascades, 1 does nothing, 2 sets nulls, 3 sets defaults.
constexpr const char* kForeignKeys =
    "SELECT convert(sysname, db_name()) AS PKTABLE_QUALIFIER, convert(sysname, "
    "object_schema_name(c.referenced_object_id)) AS PKTABLE_OWNER, convert(sysname, "
    "object_name(c.referenced_object_id)) AS PKTABLE_NAME, convert(sysname, "
    "col_name(c.referenced_object_id, c.referenced_column_id)) AS PKCOLUMN_NAME, convert(sysname, "
    "db_name()) AS FKTABLE_QUALIFIER, convert(sysname, object_schema_name(c.parent_object_id)) AS "
    "FKTABLE_OWNER, convert(sysname, object_name(c.parent_object_id)) AS FKTABLE_NAME, "
    "convert(sysname, col_name(c.parent_object_id, c.parent_column_id)) AS FKCOLUMN_NAME, "
    "convert(smallint, c.constraint_column_id) AS KEY_SEQ, convert(smallint, CASE r.UPDATE_RULE "
    "WHEN 'CASCADE' THEN 0 WHEN 'SET NULL' THEN 2 WHEN 'SET DEFAULT' THEN 3 ELSE 1 END) AS "
    "UPDATE_RULE, convert(smallint, CASE r.DELETE_RULE WHEN 'CASCADE' THEN 0 WHEN 'SET NULL' THEN "
    "2 WHEN 'SET DEFAULT' THEN 3 ELSE 1 END) AS DELETE_RULE, convert(sysname, f.name) AS FK_NAME, "
    "convert(sysname, r.UNIQUE_CONSTRAINT_NAME) AS PK_NAME, convert(smallint, 7) AS DEFERRABILITY "
    "FROM sys.foreign_key_columns c JOIN sys.foreign_keys f ON f.object_id = "
    "c.constraint_object_id JOIN INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS r ON "
    "r.CONSTRAINT_NAME = f.name AND r.CONSTRAINT_SCHEMA = schema_name(f.schema_id) WHERE (@pk IS "
    "NULL OR object_name(c.referenced_object_id) = @pk) AND (@pkowner IS NULL OR "
    "object_schema_name(c.referenced_object_id) = @pkowner) AND (@fk IS NULL OR "
    "object_name(c.parent_object_id) = @fk) AND (@fkowner IS NULL OR "
    "object_schema_name(c.parent_object_id) = @fkowner) ORDER BY 5, 6, 7, KEY_SEQ";

// The first row is of the table, and has no index.
constexpr const char* kStatistics =
    "SELECT convert(sysname, db_name()) AS TABLE_QUALIFIER, convert(sysname, "
    "object_schema_name(i.object_id)) AS TABLE_OWNER, convert(sysname, object_name(i.object_id)) "
    "AS TABLE_NAME, convert(smallint, 1 - i.is_unique) AS NON_UNIQUE, convert(sysname, "
    "object_name(i.object_id)) AS INDEX_QUALIFIER, convert(sysname, i.name) AS INDEX_NAME, "
    "convert(smallint, CASE i.type WHEN 1 THEN 1 ELSE 3 END) AS TYPE, convert(smallint, "
    "k.key_ordinal) AS SEQ_IN_INDEX, convert(sysname, col_name(k.object_id, k.column_id)) AS "
    "COLUMN_NAME, convert(char(1), CASE k.is_descending_key WHEN 1 THEN 'D' ELSE 'A' END) AS "
    "COLLATION, convert(int, NULL) AS CARDINALITY, convert(int, NULL) AS PAGES, "
    "convert(varchar(128), i.filter_definition) AS FILTER_CONDITION FROM sys.indexes i JOIN "
    "sys.index_columns k ON k.object_id = i.object_id AND k.index_id = i.index_id AND "
    "k.is_included_column = 0 WHERE object_name(i.object_id) = @name AND (@owner IS NULL OR "
    "object_schema_name(i.object_id) = @owner) AND (@index IS NULL OR i.name LIKE @index) AND "
    "(@unique IS NULL OR @unique <> 'Y' OR i.is_unique = 1) UNION ALL SELECT db_name(), "
    "schema_name(t.schema_id), t.name, NULL, NULL, NULL, 0, NULL, NULL, NULL, NULL, NULL, NULL "
    "FROM sys.tables t WHERE t.name = @name AND (@owner IS NULL OR schema_name(t.schema_id) = "
    "@owner) ORDER BY NON_UNIQUE, TYPE, INDEX_NAME, SEQ_IN_INDEX";

constexpr const char* kStoredProcedures =
    "SELECT convert(sysname, db_name()) AS PROCEDURE_QUALIFIER, convert(sysname, "
    "schema_name(o.schema_id)) AS PROCEDURE_OWNER, convert(nvarchar(134), o.name + CASE o.type "
    "WHEN 'P' THEN ';1' ELSE ';0' END) AS PROCEDURE_NAME, convert(int, -1) AS NUM_INPUT_PARAMS, "
    "convert(int, -1) AS NUM_OUTPUT_PARAMS, convert(int, -1) AS NUM_RESULT_SETS, "
    "convert(varchar(254), NULL) AS REMARKS, convert(smallint, 2) AS PROCEDURE_TYPE FROM "
    "sys.objects o WHERE o.type IN ('P', 'FN', 'IF', 'TF') AND (@name IS NULL OR o.name LIKE "
    "@name) "
    "AND (@owner IS NULL OR schema_name(o.schema_id) LIKE @owner) ORDER BY 1, 2, 3";

constexpr const char* kWho =
    "SELECT session_id AS spid, convert(smallint, 0) AS ecid, convert(nchar(30), status) AS "
    "status, "
    "login_name AS loginame, host_name AS hostname, convert(char(5), '0') AS blk, db_name() AS "
    "dbname, convert(nchar(16), 'SELECT') AS cmd, convert(int, 0) AS request_id FROM "
    "sys.dm_exec_sessions WHERE @login IS NULL OR @login = 'active' OR login_name = @login OR "
    "convert(nvarchar(10), session_id) = @login";

// The own session uses its database; who else waits or writes is known to the file's locks alone.
constexpr const char* kLock =
    "SELECT session_id AS spid, convert(smallint, db_id()) AS dbid, convert(int, 0) AS ObjId, "
    "convert(smallint, 0) AS IndId, convert(nchar(4), 'DB') AS Type, convert(nchar(32), '') AS "
    "Resource, convert(nvarchar(8), 'S') AS Mode, convert(nvarchar(5), 'GRANT') AS Status FROM "
    "sys.dm_exec_sessions WHERE @first IS NULL OR session_id IN (convert(int, @first), "
    "convert(int, @second))";

const CatalogueProcedure* findProcedure(std::string_view name) {
    static const std::array kProcedures = std::to_array<CatalogueProcedure>({
        {"sp_tables", kTables, {{"@table_name", "@name"}, {"@table_owner", "@owner"}}, false},
        {"sp_columns",
         kColumns,
         {{"@table_name", "@name"},
          {"@table_owner", "@owner"},
          {"@table_qualifier", "@qualifier"},
          {"@column_name", "@column"}},
         true},
        {"sp_databases", kDatabases, {}, false},
        {"sp_fkeys",
         kForeignKeys,
         {{"@pktable_name", "@pk"},
          {"@pktable_owner", "@pkowner"},
          {"@pktable_qualifier", "@pkqualifier"},
          {"@fktable_name", "@fk"},
          {"@fktable_owner", "@fkowner"},
          {"@fktable_qualifier", "@fkqualifier"}},
         true},
        {"sp_statistics",
         kStatistics,
         {{"@table_name", "@name"},
          {"@table_owner", "@owner"},
          {"@table_qualifier", "@qualifier"},
          {"@index_name", "@index"},
          {"@is_unique", "@unique"},
          {"@accuracy", "@accuracy"}},
         true},
        {"sp_stored_procedures",
         kStoredProcedures,
         {{"@sp_name", "@name"}, {"@sp_owner", "@owner"}, {"@sp_qualifier", "@qualifier"}},
         false},
        {"sp_lock", kLock, {{"@spid1", "@first"}, {"@spid2", "@second"}}, false},
        {"sp_who", kWho, {{"@loginame", "@login"}}, false},
        {"sp_pkeys", kPrimaryKeys, {{"@table_name", "@name"}, {"@table_owner", "@owner"}}, true},
    });
    const auto* const found = std::ranges::find(kProcedures, name, &CatalogueProcedure::name);
    if (found != kProcedures.end()) return found;
    const auto help = std::ranges::find(helpProcedures(), name, &CatalogueProcedure::name);
    return help == helpProcedures().end() ? nullptr : &*help;
}

}  // namespace

bool ScriptRunner::executeCatalogue(Frame& frame, Instruction& instruction,
                                    const tsql::ExecuteStatement& node, const std::string& name,
                                    std::vector<ado::Result>& results) {
    const CatalogueProcedure* procedure = findProcedure(name);
    if (procedure == nullptr) return false;
    const std::vector<std::string> texts = textArguments(frame, instruction, node);
    std::vector<std::string> values(procedure->parameters.size(), "NULL");
    for (std::size_t i = 0; i < texts.size(); ++i) {
        std::size_t place = i;
        for (std::size_t j = 0; !node.arguments[i].name.empty() && j < values.size(); ++j) {
            if (sameName(procedure->parameters[j].first, node.arguments[i].name)) place = j;
        }
        if (place >= values.size()) {
            throw tsql::ServerError(tsql::Message::TooManyArguments, {name}, instruction.line);
        }
        if (!texts[i].empty()) values[place] = "N" + sqlText(texts[i]);
    }
    if (procedure->needsFirst && texts.empty()) {
        throw tsql::ServerError(tsql::Message::ParameterNotSupplied,
                                {name, procedure->parameters.front().first}, instruction.line);
    }
    if (procedure->asksOfObject && !texts.empty() &&
        isNull(idOfObject(catalogue_, texts.front(), ""))) {
        throw tsql::ServerError(tsql::Message::NoSuchObject,
                                {texts.front(), catalogue_.databaseName()}, instruction.line);
    }
    std::string declared;
    for (std::size_t i = 0; i < values.size(); ++i) {
        declared += std::string(declared.empty() ? "DECLARE " : ", ") +
                    procedure->parameters[i].second + " nvarchar(384) = " + values[i];
    }
    executeText(declared + " " + procedure->query, instruction.line, results);
    return true;
}

}  // namespace kap::engine

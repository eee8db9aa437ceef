#include "engine/script/catalogue_procedures.hpp"

// sp_help and its kin: what people ask about one object. Their answers are queries of the views by
// which the database describes itself.
namespace kap::engine {
namespace {

constexpr const char* kObjects =
    "SELECT o.name AS Name, schema_name(o.schema_id) AS Owner, convert(varchar(20), CASE o.type "
    "WHEN 'U' THEN 'user table' WHEN 'V' THEN 'view' WHEN 'P' THEN 'stored procedure' WHEN 'FN' "
    "THEN 'scalar function' WHEN 'IF' THEN 'inline function' WHEN 'TF' THEN 'table function' WHEN "
    "'TR' THEN 'trigger' END) AS Object_type FROM sys.objects o WHERE o.type IN ('U', 'V', 'P', "
    "'FN', 'IF', 'TF', 'TR') ORDER BY 2, 3 DESC, 1";

constexpr const char* kIndexQuery =
    "SELECT i.name AS index_name, convert(varchar(210), CASE i.type WHEN 1 THEN 'clustered' ELSE "
    "'nonclustered' END + CASE WHEN i.ignore_dup_key = 1 THEN ', ignore duplicate keys' ELSE '' "
    "END "
    "+ CASE WHEN i.is_unique = 1 THEN ', unique' ELSE '' END + CASE WHEN "
    "i.is_primary_key = 1 THEN ', primary key' ELSE '' END + CASE WHEN i.is_unique_constraint = 1 "
    "THEN ', unique key' ELSE '' END + ' located on PRIMARY') AS index_description, "
    "convert(nvarchar(2078), (SELECT STRING_AGG(c.name + CASE WHEN k.is_descending_key = 1 THEN "
    "'(-)' ELSE '' END, ', ') WITHIN GROUP (ORDER BY k.key_ordinal) FROM sys.index_columns k JOIN "
    "sys.columns c ON c.object_id = k.object_id AND c.column_id = k.column_id WHERE k.object_id = "
    "i.object_id AND k.index_id = i.index_id AND k.is_included_column = 0)) AS index_keys FROM "
    "sys.indexes i WHERE i.object_id "
    "= object_id(@name) ORDER BY i.name";

constexpr const char* kConstraintQuery =
    "SELECT convert(nvarchar(146), CASE c.CONSTRAINT_TYPE WHEN 'PRIMARY KEY' THEN 'PRIMARY KEY "
    "(clustered)' WHEN 'UNIQUE' THEN 'UNIQUE (non-clustered)' WHEN 'CHECK' THEN 'CHECK Table "
    "Level' ELSE c.CONSTRAINT_TYPE END) AS constraint_type, c.CONSTRAINT_NAME AS constraint_name, "
    "convert(nvarchar(9), CASE WHEN r.DELETE_RULE IS NULL THEN '(n/a)' ELSE r.DELETE_RULE END) AS "
    "delete_action, convert(nvarchar(9), CASE WHEN r.UPDATE_RULE IS NULL THEN '(n/a)' ELSE "
    "r.UPDATE_RULE END) AS update_action, convert(nvarchar(2126), isnull(k.CHECK_CLAUSE, (SELECT "
    "STRING_AGG(u.COLUMN_NAME, ', ') WITHIN GROUP (ORDER BY u.ORDINAL_POSITION) FROM "
    "INFORMATION_SCHEMA.KEY_COLUMN_USAGE u WHERE u.CONSTRAINT_SCHEMA = c.CONSTRAINT_SCHEMA AND "
    "u.CONSTRAINT_NAME = c.CONSTRAINT_NAME AND u.TABLE_NAME = c.TABLE_NAME))) AS constraint_keys "
    "FROM INFORMATION_SCHEMA.TABLE_CONSTRAINTS c LEFT JOIN "
    "INFORMATION_SCHEMA.REFERENTIAL_CONSTRAINTS r ON r.CONSTRAINT_SCHEMA = c.CONSTRAINT_SCHEMA AND "
    "r.CONSTRAINT_NAME = c.CONSTRAINT_NAME LEFT JOIN INFORMATION_SCHEMA.CHECK_CONSTRAINTS k ON "
    "k.CONSTRAINT_SCHEMA = c.CONSTRAINT_SCHEMA AND k.CONSTRAINT_NAME = c.CONSTRAINT_NAME WHERE "
    "c.TABLE_SCHEMA = object_schema_name(object_id(@name)) AND c.TABLE_NAME = "
    "object_name(object_id(@name)) UNION ALL SELECT 'DEFAULT on column ' + "
    "col_name(d.parent_object_id, "
    "d.parent_column_id), d.name, '(n/a)', '(n/a)', d.definition FROM sys.default_constraints d "
    "WHERE d.parent_object_id = object_id(@name) ORDER BY 1, 2";

constexpr const char* kTriggerQuery =
    "SELECT t.name AS trigger_name, convert(sysname, 'dbo') AS trigger_owner, "
    "objectproperty(t.object_id, 'ExecIsUpdateTrigger') AS isupdate, objectproperty(t.object_id, "
    "'ExecIsDeleteTrigger') AS isdelete, objectproperty(t.object_id, 'ExecIsInsertTrigger') AS "
    "isinsert, objectproperty(t.object_id, 'ExecIsAfterTrigger') AS isafter, "
    "objectproperty(t.object_id, 'ExecIsInsteadOfTrigger') AS isinsteadof, "
    "object_schema_name(t.object_id) AS trigger_schema FROM sys.triggers t WHERE t.parent_id = "
    "object_id(@name) ORDER BY 1";

// What the object names, and who names it.
constexpr const char* kDependsQuery =
    "IF EXISTS (SELECT * FROM sys.sql_expression_dependencies WHERE referencing_id = "
    "object_id(@name)) SELECT convert(nvarchar(257), d.referenced_schema_name + '.' + "
    "d.referenced_entity_name) AS name, convert(nvarchar(60), lower(replace(replace(o.type_desc, "
    "'SQL_', "
    "''), '_', ' '))) AS type FROM sys.sql_expression_dependencies d JOIN sys.objects o ON "
    "o.object_id = "
    "d.referenced_id WHERE d.referencing_id = object_id(@name) ORDER BY 1 IF EXISTS (SELECT * FROM "
    "sys.sql_expression_dependencies WHERE referenced_id = object_id(@name)) SELECT "
    "convert(nvarchar(257), object_schema_name(d.referencing_id) + '.' + "
    "object_name(d.referencing_id)) AS name, convert(nvarchar(60), "
    "lower(replace(replace(o.type_desc, 'SQL_', "
    "''), '_', ' '))) AS type FROM sys.sql_expression_dependencies d JOIN sys.objects o ON "
    "o.object_id = "
    "d.referencing_id WHERE d.referenced_id = object_id(@name) ORDER BY 1 IF NOT EXISTS (SELECT * "
    "FROM sys.sql_expression_dependencies WHERE object_id(@name) IN (referencing_id, "
    "referenced_id)) PRINT 'Object does not reference any object, and no objects reference it.'";

std::string helpOfOne() {
    return std::string(
               "SELECT o.name AS Name, schema_name(o.schema_id) AS Owner, convert(varchar(20), "
               "CASE o.type WHEN 'U' THEN 'user table' WHEN 'V' THEN 'view' WHEN 'P' THEN 'stored "
               "procedure' WHEN 'FN' THEN 'scalar function' WHEN 'IF' THEN 'inline function' WHEN "
               "'TF' THEN 'table function' WHEN 'TR' THEN 'trigger' ELSE 'constraint' END) AS Type "
               "FROM sys.objects o WHERE o.object_id = object_id(@name) IF objectproperty("
               "object_id(@name), 'IsTable') = 1 BEGIN SELECT c.COLUMN_NAME AS Column_name, "
               "c.DATA_TYPE AS Type, convert(varchar(3), CASE columnproperty(object_id(@name), "
               "c.COLUMN_NAME, 'IsComputed') WHEN 1 THEN 'yes' ELSE 'no' END) AS Computed, "
               "col_length(@name, c.COLUMN_NAME) AS Length, convert(varchar(5), "
               "isnull(convert(varchar(5), c.NUMERIC_PRECISION), '')) AS Prec, convert(varchar(5), "
               "isnull(convert(varchar(5), c.NUMERIC_SCALE), '')) AS Scale, convert(varchar(3), "
               "lower(c.IS_NULLABLE)) AS Nullable, c.COLLATION_NAME AS Collation FROM "
               "INFORMATION_SCHEMA.COLUMNS c WHERE "
               "c.TABLE_SCHEMA = object_schema_name(object_id(@name)) AND c.TABLE_NAME = "
               "object_name(object_id(@name)) ORDER BY c.ORDINAL_POSITION SELECT i.name AS "
               "[Identity], i.seed_value AS Seed, i.increment_value AS Increment FROM "
               "sys.identity_columns i WHERE i.object_id = object_id(@name) ") +
           kIndexQuery + " " + kConstraintQuery +
           " END ELSE IF objectproperty(object_id(@name), 'IsConstraint') = 0 SELECT "
           "p.PARAMETER_NAME AS Parameter_name, p.DATA_TYPE AS Type, p.CHARACTER_MAXIMUM_LENGTH AS "
           "Length, p.NUMERIC_PRECISION AS Prec, p.NUMERIC_SCALE AS Scale, p.ORDINAL_POSITION AS "
           "Param_order FROM INFORMATION_SCHEMA.PARAMETERS p WHERE p.SPECIFIC_SCHEMA = "
           "object_schema_name(object_id(@name)) AND p.SPECIFIC_NAME = object_name("
           "object_id(@name)) ORDER BY p.ORDINAL_POSITION";
}

std::string help() {
    return std::string("IF @name IS NULL ") + kObjects + " ELSE BEGIN " + helpOfOne() + " END";
}

}  // namespace

const std::vector<CatalogueProcedure>& helpProcedures() {
    static const std::vector<CatalogueProcedure> kProcedures{
        {"sp_help", help(), {{"@objname", "@name"}}, false, true},
        {"sp_helpindex", kIndexQuery, {{"@objname", "@name"}}, true, true},
        {"sp_helpconstraint", kConstraintQuery, {{"@objname", "@name"}}, true, true},
        {"sp_depends", kDependsQuery, {{"@objname", "@name"}}, true, true},
        {"sp_helptrigger", kTriggerQuery, {{"@tabname", "@name"}}, true, true},
    };
    return kProcedures;
}

}  // namespace kap::engine

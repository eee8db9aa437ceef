#include "engine/catalog/object_properties.hpp"

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/catalog/index_properties.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/view_rows.hpp"
#include "tsql/parser.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {
namespace {

using tsql::SqlType;
using tsql::TypeSpec;
using views::flag;
using views::number;

bool contains(std::initializer_list<std::string_view> names, std::string_view wanted) {
    return std::ranges::find(names, wanted) != names.end();
}

// What is asked of every object, by the two letters of its kind.
std::optional<bool> ofKind(std::string_view type, std::string_view wanted) {
    static constexpr std::pair<std::string_view, std::string_view> kKinds[] = {
        {"isusertable", "U "},  {"istable", "U "},          {"isview", "V "},
        {"isprocedure", "P "},  {"isscalarfunction", "FN"}, {"istrigger", "TR"},
        {"isprimarykey", "PK"}, {"isuniquecnst", "UQ"},     {"isforeignkey", "F "},
        {"ischeckcnst", "C "},  {"isdefaultcnst", "D "},
    };
    for (const auto& [property, kind] : kKinds) {
        if (wanted == property) return type == kind;
    }
    if (wanted == "isconstraint") {
        return type == "PK" || type == "UQ" || type == "F " || type == "C " || type == "D ";
    }
    const bool returnsTable = type == "IF" || type == "TF";
    if (wanted == "istablefunction") return returnsTable;
    if (wanted == "isinlinefunction") return type == "IF";
    if (wanted == "isexecuted") {
        return type == "P " || type == "FN" || returnsTable || type == "TR" || type == "V ";
    }
    if (contains({"isextendedproc", "isreplproc", "issystemtable", "ismsshipped", "isdefault",
                  "isrule", "isqueue", "isencrypted"},
                 wanted)) {
        return false;
    }
    return std::nullopt;
}

std::optional<bool> ofTriggers(const SchemaCatalogue& catalogue, const Table& table,
                               std::string_view wanted) {
    static constexpr std::pair<std::string_view, tsql::TriggerEvents> kEvents[] = {
        {"tablehasinserttrigger", tsql::kOnInsert},
        {"tablehasupdatetrigger", tsql::kOnUpdate},
        {"tablehasdeletetrigger", tsql::kOnDelete},
        {"tablehasaftertrigger", tsql::kOnInsert | tsql::kOnUpdate | tsql::kOnDelete}};
    if (wanted == "tablehasinsteadoftrigger") return table.insteadOfEvents != 0;
    for (const auto& one : kEvents) {
        if (wanted != one.first) continue;
        return std::ranges::any_of(catalogue.triggersOf(table.name), [&](const auto& trigger) {
            return !trigger->definition.insteadOf && (trigger->definition.events & one.second) != 0;
        });
    }
    return std::nullopt;
}

std::optional<bool> ofConstraints(const SchemaCatalogue& catalogue, const Table& table,
                                  std::string_view wanted) {
    static constexpr std::pair<std::string_view, std::string_view> kKinds[] = {
        {"tablehasprimarykey", "PK"},
        {"tablehasuniquecnst", "UQ"},
        {"tablehasforeignkey", "F "},
        {"tablehascheckcnst", "C "},
        {"tablehasdefaultcnst", "D "}};
    const std::vector<ConstraintInfo> constraints = catalogue.constraints();
    for (const auto& one : kKinds) {
        if (wanted != one.first) continue;
        return std::ranges::any_of(constraints, [&](const ConstraintInfo& each) {
            return each.type == one.second && sameName(each.table, table.name);
        });
    }
    if (wanted == "tablehasforeignref") {
        return std::ranges::any_of(constraints, [&](const ConstraintInfo& each) {
            return !each.parent.empty() && sameName(each.parent, table.name);
        });
    }
    return std::nullopt;
}

std::optional<bool> ofIndexes(const SchemaCatalogue& catalogue, const Table& table,
                              std::string_view wanted) {
    const auto any = [&](const std::function<bool(std::int64_t)>& fits) {
        return std::ranges::any_of(numberedIndexes(catalogue), [&](const NumberedIndex& each) {
            return sameName(each.index.table, table.name) && fits(each.number);
        });
    };
    if (contains({"tablehasindex", "isindexed"}, wanted)) {
        return any([](std::int64_t) { return true; });
    }
    if (wanted == "tablehasclustindex") return any([](std::int64_t id) { return id == 1; });
    if (wanted == "tablehasnonclustindex") return any([](std::int64_t id) { return id != 1; });
    if (wanted == "isindexable") return true;
    return std::nullopt;
}

std::optional<bool> ofTable(const SchemaCatalogue& catalogue, const Table& table,
                            std::string_view wanted) {
    const auto anyColumn = [&](const std::function<bool(const Column&)>& fits) {
        return std::ranges::any_of(table.columns, fits);
    };
    if (wanted == "tablehasidentity") {
        return anyColumn([](const Column& column) { return column.identity.has_value(); });
    }
    if (wanted == "tablehastimestamp") {
        return anyColumn([](const Column& column) { return column.isRowVersion(); });
    }
    if (wanted == "tablehastextimage") {
        return anyColumn([](const Column& column) {
            return contains({"text", "ntext", "image"}, tsql::typeName(column.type.type)) ||
                   column.type.length == tsql::kMaxLength;
        });
    }
    if (contains({"isansinullson", "isquotedidenton"}, wanted)) return true;
    if (contains(
            {"tableisfake", "tablehasactivefulltextindex", "tablehasrowguidcol", "tableispinned"},
            wanted)) {
        return false;
    }
    for (const auto& group : {ofTriggers, ofConstraints, ofIndexes}) {
        if (const auto answer = group(catalogue, table, wanted)) return answer;
    }
    return std::nullopt;
}

std::optional<bool> ofModule(const SchemaCatalogue& catalogue, const StoredObject& object,
                             std::string_view wanted) {
    if (contains({"execisquotedidenton", "isquotedidenton"}, wanted)) return object.quotedNames;
    if (contains({"execisansinullson", "isansinullson"}, wanted)) return true;
    if (wanted == "execisstartup") return false;
    if (object.kind != StoredKind::Trigger) return std::nullopt;
    if (wanted == "execistriggerdisabled") return !object.enabled;
    static constexpr std::pair<std::string_view, tsql::TriggerEvents> kEvents[] = {
        {"execisinserttrigger", tsql::kOnInsert},
        {"execisupdatetrigger", tsql::kOnUpdate},
        {"execisdeletetrigger", tsql::kOnDelete}};
    const auto module = catalogue.findModule(StoredKind::Trigger, object.name);
    const bool insteadOf = module != nullptr && module->definition.insteadOf;
    if (wanted == "execisaftertrigger") return !insteadOf;
    if (wanted == "execisinsteadoftrigger") return insteadOf;
    for (const auto& [property, event] : kEvents) {
        if (wanted == property) return module && (module->definition.events & event) != 0;
    }
    return std::nullopt;
}

std::optional<bool> ofConstraint(const ConstraintInfo& constraint, std::string_view wanted) {
    if (wanted == "cnstisdisabled" || wanted == "cnstisnottrusted") return !constraint.enabled;
    if (wanted == "cnstisdeletecascade") return constraint.onDelete == "CASCADE";
    if (wanted == "cnstisupdatecascade") return constraint.onUpdate == "CASCADE";
    if (wanted == "cnstiscolumn") return constraint.columns.size() == 1;
    if (wanted == "cnstisclustkey") return std::string_view(constraint.type) == "PK";
    if (wanted == "cnstisnonclustkey") return std::string_view(constraint.type) == "UQ";
    if (wanted == "cnstisnotrepl") return false;
    return std::nullopt;
}

Value flagOf(const std::optional<bool>& answer) {
    return answer ? flag(*answer) : Value();
}

// The answer for whatever has that number, with its kind; nothing when there is none.
struct Described {
    std::string kind;
    Value answer;
};

std::optional<Described> described(const SchemaCatalogue& catalogue, std::int64_t id,
                                   const std::string& wanted) {
    const auto answer = [&](std::string_view name, std::string_view kind,
                            const std::optional<bool>& own) {
        if (wanted == "ownerid") return Described{std::string(kind), number(1)};
        if (wanted == "schemaid") {
            return Described{std::string(kind), views::schemaNumber(catalogue, name)};
        }
        const std::optional<bool> general = ofKind(kind, wanted);
        return Described{std::string(kind), flagOf(general ? general : own)};
    };
    for (const Table* table : catalogue.tables()) {
        if (objectId(table->name) == id) {
            return answer(table->name, "U ", ofTable(catalogue, *table, wanted));
        }
    }
    for (const StoredObject& object : catalogue.objects()) {
        if (!hasTableName(object.kind) || objectId(object.name) != id) continue;
        return answer(object.name, objectType(catalogue, object),
                      ofModule(catalogue, object, wanted));
    }
    for (const ConstraintInfo& constraint : catalogue.constraints()) {
        const std::string own = storedName(constraint);
        if (objectId(own) != id) continue;
        return answer(own, constraint.type, ofConstraint(constraint, wanted));
    }
    return std::nullopt;
}

// The digits of a type, or the characters of a text.
Value precision(const TypeSpec& type) {
    const bool digits = tsql::isNumber(type.type) || tsql::isDate(type.type);
    return number(digits ? tsql::precisionOf(type) : type.length);
}

Value scale(const TypeSpec& type) {
    const bool digits = tsql::isExact(type.type) || tsql::isDate(type.type);
    return digits ? number(tsql::scaleOf(type)) : Value();
}

bool usesPadding(const TypeSpec& type) {
    return tsql::isText(type.type) || tsql::isBinary(type.type);
}

Value ofColumn(const Table& table, const Column& column, std::string_view wanted) {
    if (wanted == "isidentity") return flag(column.identity.has_value());
    if (wanted == "allowsnull") return flag(column.nullable);
    if (wanted == "iscomputed") return flag(column.computed);
    if (wanted == "columnid") return number(&column - table.columns.data() + 1);
    if (wanted == "precision") return precision(column.type);
    if (wanted == "scale") return scale(column.type);
    if (wanted == "charmaxlen") {
        return tsql::isText(column.type.type) ? number(column.type.length) : Value();
    }
    if (wanted == "usesansitrim") return usesPadding(column.type) ? flag(true) : Value();
    if (wanted == "isindexable") {
        return flag(column.type.length != tsql::kMaxLength &&
                    !contains({"text", "ntext", "image"}, tsql::typeName(column.type.type)));
    }
    if (wanted == "isprecise") return flag(!tsql::isApproximate(column.type.type));
    if (contains({"isrowguidcol", "isidnotforrepl", "isfulltextindexed", "isxmlindexable",
                  "issparse", "iscolumnset", "isoutparam", "iscursortype", "userdataaccess",
                  "systemdataaccess", "isdeterministic", "issystemverified"},
                 wanted)) {
        return flag(false);
    }
    return {};
}

Value ofParameter(const tsql::ParameterDefinition& parameter, std::int64_t place,
                  std::string_view wanted) {
    if (wanted == "isoutparam") return flag(parameter.output);
    if (wanted == "columnid") return number(place);
    if (wanted == "allowsnull") return flag(true);
    if (wanted == "precision") return precision(parameter.type);
    if (wanted == "scale") return scale(parameter.type);
    if (wanted == "usesansitrim") return usesPadding(parameter.type) ? flag(true) : Value();
    if (contains({"iscursortype", "isidentity", "iscomputed"}, wanted)) return flag(false);
    return {};
}

}  // namespace

Value objectProperty(const SchemaCatalogue& catalogue, std::int64_t id,
                     const std::string& property) {
    const auto found = described(catalogue, id, asciiLower(property));
    return found ? found->answer : Value();
}

Value objectPropertyEx(const SchemaCatalogue& catalogue, std::int64_t id,
                       const std::string& property) {
    const std::string wanted = asciiLower(property);
    const auto found = described(catalogue, id, wanted);
    if (!found) return {};
    if (wanted == "basetype") return found->kind;
    return std::holds_alternative<std::int64_t>(found->answer) ? found->answer : Value();
}

Value columnProperty(const SchemaCatalogue& catalogue, std::int64_t object,
                     const std::string& column, const std::string& property) {
    const std::string wanted = asciiLower(property);
    for (const Table* table : catalogue.tables()) {
        if (objectId(table->name) != object) continue;
        const Column* own = table->find(column);
        return own == nullptr ? Value() : ofColumn(*table, *own, wanted);
    }
    for (const StoredObject& stored : catalogue.objects()) {
        const bool takes =
            stored.kind == StoredKind::Procedure || stored.kind == StoredKind::Function;
        if (!takes || objectId(stored.name) != object) continue;
        const auto module = catalogue.findModule(stored.kind, stored.name);
        std::int64_t place = 0;
        for (const tsql::ParameterDefinition& parameter : module->definition.parameters) {
            ++place;
            if (sameName(parameter.name, column)) return ofParameter(parameter, place, wanted);
        }
    }
    return {};
}

Value typeProperty(const SchemaCatalogue& catalogue, const std::string& type,
                   const std::string& property) {
    tsql::ObjectName name;
    try {
        name = tsql::parseObjectName(type);
    } catch (const tsql::ServerError&) {
        return {};  // no name, so there is no such type
    }
    bool nullable = true;
    TypeSpec found;
    if (const auto alias = catalogue.aliasType(name)) {
        found = alias->type;
        nullable = alias->nullable;
    } else {
        try {
            found = tsql::parseType(name.last());
        } catch (const tsql::ServerError&) {
            return {};  // there is no such type
        }
        // Without a length the server means the longest.
        constexpr int kLongest = 8000;
        constexpr int kMostDigits = 38;
        if (usesPadding(found) && found.length > 0 && found.type != SqlType::Timestamp) {
            found.length = tsql::isNational(found.type) ? kLongest / 2 : kLongest;
        }
        if (tsql::isDecimal(found.type)) found.precision = found.scale = kMostDigits;
    }
    const std::string wanted = asciiLower(property);
    if (wanted == "precision") return precision(found);
    if (wanted == "scale") return scale(found);
    if (wanted == "allowsnull") return flag(nullable);
    if (wanted == "usesansitrim") return usesPadding(found) ? flag(true) : Value();
    if (wanted == "ownerid") return number(1);
    return {};
}

}  // namespace kap::engine

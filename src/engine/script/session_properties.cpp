#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "engine/catalog/index_properties.hpp"
#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/object_properties.hpp"
#include "engine/catalog/server_identity.hpp"
#include "engine/executor/function_arguments.hpp"
#include "engine/script/session_functions.hpp"

// What kap_system tells of properties: of the database, the session, indexes, types and collations.
namespace kap::engine {

namespace {

using Flag = std::pair<std::string_view, std::int64_t>;

Value flagNamed(std::span<const Flag> flags, std::string_view wanted) {
    const auto found = std::ranges::find(flags, wanted, &Flag::first);
    return found == flags.end() ? Value() : Value(found->second);
}

// What is yes or no about the database.
Value databaseFlag(std::string_view wanted) {
    static constexpr auto kFlags = std::to_array<Flag>({
        {"isansinulldefault", 1},
        {"isansinullsenabled", 1},
        {"isansipaddingenabled", 1},
        {"isansiwarningsenabled", 1},
        {"isarithmeticabortenabled", 1},
        {"isautoclose", 0},
        {"isautocreatestatistics", 1},
        {"isautoshrink", 0},
        {"isautoupdatestatistics", 1},
        {"isbulkcopy", 0},
        {"isclosecursorsoncommitenabled", 0},
        {"isdboonly", 0},
        {"isdetached", 0},
        {"isemergencymode", 0},
        {"isfulltextenabled", 0},
        {"isinload", 0},
        {"isinrecovery", 0},
        {"isinstandby", 0},
        {"islocalcursorsdefault", 0},
        {"ismergepublished", 0},
        {"isnotrecovered", 0},
        {"isnullconcat", 1},
        {"isnumericroundabortenabled", 0},
        {"isoffline", 0},
        {"isparameterizationforced", 0},
        {"ispublished", 0},
        {"isquotedidentifiersenabled", 1},
        {"isreadonly", 0},
        {"isrecursivetriggersenabled", 0},
        {"isshutdown", 0},
        {"issingleuser", 0},
        {"issubscribed", 0},
        {"issuspect", 0},
        {"issyncwithbackup", 0},
        {"istornpagedetectionenabled", 0},
        {"istruncatelog", 0},
    });
    return flagNamed(kFlags, wanted);
}

// DATABASEPROPERTYEX: names, numbers, and what is yes or no.
Value databaseProperty(std::string_view wanted) {
    static constexpr std::pair<std::string_view, const char*> kTexts[] = {
        {"collation", kDatabaseCollation}, {"recovery", "FULL"},         {"status", "ONLINE"},
        {"updateability", "READ_WRITE"},   {"useraccess", "MULTI_USER"},
    };
    static constexpr auto kNumbers = std::to_array<Flag>({
        {"comparisonstyle", 196609},
        {"lcid", 1033},
        {"sqlsortorder", 0},
        {"version", 661},
    });
    for (const auto& [property, answer] : kTexts) {
        if (property == wanted) return std::string(answer);
    }
    Value number = flagNamed(kNumbers, wanted);
    return isNull(number) ? databaseFlag(wanted) : number;
}

// Of any collation that a server knows.
Value collationProperty(const std::string& collation, std::string_view wanted) {
    static constexpr auto kProperties =
        std::to_array<Flag>({{"codepage", 1252}, {"lcid", 1033}, {"version", 0}});
    const auto style = comparisonStyle(collation);
    if (!style) return {};
    return wanted == "comparisonstyle" ? Value(std::int64_t{*style})
                                       : flagNamed(kProperties, wanted);
}

Value givenOnly(const Value& value, bool there) {
    return there ? value : Value();
}

}  // namespace

Value SessionFunctions::sessionProperty(const std::string& property) const {
    static constexpr auto kSteady = std::to_array<Flag>({
        {"ansi_nulls", 1},
        {"ansi_padding", 1},
        {"ansi_warnings", 1},
        {"arithabort", 1},
        {"concat_null_yields_null", 1},
        {"numeric_roundabort", 0},
    });
    const std::string wanted = asciiLower(property);
    if (wanted == "quoted_identifier") return std::int64_t{state_.quotedNames ? 1 : 0};
    return flagNamed(kSteady, wanted);
}

Value SessionFunctions::ofProperties(SystemValue value, const Arguments& arguments) const {
    constexpr std::int64_t kEnglish = 0;
    constexpr std::int64_t kItalian = 6;
    const auto number = [&](std::size_t index) { return wholeAt(arguments, index); };
    const auto text = [&](std::size_t index) { return textAt(arguments, index); };
    const bool ownDatabase = sameName(text(1), catalogue_.databaseName());
    switch (value) {
        case SystemValue::LanguageNumber:
            return state_.dates.italian ? kItalian : kEnglish;
        case SystemValue::TextSize:
            return state_.textSize;
        case SystemValue::ContextInfo:
            return state_.context ? Value(*state_.context) : Value();
        case SystemValue::SessionContext: {
            const auto kept = state_.sessionContext.find(text(1));
            return kept == state_.sessionContext.end() ? Value() : kept->second.value;
        }
        case SystemValue::HostProcess:
            return hostProcess();
        case SystemValue::ObjectSchema: {
            const auto name = storedNameOf(catalogue_, number(1));
            return name ? Value(std::string(schemaOf(*name))) : Value();
        }
        case SystemValue::ObjectPropertyEx:
            return objectPropertyEx(catalogue_, number(1), text(2));
        case SystemValue::IndexColumn:
            return indexColumn(catalogue_, text(1), number(2), number(3));
        case SystemValue::IndexKeyProperty:
            return indexKeyProperty(catalogue_, number(1), number(2), number(3), text(4));
        case SystemValue::IndexProperty:
            return indexProperty(catalogue_, number(1), text(2), text(3));
        case SystemValue::TypeProperty:
            return typeProperty(catalogue_, text(1), text(2));
        case SystemValue::DatabaseProperty:
            return givenOnly(databaseProperty(asciiLower(text(2))), ownDatabase);
        case SystemValue::DatabaseFlag:
            return givenOnly(databaseFlag(asciiLower(text(2))), ownDatabase);
        case SystemValue::SessionProperty:
            return sessionProperty(text(1));
        case SystemValue::FullTextProperty:
            return givenOnly(std::int64_t{0}, equalsIgnoringCase(text(1), "IsFullTextInstalled"));
        case SystemValue::CollationProperty:
            return collationProperty(text(1), asciiLower(text(2)));
        case SystemValue::ColumnsUpdated:
            return columnsUpdated();
        default:
            return {};
    }
}

}  // namespace kap::engine

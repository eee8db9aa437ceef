#include "engine/catalog/object_ids.hpp"
#include "engine/catalog/object_names.hpp"
#include "engine/catalog/view_rows.hpp"

// sys.sequences, which the standard has, too, and sys.synonyms.
namespace kap::engine::views {
namespace {

using tsql::SqlType;
using tsql::TypeSpec;

constexpr TypeSpec kNumber{SqlType::BigInt};
constexpr TypeSpec kType{SqlType::Char, 2};
constexpr TypeSpec kLongName{SqlType::NVarChar, 1035};

bool isExhausted(const SchemaCatalogue::SequenceState& state) {
    const Sequence& own = state.definition;
    if (own.cycles || !state.last) return false;
    std::int64_t next = 0;
    return __builtin_add_overflow(*state.last, own.increment, &next) || !own.holds(next);
}

using Columns = decltype(SystemRows::columns);

// A view of objects: what is told of all of them, and what of these.
SystemRows viewOfObjects(const Columns& own) {
    SystemRows view{{{"name", kName},
                     {"object_id", kInt},
                     {"principal_id", kInt},
                     {"schema_id", kInt},
                     {"parent_object_id", kInt},
                     {"type", kType},
                     {"type_desc", kShort},
                     {"is_ms_shipped", kBit}},
                    {}};
    view.columns.insert(view.columns.end(), own.begin(), own.end());
    return view;
}

SystemRows sysSequences(const SchemaCatalogue& catalogue) {
    SystemRows view = viewOfObjects({{"start_value", kNumber},
                                     {"increment", kNumber},
                                     {"minimum_value", kNumber},
                                     {"maximum_value", kNumber},
                                     {"is_cycling", kBit},
                                     {"is_cached", kBit},
                                     {"cache_size", kInt},
                                     {"system_type_id", kTinyInt},
                                     {"user_type_id", kInt},
                                     {"precision", kTinyInt},
                                     {"scale", kTinyInt},
                                     {"current_value", kNumber},
                                     {"is_exhausted", kBit},
                                     {"last_used_value", kNumber}});
    view.ofTheMoment = true;
    for (const SchemaCatalogue::SequenceState& state : catalogue.sequences()) {
        const Sequence& own = state.definition;
        const std::int64_t type = tsql::factsOf(own.type.type).id;
        view.rows.push_back({bare(own.name),
                             number(objectId(own.name)),
                             Value(),
                             schemaNumber(catalogue, own.name),
                             number(0),
                             text("SO"),
                             text("SEQUENCE_OBJECT"),
                             flag(false),
                             number(own.start),
                             number(own.increment),
                             number(own.minimum),
                             number(own.maximum),
                             flag(own.cycles),
                             flag(own.caches),
                             own.cacheSize ? number(*own.cacheSize) : Value(),
                             number(type),
                             number(type),
                             number(tsql::precisionOf(own.type)),
                             number(tsql::scaleOf(own.type)),
                             number(state.last.value_or(state.first)),
                             flag(isExhausted(state)),
                             state.last ? number(*state.last) : Value()});
    }
    return view;
}

SystemRows standardSequences(const SchemaCatalogue& catalogue) {
    SystemRows view{{{"SEQUENCE_CATALOG", kName},
                     {"SEQUENCE_SCHEMA", kName},
                     {"SEQUENCE_NAME", kName},
                     {"DATA_TYPE", kName},
                     {"NUMERIC_PRECISION", kTinyInt},
                     {"NUMERIC_PRECISION_RADIX", kSmallInt},
                     {"NUMERIC_SCALE", kInt},
                     {"START_VALUE", kNumber},
                     {"MINIMUM_VALUE", kNumber},
                     {"MAXIMUM_VALUE", kNumber},
                     {"INCREMENT", kNumber},
                     {"CYCLE_OPTION", kInt},
                     {"DECLARED_DATA_TYPE", kName},
                     {"DECLARED_NUMERIC_PRECISION", kTinyInt},
                     {"DECLARED_NUMERIC_SCALE", kInt}},
                    {}};
    view.ofTheMoment = true;
    for (const SchemaCatalogue::SequenceState& state : catalogue.sequences()) {
        const Sequence& own = state.definition;
        constexpr std::int64_t kRadix = 10;
        view.rows.push_back({text(catalogue.databaseName()), schemaText(own.name), bare(own.name),
                             text(tsql::typeName(own.type.type)),
                             number(tsql::precisionOf(own.type)), number(kRadix),
                             number(tsql::scaleOf(own.type)), number(own.start),
                             number(own.minimum), number(own.maximum), number(own.increment),
                             flag(own.cycles), Value(), Value(), Value()});
    }
    return view;
}

SystemRows sysSynonyms(const SchemaCatalogue& catalogue) {
    SystemRows view = viewOfObjects({{"base_object_name", kLongName}});
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::Synonym) continue;
        view.rows.push_back({bare(object.name), number(objectId(object.name)), Value(),
                             schemaNumber(catalogue, object.name), number(0), text("SN"),
                             text("SYNONYM"), flag(false), text(object.text)});
    }
    return view;
}

constexpr auto kSequenceViews = std::to_array<View>({
    {"information_schema", "sequences", standardSequences},
    {"sys", "sequences", sysSequences},
    {"sys", "synonyms", sysSynonyms},
});

}  // namespace

std::span<const View> sequenceViews() {
    return kSequenceViews;
}

}  // namespace kap::engine::views

#include <algorithm>
#include <array>
#include <utility>

#include "engine/catalog/schema_catalogue.hpp"

// Which triggers fire, and in what order.
namespace kap::engine {
namespace {

constexpr std::array<std::pair<std::uint8_t, std::string_view>, 3> kEventNames{
    {{tsql::kOnInsert, "INSERT"}, {tsql::kOnUpdate, "UPDATE"}, {tsql::kOnDelete, "DELETE"}}};

std::string_view eventName(std::uint8_t event) {
    for (const auto& [bit, name] : kEventNames) {
        if (event == bit) return name;
    }
    return {};
}

// The ones that sp_settriggerorder calls first and last stand at the ends.
int placeOf(const SchemaCatalogue& catalogue, const Module& trigger, std::uint8_t event) {
    const std::string name = trigger.object.name + "/" + std::string(eventName(event));
    for (const StoredObject& object : catalogue.objects()) {
        if (object.kind != StoredKind::TriggerOrder || !sameName(object.name, name)) continue;
        return object.text == "first" ? -1 : 1;
    }
    return 0;
}

}  // namespace

int SchemaCatalogue::firingLevel(std::string_view relation) const {
    return static_cast<int>(std::ranges::count_if(
        firing_, [&](const Firing& each) { return sameName(each.table, relation); }));
}

std::vector<std::shared_ptr<const Module>> SchemaCatalogue::firedBy(std::string_view table,
                                                                    std::uint8_t event,
                                                                    bool insteadOf) const {
    std::vector<std::shared_ptr<const Module>> result;
    if (!insteadOf && !firing_.empty() && !isOn(kNestedTriggers)) return result;
    for (const auto& trigger : triggersOf(table)) {
        const tsql::CreateModuleStatement& made = trigger->definition;
        if (made.insteadOf != insteadOf || (made.events & event) == 0) continue;
        const bool own = !firing_.empty() && sameName(firing_.back().trigger, trigger->object.name);
        if (own && (insteadOf || !isOn(kRecursiveTriggers))) continue;
        result.push_back(trigger);
    }
    std::ranges::stable_sort(result, {},
                             [&](const auto& trigger) { return placeOf(*this, *trigger, event); });
    return result;
}

bool SchemaCatalogue::firesInstead(std::string_view relation, std::uint8_t event) const {
    return !firedBy(relation, event, true).empty();
}

bool SchemaCatalogue::isOn(std::string_view setting) const {
    for (const StoredObject& object : objects()) {
        if (object.kind == StoredKind::Setting && object.name == setting) return object.enabled;
    }
    return setting == kNestedTriggers;
}

}  // namespace kap::engine

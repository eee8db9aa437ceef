#include "engine/catalog/reference_rules.hpp"

#include <algorithm>

namespace kap::engine {

using tsql::ReferenceAction;

bool hasKeyOf(const std::vector<std::vector<std::string>>& keys,
              const std::vector<std::string>& columns) {
    return std::ranges::any_of(keys, [&](const std::vector<std::string>& key) {
        return std::ranges::is_permutation(key, columns, sameName);
    });
}

namespace {

// What one statement on a table sets off, table by table.
class Reach {
public:
    explicit Reach(const std::vector<Reference>& references) : references_(references) {}

    // Whether a table is met twice, and the last reference has a part in it.
    bool twice(const std::string& table, bool deletes) {
        reached_ = {table};
        usesLast_ = false;
        repeats_ = false;
        follow(table, deletes);
        return repeats_ && usesLast_;
    }

private:
    // Rows that a reference deletes go on deleting; those whose columns it sets are updated.
    void follow(const std::string& table, bool deletes) {
        for (const Reference& each : references_) {
            const ReferenceAction action = deletes ? each.onDelete : each.onUpdate;
            if (action == ReferenceAction::None || !sameName(each.parent, table)) continue;
            usesLast_ = usesLast_ || &each == &references_.back();
            const bool again = std::ranges::any_of(
                reached_, [&](const std::string& other) { return sameName(other, each.table); });
            repeats_ = repeats_ || again;
            if (again) continue;
            reached_.push_back(each.table);
            follow(each.table, deletes && action == ReferenceAction::Cascade);
        }
    }

    const std::vector<Reference>& references_;
    std::vector<std::string> reached_;
    bool usesLast_ = false;
    bool repeats_ = false;
};

}  // namespace

bool reachesTwice(const std::vector<Reference>& references) {
    Reach reach(references);
    return std::ranges::any_of(references, [&](const Reference& each) {
        return reach.twice(each.parent, true) || reach.twice(each.parent, false);
    });
}

}  // namespace kap::engine

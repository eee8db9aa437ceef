#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/catalog/stored_objects.hpp"
#include "tsql/statements.hpp"

namespace kap::engine {

// A sequence: numbers of a type that are given out one by one, for no table. It counts in 64 bits,
// also where its type has more digits.
struct Sequence {
    std::string name;  // its stored name
    tsql::TypeSpec type{tsql::SqlType::BigInt};
    std::int64_t start = 1;
    std::int64_t increment = 1;
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    bool cycles = false;
    bool caches = true;
    std::optional<std::int64_t> cacheSize;  // absent: the database's own choice

    // Whether `value` lies within its limits.
    [[nodiscard]] bool holds(std::int64_t value) const {
        return value >= minimum && value <= maximum;
    }
    // The limits in the order in which it counts.
    [[nodiscard]] std::int64_t nearEnd() const { return increment > 0 ? minimum : maximum; }
    [[nodiscard]] std::int64_t farEnd() const { return increment > 0 ? maximum : minimum; }
    // How many steps lead from one number to another that it counts later.
    [[nodiscard]] std::uint64_t stepsBetween(std::int64_t from, std::int64_t to) const;
};

// What CREATE SEQUENCE makes, under that stored name. Errors 11700 to 11703, 11705, 11706 and
// 11708.
[[nodiscard]] Sequence sequenceOf(const tsql::SequenceStatement& statement,
                                  const std::string& stored, int line);
// What ALTER SEQUENCE makes of one; the same errors.
[[nodiscard]] Sequence altered(const Sequence& sequence, const tsql::SequenceStatement& statement,
                               int line);

// How a sequence is kept among the objects of the file: by its options as CREATE SEQUENCE has them.
[[nodiscard]] StoredObject storedObject(const Sequence& sequence);
[[nodiscard]] Sequence sequenceOf(const StoredObject& object);

}  // namespace kap::engine

#pragma once

#include <cstddef>
#include <vector>

#include <kaputil/automation/object.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>

namespace kap::config {

// The row of the configuration table that belongs to a field: its place is the field's path, its
// table and connection are those of the root.
class FieldRow {
public:
    // Raises 91 when the field's chain of parents does not reach a root.
    FieldRow(const String& path, Object& field);

    // A part of the path: group, application, procedure, module, field. Raises 9 when the path is
    // shorter.
    [[nodiscard]] const String& part(std::size_t index) const;

    [[nodiscard]] const Variant& connection() const { return connection_; }
    [[nodiscard]] String selectStatement() const;

    // Deletes the row, if there is one. Raises what the database raises, and 3709 without an open
    // connection.
    void remove() const;

private:
    [[nodiscard]] String condition() const;

    std::vector<String> parts_;
    Variant connection_;
    String table_;
};

}  // namespace kap::config

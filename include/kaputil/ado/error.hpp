#pragma once

#include <cstdint>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>

namespace kap::ado {

// One error or message that the database reported. Of a message that is no error, such as what a
// script prints, Number is 0.
class KAPUTIL_EXPORT Error final : public DescribedObject {
public:
    struct Details {
        std::int32_t number = 0;       // the data-access code that clients compare
        std::int32_t nativeError = 0;  // the database's own number
        String description;
        String source;
        String sqlState;
        std::int32_t line = 0;  // of the script that failed, from 1; 0 when it is not known
    };

    explicit Error(Details details) : details_(std::move(details)) {}
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Number() const { return details_.number; }
    [[nodiscard]] std::int32_t NativeError() const { return details_.nativeError; }
    [[nodiscard]] String Description() const { return details_.description; }
    [[nodiscard]] String Source() const { return details_.source; }
    [[nodiscard]] String SQLState() const { return details_.sqlState; }
    // There is no help file.
    [[nodiscard]] String HelpFile() const { return {}; }
    [[nodiscard]] std::int32_t HelpContext() const { return 0; }
    [[nodiscard]] std::int32_t line() const { return details_.line; }

private:
    Details details_;
};

// The errors and messages of the last operation of a connection that had any, in the database's
// order. What reports nothing leaves them as they are; Clear forgets them.
class KAPUTIL_EXPORT Errors final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count() const;
    // The error at a position from 0; raises 3265 (item not found) outside the collection.
    [[nodiscard]] Ref<Error> Item(std::int32_t index) const;
    [[nodiscard]] std::vector<Variant> elements() override {
        return {errors_.begin(), errors_.end()};
    }
    void Clear() { errors_.clear(); }
    // They are always those of the last operation.
    void Refresh() {}

    // Replaces the contents; called by the connection.
    void assign(std::vector<Ref<Error>> errors) { errors_ = std::move(errors); }

private:
    std::vector<Ref<Error>> errors_;
};

}  // namespace kap::ado

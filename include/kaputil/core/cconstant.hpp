#pragma once

#include <cstdint>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// The numbers that the library and its clients share.
enum CostantiNumeriche : std::int32_t {
    kaOK = 0,             // success
    kaerror = 1,          // failure
    kaCodiceFiscale = 2,  // kind of code: Italian personal tax code
    kaPartitaIva = 3,     // kind of code: Italian VAT number
    kaHBordo = 60,        // height of a window border, in twips
    kaHBarra = 270,       // height of a title or tool bar, in twips
};

// An empty class, which carries `CostantiNumeriche` into the list of public classes. A client knows
// it and cannot create it.
class KAPUTIL_EXPORT CConstant final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }
};

}  // namespace kap

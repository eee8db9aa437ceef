#pragma once

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// The host's system folder.
class KAPUTIL_EXPORT CSystem final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The Windows directory, or the folder of the user's settings that stands for it
    // (<kaputil/platform/folders.hpp>); always with a "\" at the end. A path of 255 characters or
    // more is left out: the "\" alone.
    [[nodiscard]] String WindowsDirectory();
};

}  // namespace kap

#include "python/package.hpp"

namespace kap::python {
namespace {

Package& held() {
    // Never destroyed: the interpreter is gone before this library is unloaded.
    static auto* const package = new Package();
    return *package;
}

}  // namespace

void setPackage(const py::kwargs& given) {
    held() = {given["automation_error"],
              given["member_not_found"],
              given["empty"],
              given["nothing"],
              given["ref"],
              given["variant"],
              given["object"],
              given["make_class"],
              given["error_parts"],
              given["find_attribute"],
              given["references"]};
}

const Package& package() {
    return held();
}

}  // namespace kap::python

#include <kaputil/catalogue/create_object.hpp>

#include <array>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/frame/error.hpp>

#include "frame/unicode.hpp"

namespace kap {
namespace {

constexpr std::u16string_view kLibrary = u"KapUtil.";
constexpr std::u16string_view kDataAccess = u"ADODB.";

std::span<const ClassDescription* const> dataAccessClasses() {
    static const std::array classes = {&ado::Connection::classDescription(),
                                       &ado::Recordset::classDescription()};
    return classes;
}

const ClassDescription* findClass(std::span<const ClassDescription* const> classes,
                                  std::u16string_view prefix, std::u16string_view name) {
    if (name.size() <= prefix.size() || !unicode::sameName(name.substr(0, prefix.size()), prefix)) {
        return nullptr;
    }
    for (const ClassDescription* description : classes) {
        if (unicode::sameName(description->name, name.substr(prefix.size()))) {
            return description;
        }
    }
    return nullptr;
}

}  // namespace

std::span<const ClassDescription* const> publishedClasses() {
    static const std::array classes = {&CErrore::classDescription(),
                                       &CProprieta::classDescription(),
                                       &StdFunctions::classDescription()};
    return classes;
}

Ref<Object> createObject(std::u16string_view programmaticName) {
    const ClassDescription* found = findClass(publishedClasses(), kLibrary, programmaticName);
    if (found == nullptr) {
        found = findClass(dataAccessClasses(), kDataAccess, programmaticName);
    }
    if (found == nullptr || found->create == nullptr ||
        found->instancing == Instancing::NotCreatable) {
        throw AutomationError(
            errors::kCannotCreateObject,
            String(u"ActiveX component can't create object '") + programmaticName + u"'");
    }
    return found->create();
}

}  // namespace kap

#include "com/served_classes.hpp"

#include <vector>

namespace kap::com {
namespace {

std::vector<ServedClass> makeClasses() {
    std::vector<ServedClass> classes;
    for (const TypeLibrary& types : typeLibraries()) {
        for (const PublishedClass& one : types.classes) {
            if (one.description != nullptr && one.instancing != Instancing::NotCreatable) {
                classes.push_back({types.name + u"." + one.name, one.classId,
                                   helpOf(*one.description), one.description, &types});
            }
        }
    }
    return classes;
}

}  // namespace

std::span<const ServedClass> servedClasses() {
    static const std::vector<ServedClass> classes = makeClasses();
    return classes;
}

}  // namespace kap::com

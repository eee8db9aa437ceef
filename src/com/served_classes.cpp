#include "com/served_classes.hpp"

#include <vector>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/catalogue/catalogue.hpp>

namespace kap::com {
namespace {

ServedClass local(const ClassDescription& description, const char16_t* classId) {
    return {u"KapLocal." + description.name, classId, description.summary, &description, false};
}

std::vector<ServedClass> makeClasses() {
    std::vector<ServedClass> classes;
    for (const PublishedClass& one : publishedClasses()) {
        if (one.description != nullptr && one.instancing != Instancing::NotCreatable) {
            classes.push_back({library().name + u"." + one.name, one.classId, one.summary,
                               one.description, true});
        }
    }
    classes.push_back(
        local(ado::Connection::classDescription(), u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b11"));
    classes.push_back(
        local(ado::Recordset::classDescription(), u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b12"));
    classes.push_back(
        local(ado::Command::classDescription(), u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b13"));
    return classes;
}

}  // namespace

std::span<const ServedClass> servedClasses() {
    static const std::vector<ServedClass> classes = makeClasses();
    return classes;
}

}  // namespace kap::com

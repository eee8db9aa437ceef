#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/core/cproprieta.hpp>

#include "cli/demo/demo_report.hpp"

namespace kap::cli {

// Somebody who works with a form: a connection of one's own, the library's functions, and the
// record in the form as a property string. Each member makes one call of the library and gives back
// the step to show; whether it went as it should is for the story to say.
class DemoUser {
public:
    DemoUser(std::string name, const String& connectionString);

    [[nodiscard]] const std::string& name() const noexcept { return name_; }

    // The values named in `shown` are those worth seeing.
    [[nodiscard]] Step read(const std::string& query, std::initializer_list<const char*> shown);
    [[nodiscard]] Step change(const std::vector<std::pair<const char*, Variant>>& values);
    [[nodiscard]] Step save(const std::string& query);
    [[nodiscard]] Step remove(const std::string& query);
    [[nodiscard]] Step look(const std::string& query, const std::string& fields);
    [[nodiscard]] Step nextLine(const std::string& query, std::int16_t stepWidth);
    // Calls one of the general functions by its name, as a program does that has only the names;
    // `arguments` are named ones and stand in the step as the call left them.
    [[nodiscard]] Step call(const char* member,
                            std::vector<std::pair<const char*, Variant>> arguments);
    // The same for a function that works on the user's connection.
    [[nodiscard]] Step callConnected(const char* member,
                                     std::vector<std::pair<const char*, Variant>> arguments);

    // A value of the record in the form, empty when it is not there.
    [[nodiscard]] std::string value(const char* name) const;

private:
    // With `connection` given, as the argument of that name too.
    Step callWith(const char* member, std::vector<std::pair<const char*, Variant>>& arguments,
                  Variant* connection);
    [[nodiscard]] NamedTexts valuesOf(const CProprieta& properties,
                                      std::initializer_list<const char*> names) const;
    [[nodiscard]] Step stepOf(const char* member, const std::string& query) const;
    [[nodiscard]] std::string messageOfErrore();

    std::string name_;
    Variant connection_;
    Ref<StdFunctions> functions_;
    Ref<CProprieta> form_;
};

}  // namespace kap::cli

#include "cli/commands/classes/classes_command.hpp"

#include <iostream>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/commands/classes/class_json.hpp"
#include "cli/commands/classes/class_lookup.hpp"
#include "cli/commands/classes/class_pages.hpp"
#include "cli/commands/classes/reference_pages.hpp"
#include "cli/names.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/terminal.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

// What a name on the command line stands for: one of the first three, a member with its class.
struct Named {
    const ShownClass* shown = nullptr;
    const MemberDescription* member = nullptr;
    const EnumerationDescription* enumeration = nullptr;
};

std::vector<std::string> allNames() {
    std::vector<std::string> names = classNames();
    for (std::string& name : enumerationNames()) {
        names.push_back(std::move(name));
    }
    return names;
}

[[noreturn]] void refuseMember(const ShownClass& shown, const std::string& member) {
    throw UsageError(shown.name + " has no member " + member +
                     suggestion(member, memberNames(shown)));
}

// A general function by its own name, as it is called: KapRound is a member of StdFunctions.
Named generalFunction(const std::string& name) {
    const ShownClass* functions = findClass("StdFunctions");
    const MemberDescription* member = findMember(*functions, name);
    if (member == nullptr) {
        std::vector<std::string> names = allNames();
        for (std::string& function : memberNames(*functions)) {
            names.push_back(std::move(function));
        }
        throw UsageError("there is no class " + name + suggestion(name, names));
    }
    return {functions, member, nullptr};
}

Named lookUp(const std::string& name) {
    Named named = {findClass(name), nullptr, findEnumeration(name)};
    if (named.shown != nullptr || named.enumeration != nullptr) {
        return named;
    }
    const std::size_t point = name.rfind('.');
    if (point == std::string::npos) {
        return generalFunction(name);
    }
    const std::string className = point == 0 ? name : name.substr(0, point);
    const std::string member = name.substr(point + 1);
    named.shown = findClass(className);
    if (named.shown == nullptr) {
        // "ADODB.Conection" is a class, too.
        const std::string meant = suggestion(name, allNames());
        throw UsageError(meant.empty()
                             ? "there is no class " + className + suggestion(className, allNames())
                             : "there is no class " + name + meant);
    }
    if (member.empty()) {
        throw UsageError("no member is named behind " + name);
    }
    named.member = findMember(*named.shown, member);
    if (named.member == nullptr) {
        refuseMember(*named.shown, member);
    }
    return named;
}

void printNames(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        std::cout << name << '\n';
    }
}

void printNamesBelow(const Named& named) {
    if (named.member != nullptr) {
        for (const ParameterDescription& parameter : named.member->parameters) {
            std::cout << parameter.name.utf8() << '\n';
        }
    } else if (named.enumeration != nullptr) {
        for (const auto& value : named.enumeration->values) {
            std::cout << value.name.utf8() << '\n';
        }
    } else {
        printNames(memberNames(*named.shown));
    }
}

void printPageAsJson(const Named& named, Language language) {
    if (named.member != nullptr) {
        std::cout << memberJson(*named.shown, *named.member, language).dump(2) << '\n';
    } else if (named.enumeration != nullptr) {
        std::cout << enumerationJson(*named.enumeration).dump(2) << '\n';
    } else {
        std::cout << classJson(*named.shown, language).dump(2) << '\n';
    }
}

void print(const Named& named, Language language, const Terminal& terminal) {
    if (named.member != nullptr) {
        printMember(std::cout, *named.shown, *named.member, language, terminal);
    } else if (named.enumeration != nullptr) {
        printEnumeration(std::cout, *named.enumeration, language, terminal);
    } else {
        printClass(std::cout, *named.shown, language, terminal);
    }
}

void printTable(const ClassesCommand& options) {
    if (options.names) {
        printNames(classNames());
    } else if (options.json) {
        std::cout << catalogueJson(options.language).dump(2) << '\n';
    } else {
        printCatalogue(std::cout, options.language, Terminal::ofStandardOutput());
    }
}

}  // namespace

int ClassesCommand::run() const {
    if (html) {
        writeReference(*html);
        return kSuccess;
    }
    if (name.empty()) {
        printTable(*this);
        return kSuccess;
    }
    const Named named = lookUp(name);
    if (names) {
        printNamesBelow(named);
    } else if (json) {
        printPageAsJson(named, language);
    } else {
        print(named, language, Terminal::ofStandardOutput());
    }
    return kSuccess;
}

}  // namespace kap::cli

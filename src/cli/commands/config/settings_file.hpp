#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

// Configurations as text files that people read and edit: what a program declares, or what a group
// of users has set.
//
//     # the counter's settings
//     [Vendite\Documenti\Testata]
//     ScontoMassimo = 25
//         flag = 1
//
// A line in brackets names application, procedure and module of the fields below it. A field's line
// begins without a blank; indented lines below it tell more. In a declaration value and flag are
// the defaults (a field without "=" has no default value), and there may be `allowed`, `flags`,
// `note` and `mandatory = yes`. A name or value in quotes is written as in JSON, which any may be,
// and must be when it is empty, begins or ends with a blank, or holds signs that would end it.
namespace kap::cli {

struct SettingPath {
    std::string application;
    std::string procedure;
    std::string module;
    std::string field;

    // "Vendite\Documenti\Testata\ScontoMassimo".
    [[nodiscard]] std::string text() const;
};

struct FileSetting {
    SettingPath path;
    std::optional<std::string> value;
    std::optional<std::string> flag;
    std::optional<std::string> allowedValues;
    std::optional<std::string> allowedFlags;
    std::string note;
    bool mandatory = false;
    int line = 0;
};

// Reads a file called `name` in messages. Throws UsageError, with the line, for what is no such
// file.
[[nodiscard]] std::vector<FileSetting> readSettings(const std::string& text,
                                                    const std::string& name);

// Writes settings; those of one module that follow one another stand under one heading.
void writeSettings(std::ostream& out, const std::vector<FileSetting>& settings);

}  // namespace kap::cli

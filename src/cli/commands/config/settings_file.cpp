#include "cli/commands/config/settings_file.hpp"

#include <algorithm>
#include <ostream>
#include <string_view>

#include <nlohmann/json.hpp>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"
#include "cli/names.hpp"
#include "cli/output/usage_error.hpp"

namespace kap::cli {
namespace {

using PlainJson = nlohmann::json;

constexpr std::string_view kBlanks = " \t\r";

// Where a text in quotes ends; npos when it does not.
std::size_t endOfQuoted(std::string_view text) {
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            return i + 1;
        }
    }
    return std::string_view::npos;
}

// Takes a settings file apart, line by line.
class SettingsReader {
public:
    explicit SettingsReader(const std::string& name) : name_(name) {}

    std::vector<FileSetting> read(std::string_view text) {
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            ++line_;
            readLine(text.substr(0, end));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return std::move(settings_);
    }

private:
    [[noreturn]] void fail(const std::string& sentence) const {
        throw UsageError(name_ + ", line " + plain::text(line_) + ": " + sentence);
    }

    void readLine(std::string_view line) {
        const std::string_view text = trimmed(line, kBlanks);
        if (text.empty() || text.front() == '#') {
            return;
        }
        if (line.front() == '[') {
            readHeading(text);
        } else if (kBlanks.find(line.front()) == std::string_view::npos) {
            readField(text);
        } else {
            readDetail(text);
        }
    }

    // A name or value at the front of `rest`, which loses it: in quotes, or up to one of `ends`.
    std::string take(std::string_view& rest, std::string_view ends) const {
        rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
        if (rest.starts_with('"')) {
            const std::size_t end = endOfQuoted(rest);
            const PlainJson value =
                PlainJson::parse(rest.substr(0, end), nullptr, /*exceptions=*/false);
            if (!value.is_string()) {
                fail("a text in quotes is not written as in JSON");
            }
            rest.remove_prefix(end);
            rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
            return value.get<std::string>();
        }
        const std::size_t end =
            ends.empty() ? rest.size() : std::min(rest.find_first_of(ends), rest.size());
        std::string text(trimmed(rest.substr(0, end), kBlanks));
        rest.remove_prefix(end);
        return text;
    }

    void expect(std::string_view& rest, char sign, const char* otherwise) const {
        if (!rest.starts_with(sign)) {
            fail(otherwise);
        }
        rest.remove_prefix(1);
    }

    void expectEnd(std::string_view rest) const {
        if (!rest.empty()) {
            fail("nothing may stand behind a text in quotes");
        }
    }

    void readHeading(std::string_view text) {
        constexpr const char* kForm = "a heading is [application\\procedure\\module]";
        text.remove_prefix(1);
        heading_.application = take(text, "\\]");
        expect(text, '\\', kForm);
        heading_.procedure = take(text, "\\]");
        expect(text, '\\', kForm);
        heading_.module = take(text, "\\]");
        expect(text, ']', kForm);
        if (!text.empty()) {
            fail(kForm);
        }
        hasHeading_ = true;
        hasField_ = false;
    }

    void readField(std::string_view text) {
        if (!hasHeading_) {
            fail("a field stands below a heading [application\\procedure\\module]");
        }
        FileSetting setting;
        setting.path = heading_;
        setting.path.field = take(text, "=");
        setting.line = line_;
        if (!text.empty()) {
            expect(text, '=', "a field is NAME = VALUE");
            setting.value = take(text, "");
            expectEnd(text);
        }
        settings_.push_back(std::move(setting));
        hasField_ = true;
    }

    void readDetail(std::string_view text) {
        if (!hasField_) {
            fail("an indented line tells more of a field, and there is none above it");
        }
        FileSetting& setting = settings_.back();
        const std::string name = take(text, "=");
        expect(text, '=', "an indented line is NAME = VALUE");
        std::string value = take(text, "");
        expectEnd(text);
        if (name == "flag") {
            setting.flag = std::move(value);
        } else if (name == "allowed") {
            setting.allowedValues = std::move(value);
        } else if (name == "flags") {
            setting.allowedFlags = std::move(value);
        } else if (name == "note") {
            setting.note = std::move(value);
        } else if (name == "mandatory" && (value == "yes" || value == "no")) {
            setting.mandatory = value == "yes";
        } else {
            fail("\"" + name +
                 "\" is none of flag, allowed, flags, note and mandatory (yes or no)");
        }
    }

    const std::string& name_;
    int line_ = 0;
    SettingPath heading_;
    bool hasHeading_ = false;
    bool hasField_ = false;
    std::vector<FileSetting> settings_;
};

// The text as it is, or in quotes where it would be read as something else.
std::string written(const std::string& text, std::string_view ends) {
    bool quoted = text.empty() || trimmed(text, kBlanks).size() != text.size() ||
                  text.front() == '"' || text.front() == '#' || text.front() == '[' ||
                  text.find_first_of(ends) != std::string::npos;
    for (const char unit : text) {
        quoted = quoted || static_cast<unsigned char>(unit) < 0x20;
    }
    return quoted ? PlainJson(text).dump() : text;
}

std::string writtenValue(const std::string& text) {
    return text.empty() ? text : written(text, "");
}

void writeDetail(std::ostream& out, const char* name, const std::optional<std::string>& value) {
    if (value) {
        out << "    " << name << " = " << writtenValue(*value) << '\n';
    }
}

bool inSameModule(const SettingPath& one, const SettingPath& other) {
    return one.application == other.application && one.procedure == other.procedure &&
           one.module == other.module;
}

}  // namespace

std::string SettingPath::text() const {
    return application + "\\" + procedure + "\\" + module + "\\" + field;
}

std::vector<FileSetting> readSettings(const std::string& text, const std::string& name) {
    return SettingsReader(name).read(text);
}

void writeSettings(std::ostream& out, const std::vector<FileSetting>& settings) {
    const SettingPath* last = nullptr;
    for (const FileSetting& setting : settings) {
        const SettingPath& path = setting.path;
        if (last == nullptr || !inSameModule(*last, path)) {
            out << "\n[" << written(path.application, "\\]") << '\\'
                << written(path.procedure, "\\]") << '\\' << written(path.module, "\\]") << "]\n";
        }
        last = &path;
        out << written(path.field, "=");
        if (setting.value) {
            out << " = " << writtenValue(*setting.value);
        }
        out << '\n';
        writeDetail(out, "flag", setting.flag);
        writeDetail(out, "allowed", setting.allowedValues);
        writeDetail(out, "flags", setting.allowedFlags);
        if (!setting.note.empty()) {
            writeDetail(out, "note", setting.note);
        }
        if (setting.mandatory) {
            writeDetail(out, "mandatory", "yes");
        }
    }
}

}  // namespace kap::cli

// `kaputil config export`.

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include <nlohmann/json.hpp>

#include "cli/commands/config/config_command.hpp"
#include "cli/output/exit_codes.hpp"
#include "cli/output/shown_text.hpp"
#include "cli/output/usage_error.hpp"
#include "cli/with_database.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

// The rows of the group. Throws UsageError for one that holds Null: a file cannot say that.
std::vector<FileSetting> rowsOfGroup(const Configuration& configuration) {
    std::vector<FileSetting> rows;
    for (const Setting& setting : configuration.settings) {
        if (!setting.groups[0]) {
            continue;
        }
        if (!setting.groups[0]->value || !setting.groups[0]->flag) {
            throw UsageError(setting.path.text() + " holds Null and cannot be exported");
        }
        FileSetting row;
        row.path = setting.path;
        row.value = setting.groups[0]->value;
        row.flag = setting.groups[0]->flag;
        rows.push_back(std::move(row));
    }
    return rows;
}

void write(std::ostream& out, const ConfigExport& options, const std::vector<FileSetting>& rows) {
    if (!options.json) {
        out << "# Configuration of the group " << shownText(options.group) << '\n';
        writeSettings(out, rows);
        return;
    }
    Json all = Json::array();
    for (const FileSetting& row : rows) {
        all.push_back({{"application", row.path.application},
                       {"procedure", row.path.procedure},
                       {"module", row.path.module},
                       {"field", row.path.field},
                       {"value", *row.value},
                       {"flag", *row.flag}});
    }
    out << Json{{"group", options.group},
                {"table", options.source.table},
                {"settings", std::move(all)}}
               .dump(2)
        << '\n';
}

int writeFile(const ConfigExport& options, const std::vector<FileSetting>& rows) {
    std::ofstream out(*options.file, std::ios::binary);
    write(out, options, rows);
    out.close();
    if (!out) {
        std::cerr << "kaputil: cannot write " << *options.file << ": " << std::strerror(errno)
                  << '\n';
        return kFailed;
    }
    return kSuccess;
}

}  // namespace

int ConfigExport::run() const {
    return withDatabase(
        source.connection, Access::Reading, json, [this](ado::Connection& database) {
            const auto rows = rowsOfGroup(readConfiguration(database, source, {group}));
            if (file) {
                return writeFile(*this, rows);
            }
            write(std::cout, *this, rows);
            return kSuccess;
        });
}

}  // namespace kap::cli

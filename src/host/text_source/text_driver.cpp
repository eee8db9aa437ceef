#include "host/text_source/text_driver.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>
#include <utility>

#include <kaputil/ado/error_numbers.hpp>

#include "frame/unicode.hpp"
#include "host/text_source/failure.hpp"
#include "host/text_source/line_writer.hpp"
#include "platform/output_file.hpp"
#include "platform/paths.hpp"

namespace kap::host::text_source {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "Microsoft Text Driver (*.txt; *.csv)";

// One text file that rows are added to.
class Table {
public:
    Table(const fs::path& folder, const String& name)
        : writer_(readSchema(folder, name)),
          file_(platform::locate(platform::pathText(folder / "").units() + name.units()),
                platform::OutputFile::Begin::AtEnd) {
        if (file_.size() == 0) {
            file_.write(writer_.beginning());
        }
    }

    [[nodiscard]] const Schema& schema() const noexcept { return writer_.schema(); }

    void add(const std::vector<std::optional<String>>& values) {
        file_.write(writer_.line(values, rows_ + 1));
        ++rows_;
    }

    // The position of the first column of this name that is not taken; the number of columns when
    // there is none. Columns may have the same name, and their values come in their order.
    [[nodiscard]] std::size_t find(const std::string& column,
                                   const std::vector<bool>& taken) const {
        const String name(column);
        std::size_t position = 0;
        while (position < taken.size() &&
               (taken[position] || !unicode::sameName(schema().columns[position].name, name))) {
            ++position;
        }
        return position;
    }

private:
    LineWriter writer_;
    platform::OutputFile file_;
    std::int64_t rows_ = 0;
};

// The file's name in "SELECT * FROM name WHERE 1=0", the only query there is: a text file is
// written to, not read.
String tableIn(std::string_view script) {
    constexpr std::u16string_view kFront = u"SELECT * FROM ";
    constexpr std::u16string_view kBehind = u" WHERE 1=0";
    const String text(script);
    std::u16string_view query = unicode::trim(text);
    if (query.size() <= kFront.size() + kBehind.size() ||
        !unicode::sameName(query.substr(0, kFront.size()), kFront) ||
        !unicode::sameName(query.substr(query.size() - kBehind.size()), kBehind)) {
        failWith(ado::errors::kCommandText,
                 u"Un file di testo si apre con SELECT * FROM nome WHERE 1=0.");
    }
    query.remove_prefix(kFront.size());
    query.remove_suffix(kBehind.size());
    query = unicode::trim(query);
    const bool bracketed = query.starts_with(u'[') && query.ends_with(u']');
    return bracketed ? query.substr(1, query.size() - 2) : query;
}

ado::ColumnInfo describe(const Column& column, const String& table) {
    constexpr std::int32_t kLongest = 255;
    ado::ColumnInfo info;
    info.name = column.name.utf8();
    info.type = ado::DataTypeEnum::adVarChar;
    info.definedSize = column.width ? static_cast<std::int32_t>(*column.width) : kLongest;
    info.isLong = true;  // whether a value fits is seen when it is written as the file has it
    info.baseTable = table.utf8();
    info.baseColumn = info.name;
    return info;
}

class TextSession final : public ado::Session {
public:
    explicit TextSession(fs::path folder) : folder_(std::move(folder)) {}

    void execute(ado::Request& request, ado::Reply& reply) override {
        const String name = tableIn(request.text);
        ado::Result result;
        for (const Column& column : table(name).schema().columns) {
            result.columns.push_back(describe(column, name));
            result.rows.emplace_back();
        }
        reply.results.push_back(std::move(result));
    }

    ado::ChangeOutcome apply(const ado::RowChange& change) override {
        if (change.kind != ado::RowChange::Kind::Insert) {
            failWith(ado::errors::kFeatureNotAvailable,
                     u"A un file di testo si possono solo aggiungere righe.");
        }
        Table& target = table(String(change.table));
        std::vector<std::optional<String>> values(target.schema().columns.size());
        std::vector<bool> taken(values.size());
        for (const ado::ColumnValue& one : change.values) {
            const std::size_t position = target.find(one.column, taken);
            taken.at(position) = true;
            if (const auto* text = std::get_if<std::string>(&one.value)) {
                values[position] = String(*text);
            }
        }
        target.add(values);
        return {1, readBack(change)};
    }

    void begin() override { refuseTransaction(); }
    void commit() override { refuseTransaction(); }
    void rollback() override {}
    [[nodiscard]] int transactionDepth() const override { return 0; }

private:
    [[noreturn]] static void refuseTransaction() {
        failWith(ado::errors::kFeatureNotAvailable, u"Un file di testo non ha transazioni.");
    }

    // What was written, as it was given.
    static std::vector<ado::CellValue> readBack(const ado::RowChange& change) {
        std::vector<ado::CellValue> values;
        for (const std::string& column : change.readBack) {
            const auto found = std::ranges::find(change.values, column, &ado::ColumnValue::column);
            values.push_back(found == change.values.end() ? ado::CellValue() : found->value);
        }
        return values;
    }

    Table& table(const String& name) {
        auto& known = tables_[unicode::upper(name)];
        if (known == nullptr) {
            known = std::make_unique<Table>(folder_, name);
        }
        return *known;
    }

    fs::path folder_;
    std::map<std::u16string, std::unique_ptr<Table>> tables_;
};

}  // namespace

void failWith(std::int32_t number, const String& text) {
    throw ado::DriverError({{0, number, "HY000", unicode::displayUtf8(text), 0}}, u"Text Driver");
}

void TextDriver::offer() {
    static const TextDriver driver;
    static const ado::DriverRegistration registration(kName, driver);
}

std::unique_ptr<ado::Session> TextDriver::open(const ado::ConnectionString& keys,
                                               std::chrono::seconds /*timeout: no server*/) const {
    const String folder(keys.find("Dbq").value_or(""));
    fs::path path = platform::locate(folder);
    std::error_code ignored;
    if (!fs::is_directory(path, ignored)) {
        failWith(ado::errors::kLogin, u"\"" + folder + u"\" non è una cartella.");
    }
    return std::make_unique<TextSession>(std::move(path));
}

}  // namespace kap::host::text_source

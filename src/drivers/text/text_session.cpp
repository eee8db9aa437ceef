#include "drivers/text/text_session.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/data/error_numbers.hpp>

#include "base/unicode.hpp"
#include "drivers/text/failure.hpp"
#include "drivers/text/row_lines.hpp"
#include "platform/paths.hpp"

namespace kap::ado::text_files {

namespace fs = std::filesystem;

// One text file that rows are added to.
class TextSession::Table {
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

    // What was complete before a row fails, or whoever is told of its progress, is in the file.
    void copy(const CopiedRows& copied) {
        constexpr std::size_t kPiece = 64 * 1024;
        constexpr std::size_t kRoom = kPiece + kPiece / 2;
        RowLines source(writer_, sourcesOf(*copied.result), copied.replaced, copied.instead);
        std::string lines;
        lines.reserve(kRoom);
        const auto& rows = copied.result->rows;
        try {
            for (bool more = !rows.empty(); more; more = copied.next()) {
                for (std::size_t row = 0; row < rows.front().size(); ++row) {
                    source.append(lines, row, rows_ + 1);
                    ++rows_;
                    if (copied.progress) copied.progress(rows_);
                    if (lines.size() >= kPiece) {
                        file_.write(std::exchange(lines, {}));
                        lines.reserve(kRoom);
                    }
                }
            }
        } catch (...) {
            file_.write(lines);
            throw;
        }
        file_.write(lines);
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
    [[nodiscard]] std::vector<SourceColumn> sourcesOf(const ado::Result& result) const {
        std::vector<SourceColumn> sources(schema().columns.size());
        for (std::size_t i = 0; i < sources.size(); ++i) {
            for (std::size_t j = 0; j < result.columns.size(); ++j) {
                if (unicode::sameName(String(result.columns[j].name), schema().columns[i].name)) {
                    sources[i] = {&result.columns[j], &result.rows[j]};
                }
            }
        }
        return sources;
    }

    LineWriter writer_;
    platform::OutputFile file_;
    std::int64_t rows_ = 0;
};

namespace {

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

[[noreturn]] void refuseTransaction() {
    failWith(ado::errors::kFeatureNotAvailable, u"Un file di testo non ha transazioni.");
}

// What was written, as it was given.
std::vector<ado::Value> readBack(const ado::RowChange& change) {
    const std::vector<ado::RowColumn>& written = change.plan->values();
    std::vector<ado::Value> values;
    for (const ado::RowColumn& column : change.plan->readBack()) {
        const auto found = std::ranges::find(written, column.name, &ado::RowColumn::name);
        values.push_back(found == written.end()
                             ? ado::Value()
                             : change.values[static_cast<std::size_t>(found - written.begin())]);
    }
    return values;
}

}  // namespace

TextSession::TextSession(fs::path folder) : folder_(std::move(folder)) {}

TextSession::~TextSession() = default;

void TextSession::execute(ado::Request& request, ado::Reply& reply) {
    const String name = tableIn(request.text);
    ado::Result result;
    for (const Column& column : table(name).schema().columns) {
        ado::ColumnInfo& info = result.columns.emplace_back(columnInfo(column));
        info.baseTable = name.utf8();
        info.baseColumn = info.name;
        result.rows.emplace_back();
    }
    reply.results.push_back(std::move(result));
}

ado::ChangeOutcome TextSession::apply(const ado::RowChange& change) {
    if (change.plan->kind() != ado::RowPlan::Kind::Insert) {
        failWith(ado::errors::kFeatureNotAvailable,
                 u"A un file di testo si possono solo aggiungere righe.");
    }
    Table& target = table(String(change.plan->table()));
    std::vector<std::optional<String>> values(target.schema().columns.size());
    std::vector<bool> taken(values.size());
    for (std::size_t i = 0; i < change.values.size(); ++i) {
        const std::size_t position = target.find(change.plan->values()[i].name, taken);
        taken.at(position) = true;
        if (const auto* text = std::get_if<std::string>(&change.values[i])) {
            values[position] = String(*text);
        }
    }
    target.add(values);
    return {1, readBack(change)};
}

void TextSession::begin() {
    refuseTransaction();
}

void TextSession::commit() {
    refuseTransaction();
}

void TextSession::copy(const String& name, const CopiedRows& copied) {
    table(name).copy(copied);
}

TextSession::Table& TextSession::table(const String& name) {
    auto& known = tables_[unicode::upper(name)];
    if (known == nullptr) {
        known = std::make_unique<Table>(folder_, name);
    }
    return *known;
}

}  // namespace kap::ado::text_files

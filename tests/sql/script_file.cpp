#include "script_file.hpp"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <kaputil/automation/plain_text.hpp>

#include "data/variant_cell.hpp"

namespace kap::test {
namespace {

[[noreturn]] void wrong(const ScriptFile& file, int line, const std::string& what) {
    throw std::runtime_error(file.path.string() + ":" + std::to_string(line) + ": " + what);
}

std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

ScriptBlock headOf(const ScriptFile& file, const std::string& line, int number) {
    std::vector<std::string> words = wordsOf(line);
    ScriptBlock block;
    block.line = number;
    if (words.back().starts_with("con")) {
        block.connection = std::stoi(words.back().substr(3));
        words.pop_back();
    }
    using Kind = ScriptBlock::Kind;
    if (words == std::vector<std::string>{"statement", "ok"}) {
        block.kind = Kind::Ok;
    } else if (words.size() == 3 && words[0] == "statement" && words[1] == "count") {
        block.kind = Kind::Count;
        block.number = std::stoi(words[2]);
    } else if (words.size() == 3 && words[0] == "statement" && words[1] == "error") {
        block.kind = Kind::Error;
        block.number = std::stoi(words[2]);
    } else if (words == std::vector<std::string>{"query"}) {
        block.kind = Kind::Query;
    } else if (words == std::vector<std::string>{"query", "sorted"}) {
        block.kind = Kind::SortedQuery;
    } else if (words == std::vector<std::string>{"messages"}) {
        block.kind = Kind::Messages;
    } else {
        wrong(file, number, "a block cannot begin with '" + line + "'");
    }
    return block;
}

void checkBlock(const ScriptFile& file, const ScriptBlock& block) {
    using Kind = ScriptBlock::Kind;
    if (block.sql.empty()) wrong(file, block.line, "the block has no statement");
    const bool needs = block.kind == Kind::Query || block.kind == Kind::SortedQuery ||
                       block.kind == Kind::Messages;
    if (needs && !block.expects) wrong(file, block.line, "what is expected is missing");
    const bool may = needs || block.kind == Kind::Error;
    if (!may && block.expects) wrong(file, block.line, "nothing can be expected here");
}

// A whole number of 10^-scale as a decimal text.
std::string scaled(std::int64_t value, int scale) {
    std::string digits = plain::padded(value, scale + 1);
    if (scale > 0) digits.insert(digits.size() - static_cast<std::size_t>(scale), ".");
    return digits;
}

std::string hexadecimal(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "0x";
    for (const char letter : bytes) {
        const auto byte = static_cast<unsigned char>(letter);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xFU];
    }
    return text;
}

std::string withBlanksShown(std::string text) {
    std::size_t end = text.size();
    while (end > 0 && text[end - 1] == ' ')
        --end;
    const std::size_t blanks = text.size() - end;
    text.resize(end);
    for (std::size_t i = 0; i < blanks; ++i)
        text += "·";
    return text;
}

// Linear days from 30 December 1899, to the millisecond.
std::string dateText(double days, bool withTime) {
    constexpr std::int64_t kDay = 86400000;
    const auto total = static_cast<std::int64_t>(std::llround(days * static_cast<double>(kDay)));
    std::int64_t day = total / kDay;
    std::int64_t rest = total % kDay;
    if (rest < 0) {
        rest += kDay;
        --day;
    }
    // Days of the civil calendar, counted from 1 March of year 0.
    constexpr std::int64_t kEpoch = 693899;
    const std::int64_t z = day + kEpoch - 1 + 1;
    const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const std::int64_t doe = z - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    const std::int64_t dayOfMonth = doy - (153 * mp + 2) / 5 + 1;
    const std::int64_t month = mp < 10 ? mp + 3 : mp - 9;
    const std::int64_t year = yoe + era * 400 + (month <= 2 ? 1 : 0);
    std::string text =
        plain::padded(year, 4) + "-" + plain::padded(month, 2) + "-" + plain::padded(dayOfMonth, 2);
    if (!withTime) return text;
    return text + " " + plain::padded(rest / 3600000, 2) + ":" +
           plain::padded(rest / 60000 % 60, 2) + ":" + plain::padded(rest / 1000 % 60, 2) + "." +
           plain::padded(rest % 1000, 3);
}

// A wide decimal comes without zeros at its end.
std::string withDecimals(std::string text, std::size_t scale) {
    if (scale == 0) return text;
    const std::size_t point = std::min(text.find('.'), text.size());
    if (point == text.size()) text += '.';
    text.resize(point + 1 + scale, '0');
    return text;
}

std::string shownCell(const ado::ColumnInfo& column, const ado::ColumnStore& store,
                      std::size_t row) {
    using ado::DataTypeEnum;
    if (store.cell(row) == ado::ColumnStore::Cell::Null) return "NULL";
    if (column.wideDecimal) return withDecimals(std::string(store.bytes(row)), column.numericScale);
    if (column.type == DataTypeEnum::adVariant) {
        const ado::VariantCell own = ado::unpackVariantCell(store.bytes(row));
        ado::ColumnStore alone;
        ado::append(alone, own.value);
        return shownCell(own.column, alone, 0);
    }
    switch (ado::storageOf(column.type)) {
        case ado::Storage::Integer:
            if (column.type == DataTypeEnum::adCurrency) return scaled(store.integer(row), 4);
            if (column.type == DataTypeEnum::adNumeric || column.type == DataTypeEnum::adDecimal)
                return scaled(store.integer(row), column.numericScale);
            return plain::text(store.integer(row));
        case ado::Storage::Real:
            if (column.type == DataTypeEnum::adDBTimeStamp) return dateText(store.real(row), true);
            if (column.type == DataTypeEnum::adDBDate) return dateText(store.real(row), false);
            return plain::shortest(store.real(row));
        case ado::Storage::Text:
            return withBlanksShown(std::string(store.bytes(row)));
        case ado::Storage::Binary:
            break;
    }
    return hexadecimal(store.bytes(row));
}

}  // namespace

std::vector<ScriptBlock> ScriptFile::blocks() const {
    std::ifstream stream(path);
    if (!stream) throw std::runtime_error("cannot read " + path.string());
    std::vector<ScriptBlock> result;
    bool inside = false;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (line.empty()) {
            if (inside) checkBlock(*this, result.back());
            inside = false;
        } else if (line.front() == '#' && !inside) {
            continue;
        } else if (!inside) {
            result.push_back(headOf(*this, line, number));
            inside = true;
        } else if (line == "----" && !result.back().expects) {
            result.back().expects = true;
        } else if (result.back().expects) {
            result.back().expected.push_back(line);
        } else {
            result.back().sql += (result.back().sql.empty() ? "" : "\n") + line;
        }
    }
    if (inside) checkBlock(*this, result.back());
    if (result.empty()) wrong(*this, number, "the file has no block");
    return result;
}

std::vector<ScriptFile> scriptFiles(const std::filesystem::path& folder) {
    std::vector<ScriptFile> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.path().extension() != ".test") continue;
        const auto name = std::filesystem::relative(entry.path(), folder).replace_extension();
        files.push_back({name.generic_string(), entry.path()});
    }
    std::ranges::sort(files, {}, &ScriptFile::name);
    return files;
}

std::vector<std::string> shownRows(const ado::Result& result) {
    std::vector<std::string> rows;
    const std::size_t count = result.rows.empty() ? 0 : result.rows.front().size();
    for (std::size_t row = 0; row < count; ++row) {
        std::string text;
        for (std::size_t i = 0; i < result.columns.size(); ++i) {
            text += (i == 0 ? "" : " | ") + shownCell(result.columns[i], result.rows[i], row);
        }
        rows.push_back(std::move(text));
    }
    return rows;
}

}  // namespace kap::test

#include "migrate/table_digest.hpp"

#include "base/hexadecimal.hpp"
#include "data/cell_text.hpp"

namespace kap::migrate {
namespace {

using ado::DataTypeEnum;

constexpr std::uint64_t kStart = 14695981039346656037ULL;
constexpr std::uint64_t kFactor = 1099511628211ULL;
constexpr unsigned char kNullMark = 1;
constexpr unsigned char kValueMark = 2;

void mix(std::uint64_t& hash, unsigned char byte) {
    hash = (hash ^ byte) * kFactor;
}

// Takes from a value's text what databases write differently: zeros behind the point, blanks that
// fill a fixed length, the braces and letters of an identifier.
void makeComparable(const ado::ColumnDefinition& column, std::string& text) {
    const bool number = column.type == DataTypeEnum::adCurrency ||
                        column.type == DataTypeEnum::adNumeric ||
                        column.type == DataTypeEnum::adDecimal;
    // Times have as many decimals as the database gives them, also where they come as texts.
    const bool time = column.type == DataTypeEnum::adDBTimeStamp ||
                      column.declared.starts_with("datetime2") ||
                      column.declared.starts_with("time(");
    if ((number || time) && text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.ends_with('.')) {
            text.pop_back();
        }
    }
    if (column.type == DataTypeEnum::adChar || column.type == DataTypeEnum::adWChar) {
        text.erase(text.find_last_not_of(' ') + 1);
    }
    if (column.type == DataTypeEnum::adGUID) {
        std::erase_if(text, [](char letter) { return letter == '{' || letter == '}'; });
        for (char& letter : text) {
            letter = letter >= 'A' && letter <= 'F' ? static_cast<char>(letter + 32) : letter;
        }
    }
}

}  // namespace

void TableDigest::add(const std::vector<ado::ColumnDefinition>& columns, const ado::Result& page,
                      std::size_t first) {
    std::string text;
    for (std::size_t row = first; row < page.rows.front().size(); ++row) {
        std::uint64_t hash = kStart;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (columns[i].rowVersion) {
                continue;
            }
            text.clear();
            const bool holds = ado::appendCellText(page.columns[i], page.rows[i], row, text);
            mix(hash, holds ? kValueMark : kNullMark);
            makeComparable(columns[i], text);
            for (const char letter : text) {
                mix(hash, static_cast<unsigned char>(letter));
            }
        }
        ++rows;
        sum += hash;
    }
}

std::string TableDigest::text() const {
    constexpr std::size_t kDigits = 16;
    return hex::ofNumber(sum, hex::Case::Lower, kDigits);
}

}  // namespace kap::migrate

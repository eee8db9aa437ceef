#include "cli/commands/export/fitting_schema.hpp"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>
#include <kaputil/platform/profile_file.hpp>

#include "base/ascii.hpp"
#include "cli/output/usage_error.hpp"
#include "migrate/copied_tables.hpp"
#include "platform/whole_file.hpp"

namespace kap::cli {
namespace {

using ado::DataTypeEnum;
namespace fs = std::filesystem;

struct FittingColumn {
    std::string word;  // the type's
    std::size_t width = 0;
};

constexpr std::size_t kMostOfChar = 255;

FittingColumn textColumn(std::size_t characters) {
    const std::size_t width = std::max<std::size_t>(characters, 1);
    return {width <= kMostOfChar ? "Char" : "LongChar", width};
}

// The longest text of a column.
std::size_t longestText(const Ref<ado::Recordset>& rows, std::int32_t column) {
    std::size_t longest = 0;
    if (rows->RecordCount() > 0) {
        rows->MoveFirst();
    }
    for (; !rows->Eof(); rows->MoveNext()) {
        const Variant value = rows->Fields()->Item(column)->Value();
        longest = std::max(longest, value.isNull() ? 0 : convert::toString(value).size());
    }
    return longest;
}

// A size without limit says nothing about the values.
bool isUnlimited(const Ref<ado::Field>& field) {
    constexpr std::int32_t kMostOfARow = 8000;
    return field->DefinedSize() > kMostOfARow;
}

// Signs and points take room, too.
FittingColumn fittingColumn(const Ref<ado::Recordset>& rows, std::int32_t column) {
    const auto field = rows->Fields()->Item(column);
    switch (field->Type()) {
        case DataTypeEnum::adUnsignedTinyInt:
            return {"Byte", 3};
        case DataTypeEnum::adSmallInt:
            return {"Short", 6};
        case DataTypeEnum::adInteger:
            return {"Integer", 11};
        case DataTypeEnum::adBigInt:
            return textColumn(20);
        case DataTypeEnum::adSingle:
            return {"Single", 14};
        case DataTypeEnum::adDouble:
            return {"Float", 23};
        case DataTypeEnum::adCurrency:
            return {"Currency", 21};
        case DataTypeEnum::adDecimal:
        case DataTypeEnum::adNumeric:
            return textColumn(static_cast<std::size_t>(field->Precision()) + 3);
        case DataTypeEnum::adBoolean:
            return {"Bit", 1};
        case DataTypeEnum::adDBDate:
        case DataTypeEnum::adDBTimeStamp:
            return {"Date", 23};
        case DataTypeEnum::adGUID:
            return textColumn(38);
        case DataTypeEnum::adChar:
        case DataTypeEnum::adVarChar:
        case DataTypeEnum::adWChar:
        case DataTypeEnum::adVarWChar:
            return textColumn(isUnlimited(field) ? longestText(rows, column)
                                                 : static_cast<std::size_t>(field->DefinedSize()));
        case DataTypeEnum::adBinary:
        case DataTypeEnum::adVarBinary:
        case DataTypeEnum::adLongVarBinary:
            throw UsageError("the column " + field->Name().utf8() +
                             " holds bytes, which a file of texts cannot");
        default:
            return textColumn(longestText(rows, column));
    }
}

fs::path schemaIn(const fs::path& folder) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        if (equalsIgnoringCase(entry.path().filename().string(), "schema.ini")) {
            return entry.path();
        }
    }
    return {};
}

// Takes a section out of a file, whose other lines stay as they are.
void removeSection(const fs::path& path, const std::string& section) {
    const std::string before =
        platform::readFile(path, platform::kLargestSettings).value_or(std::string());
    std::string kept;
    bool inside = false;
    for (std::size_t start = 0; start < before.size();) {
        const std::size_t end = std::min(before.find('\n', start), before.size() - 1) + 1;
        const std::string_view line = std::string_view(before).substr(start, end - start);
        const std::string_view text = trimmed(line, " \t\r\n");
        if (text.starts_with('[')) {
            inside = equalsIgnoringCase(text, "[" + section + "]");
        }
        kept += inside ? std::string_view() : line;
        start = end;
    }
    if (kept.size() != before.size()) {
        platform::replaceFile(path, kept, platform::FileAccess::Shared);
    }
}

}  // namespace

void writeFittingSchema(ado::Connection& connection, const std::string& query,
                        const std::string& folder, const std::string& file) {
    const auto rows = migrate::opened(connection, query);
    const fs::path path(std::u8string(folder.begin(), folder.end()));
    if (const fs::path schema = schemaIn(path); !schema.empty()) {
        removeSection(schema, file);
    }
    const std::u8string iniPath = (path / "Schema.ini").u8string();
    const String ini(std::string(iniPath.begin(), iniPath.end()));
    const auto write = [&](const std::string& key, const std::string& value) {
        platform::changeProfile(String(file), String(key), String(value), ini);
    };
    write("ColNameHeader", "False");
    write("Format", "FixedLength");
    write("CharacterSet", "OEM");
    write("CurrencyDigits", "4");
    for (std::int32_t i = 0; i < rows->Fields()->Count(); ++i) {
        const auto field = rows->Fields()->Item(i);
        const FittingColumn column = fittingColumn(rows, i);
        write("col" + plain::text(i + 1),
              field->Name().utf8() + " " + column.word + " Width " + plain::text(column.width));
    }
}

}  // namespace kap::cli

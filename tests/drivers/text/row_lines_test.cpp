#include "drivers/text/row_lines.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <kaputil/automation/error.hpp>
#include <kaputil/automation/locale.hpp>

#include "data/cell_value.hpp"
#include "support/seed.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap::ado::text_files {
namespace {

using ado::DataTypeEnum;

constexpr DataTypeEnum kTypes[] = {
    DataTypeEnum::adInteger,     DataTypeEnum::adSmallInt, DataTypeEnum::adUnsignedTinyInt,
    DataTypeEnum::adDouble,      DataTypeEnum::adSingle,   DataTypeEnum::adCurrency,
    DataTypeEnum::adDBTimeStamp, DataTypeEnum::adVarChar,  DataTypeEnum::adVarWChar,
    DataTypeEnum::adBoolean,     DataTypeEnum::adNumeric};
constexpr const char* kKinds[] = {"Char", "Integer", "Float", "Currency", "Date", "Bit"};

// Lines of columns as the result holds them, and as texts one by one.
class RowLinesTest : public testing::Test {
protected:
    [[nodiscard]] LineWriter writer(const std::string& section) const {
        test::putFile(folder_.file("schema.ini"), "[prova.txt]\r\n" + section);
        return LineWriter(readSchema(folder_.file(""), u"prova.txt"));
    }

    static std::string written(const LineWriter& writer, const ado::ColumnInfo& info,
                               const ado::ColumnStore& values, std::size_t row) {
        RowLines lines(writer, {{&info, &values}}, "€", "EUR");
        std::string text = "vor";
        try {
            lines.append(text, row, 1);
        } catch (const AutomationError& error) {
            EXPECT_EQ(text, "vor");
            return "error " + error.description().utf8();
        }
        return text.substr(3);
    }

    static std::string expected(const LineWriter& writer, const ado::ColumnInfo& info,
                                const ado::ColumnStore& values, std::size_t row) {
        const Column& column = writer.schema().columns.front();
        const Variant value = ado::toVariant(info, values, row);
        const bool euro = value.isString() && value.as<String>() == String(u"€");
        try {
            if (value.isNull() || euro) {
                return writer.line({String("EUR").view().substr(0, column.width.value_or(3))}, 1);
            }
            const ado::Value text = ado::toCell(columnInfo(column), value);
            return writer.line({String(std::get<std::string>(text))}, 1);
        } catch (const AutomationError& error) {
            return "error " + error.description().utf8();
        }
    }

    static ado::ColumnInfo infoOf(DataTypeEnum type) {
        ado::ColumnInfo info;
        info.name = "V";
        info.type = type;
        info.definedSize = 40;
        info.numericScale = type == DataTypeEnum::adNumeric ? 2 : 255;
        info.precision = 18;
        return info;
    }

    // Fractions of few digits, which most numbers are, and of many; small, large and very large.
    double anyReal(bool single) {
        const auto pick = [&](std::int64_t low, std::int64_t high) {
            return std::uniform_int_distribution<std::int64_t>(low, high)(random_);
        };
        static constexpr double kParts[] = {1, 4, 10, 64, 100, 1000, 1e4, 1e5, 3};
        const double part = kParts[pick(0, std::size(kParts) - 1)];
        const std::int64_t limit = pick(0, 1) == 0 ? 20'000 : 9'007'199'254'740'993;
        double value = static_cast<double>(pick(-limit, limit)) / part;
        if (pick(0, 9) == 0) {
            value *= 1e290;
        }
        if (!single) {
            return pick(0, 3) == 0 ? std::nextafter(value, 0) : value;
        }
        const auto narrow = static_cast<float>(std::fmod(value, 1e9));
        return static_cast<double>(pick(0, 3) == 0 ? std::nextafter(narrow, 0.0F) : narrow);
    }

    void addValue(ado::ColumnStore& values, DataTypeEnum type) {
        static const std::vector<std::string> kTexts = {"Rossi",
                                                        "",
                                                        "€",
                                                        "€ 5",
                                                        "Perché",
                                                        "a \"b\"",
                                                        "12",
                                                        "1,5",
                                                        "25/12/2003",
                                                        "Vero",
                                                        "due\r\nrighe",
                                                        "東京",
                                                        " x ",
                                                        "lungo lungo lungo lungo"};
        const auto pick = [&](std::int64_t low, std::int64_t high) {
            return std::uniform_int_distribution<std::int64_t>(low, high)(random_);
        };
        if (pick(0, 9) == 0) {
            values.appendNull();
            return;
        }
        switch (ado::storageOf(type)) {
            case ado::Storage::Integer:
                if (type == DataTypeEnum::adBoolean) {
                    values.appendInteger(pick(0, 1));
                } else if (type == DataTypeEnum::adUnsignedTinyInt) {
                    values.appendInteger(pick(0, 255));
                } else if (type == DataTypeEnum::adSmallInt) {
                    values.appendInteger(pick(-32768, 32767));
                } else {
                    const bool large = pick(0, 1) == 0;
                    const std::int64_t limit = large ? 2'000'000'000 : 30'000;
                    const std::int64_t step = pick(0, 1) == 0 ? 1 : 100;
                    values.appendInteger(pick(-limit, limit) / step * step);
                }
                return;
            case ado::Storage::Real:
                if (type == DataTypeEnum::adDBTimeStamp) {
                    const double part =
                        pick(0, 1) == 0 ? 0 : static_cast<double>(pick(0, 86399)) / 86400;
                    values.appendReal(static_cast<double>(pick(-1000, 60000)) + part);
                } else {
                    values.appendReal(anyReal(type == DataTypeEnum::adSingle));
                }
                return;
            default:
                values.appendBytes(kTexts[static_cast<std::size_t>(
                    pick(0, static_cast<std::int64_t>(kTexts.size()) - 1))]);
        }
    }

    void holdAgainst(const std::string& settings) {
        for (const char* kind : kKinds) {
            const LineWriter lines = writer(settings + "\r\nCol1=V " + kind + " Width 18\r\n");
            for (const DataTypeEnum type : kTypes) {
                const ado::ColumnInfo info = infoOf(type);
                ado::ColumnStore values;
                for (std::size_t row = 0; row < 120; ++row) {
                    addValue(values, type);
                    EXPECT_EQ(written(lines, info, values, row), expected(lines, info, values, row))
                        << settings << " " << kind << " type " << static_cast<int>(type);
                }
            }
        }
    }

    test::TemporaryFolder folder_;
    std::minstd_rand random_{test::randomSeed()};
};

TEST_F(RowLinesTest, AreThoseOfTheTextsOfTheValues) {
    for (const char* locale : {"it-IT", "en-US"}) {
        const LocaleScope scope(locale);
        for (const char* settings :
             {"Format=FixedLength\r\nCharacterSet=OEM", "Format=FixedLength\r\nCharacterSet=UTF-8",
              "Format=CSVDelimited\r\nCharacterSet=ANSI",
              "Format=TabDelimited\r\nCharacterSet=Unicode",
              "Format=Delimited(;)\r\nNumberDigits=2\r\nCurrencyDigits=0\r\nDecimalSymbol=.",
              "Format=FixedLength\r\nCurrencyDigits=3\r\nCurrencySymbol=\x80\r\nDecimalSymbol=\xB7",
              "Format=FixedLength\r\nCurrencyDigits=4\r\nDateTimeFormat=yyyy-mm-dd"}) {
            holdAgainst(settings);
        }
    }
}

TEST_F(RowLinesTest, LeaveColumnsWithoutSourceBlank) {
    const LocaleScope italian("it-IT");
    const LineWriter lines =
        writer("Format=FixedLength\r\nCol1=A Char Width 3\r\nCol2=B Integer Width 3\r\n");
    const ado::ColumnInfo info = infoOf(DataTypeEnum::adInteger);
    ado::ColumnStore values;
    values.appendInteger(7);
    RowLines source(lines, {{}, {&info, &values}}, "€", "EUR");
    std::string text;
    source.append(text, 0, 1);
    EXPECT_EQ(text, "     7\r\n");
}

}  // namespace
}  // namespace kap::ado::text_files

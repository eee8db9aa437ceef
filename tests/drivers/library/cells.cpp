#include "cells.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace kap::test::replay {
namespace {

constexpr auto kTypes =
    std::to_array<std::pair<const char*, SQLSMALLINT>>({{"int", SQL_INTEGER},
                                                        {"smallint", SQL_SMALLINT},
                                                        {"tinyint", SQL_TINYINT},
                                                        {"bigint", SQL_BIGINT},
                                                        {"bit", SQL_BIT},
                                                        {"float", SQL_DOUBLE},
                                                        {"real", SQL_REAL},
                                                        {"decimal", SQL_DECIMAL},
                                                        {"money", SQL_DECIMAL},
                                                        {"varchar", SQL_VARCHAR},
                                                        {"nvarchar", SQL_WVARCHAR},
                                                        {"nchar", SQL_WCHAR},
                                                        {"ntext", SQL_WLONGVARCHAR},
                                                        {"varbinary", SQL_VARBINARY},
                                                        {"binary", SQL_BINARY},
                                                        {"timestamp", SQL_BINARY},
                                                        {"image", SQL_LONGVARBINARY},
                                                        {"date", SQL_TYPE_DATE},
                                                        {"datetime", SQL_TYPE_TIMESTAMP},
                                                        {"guid", SQL_GUID}});

std::string bytesOf(const std::string& hexadecimal) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hexadecimal.size(); i += 2) {
        bytes += static_cast<char>(std::strtol(hexadecimal.substr(i, 2).c_str(), nullptr, 16));
    }
    return bytes;
}

std::string hexadecimalOf(const char* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X",
                      static_cast<unsigned>(static_cast<unsigned char>(bytes[i])));
        text += digits.data();
    }
    return text;
}

template <class Value>
SQLRETURN putFixed(const Value& value, void* target, SQLLEN* length) {
    std::memcpy(target, &value, sizeof(value));
    *length = sizeof(value);
    return SQL_SUCCESS;
}

SQL_TIMESTAMP_STRUCT stampOf(const std::string& text) {
    SQL_TIMESTAMP_STRUCT stamp{};
    unsigned fraction = 0;
    std::array<char, 10> digits{};
    std::sscanf(text.c_str(), "%hd-%hu-%hu %hu:%hu:%hu.%9[0-9]", &stamp.year, &stamp.month,
                &stamp.day, &stamp.hour, &stamp.minute, &stamp.second, digits.data());
    for (std::size_t i = 0; i < 9; ++i) {
        fraction = fraction * 10 +
                   (i < std::strlen(digits.data()) ? static_cast<unsigned>(digits[i] - '0') : 0U);
    }
    stamp.fraction = fraction;
    return stamp;
}

std::string shownStamp(const SQL_TIMESTAMP_STRUCT& stamp) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02u:%02u:%02u.%06u", stamp.year,
                  stamp.month, stamp.day, stamp.hour, stamp.minute, stamp.second,
                  static_cast<unsigned>(stamp.fraction / 1000));
    return text.data();
}

// Texts and bytes may come in pieces.
SQLRETURN putPiece(const std::string& bytes, std::size_t terminator, void* target, SQLLEN room,
                   SQLLEN* length, std::size_t& offset) {
    if (offset > 0 && offset >= bytes.size()) {
        return SQL_NO_DATA;
    }
    const std::size_t left = bytes.size() - offset;
    const std::size_t most = static_cast<std::size_t>(room) - terminator;
    const std::size_t count = std::min(
        left, most / std::max<std::size_t>(terminator, 1) * std::max<std::size_t>(terminator, 1));
    std::memcpy(target, bytes.data() + offset, count);
    std::memset(static_cast<char*>(target) + count, 0, terminator);
    *length = static_cast<SQLLEN>(left);
    offset += std::max<std::size_t>(count, 1);
    return count < left ? SQL_SUCCESS_WITH_INFO : SQL_SUCCESS;
}

std::string shownValue(const BoundParameter& parameter) {
    const auto length =
        parameter.length == nullptr ? SQLLEN{0} : std::max<SQLLEN>(*parameter.length, 0);
    const auto* bytes = static_cast<const char*>(parameter.value);
    switch (parameter.form) {
        case SQL_C_WCHAR:
            return plainText(static_cast<const SQLWCHAR*>(parameter.value),
                             static_cast<SQLINTEGER>(length / 2));
        case SQL_C_CHAR:
            return {bytes, static_cast<std::size_t>(length)};
        case SQL_C_BINARY:
            return hexadecimalOf(bytes, static_cast<std::size_t>(length));
        case SQL_C_BIT:
            return *bytes != 0 ? "1" : "0";
        case SQL_C_SBIGINT:
            return std::to_string(*static_cast<const SQLBIGINT*>(parameter.value));
        case SQL_C_DOUBLE: {
            std::array<char, 40> text{};
            std::snprintf(text.data(), text.size(), "%.15g",
                          *static_cast<const double*>(parameter.value));
            return text.data();
        }
        case SQL_C_TYPE_TIMESTAMP:
            return shownStamp(*static_cast<const SQL_TIMESTAMP_STRUCT*>(parameter.value));
        case SQL_C_TYPE_DATE: {
            const auto& date = *static_cast<const SQL_DATE_STRUCT*>(parameter.value);
            return shownStamp({date.year, date.month, date.day, 0, 0, 0, 0}).substr(0, 10);
        }
        default:
            return "form " + std::to_string(parameter.form);
    }
}

}  // namespace

SQLSMALLINT typeCode(const std::string& type) {
    const auto* const found =
        std::ranges::find_if(kTypes, [&](const auto& each) { return type == each.first; });
    return found == kTypes.end() ? SQL_VARCHAR : found->second;
}

std::u16string wideText(const std::string& utf8) {
    std::u16string text;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto first = static_cast<unsigned char>(utf8[i]);
        const auto at = [&](std::size_t place) {
            return static_cast<unsigned>(static_cast<unsigned char>(utf8[i + place]) & 0x3FU);
        };
        if (first < 0x80) {
            text += static_cast<char16_t>(first);
            i += 1;
        } else if (first < 0xE0) {
            text += static_cast<char16_t>(((first & 0x1FU) << 6U) | at(1));
            i += 2;
        } else {
            text += static_cast<char16_t>(((first & 0x0FU) << 12U) | (at(1) << 6U) | at(2));
            i += 3;
        }
    }
    return text;
}

std::string plainText(const SQLWCHAR* text, SQLINTEGER length) {
    std::string utf8;
    const auto end = length == SQL_NTS ? SQLINTEGER{0x7FFFFFFF} : length;
    for (SQLINTEGER i = 0; i < end && (length != SQL_NTS || text[i] != 0); ++i) {
        const auto unit = static_cast<unsigned>(text[i]);
        if (unit < 0x80) {
            utf8 += static_cast<char>(unit);
        } else if (unit < 0x800) {
            utf8 += static_cast<char>(0xC0U | (unit >> 6U));
            utf8 += static_cast<char>(0x80U | (unit & 0x3FU));
        } else {
            utf8 += static_cast<char>(0xE0U | (unit >> 12U));
            utf8 += static_cast<char>(0x80U | ((unit >> 6U) & 0x3FU));
            utf8 += static_cast<char>(0x80U | (unit & 0x3FU));
        }
    }
    return utf8;
}

SQLRETURN putCell(const std::string& cell, SQLSMALLINT form, void* target, SQLLEN room,
                  SQLLEN* length, std::size_t& offset) {
    SQLLEN unused = 0;
    SQLLEN* told = length == nullptr ? &unused : length;
    if (cell == "NULL") {
        *told = SQL_NULL_DATA;
        return SQL_SUCCESS;
    }
    switch (form) {
        case SQL_C_WCHAR: {
            const std::u16string text = wideText(cell);
            return putPiece({reinterpret_cast<const char*>(text.data()), text.size() * 2}, 2,
                            target, room, told, offset);
        }
        case SQL_C_CHAR:
            return putPiece(cell, 1, target, room, told, offset);
        case SQL_C_BINARY:
            return putPiece(bytesOf(cell), 0, target, room, told, offset);
        case SQL_C_BIT:
            return putFixed<unsigned char>(cell == "1" ? 1 : 0, target, told);
        case SQL_C_SBIGINT:
            return putFixed<SQLBIGINT>(std::atoll(cell.c_str()), target, told);
        case SQL_C_DOUBLE:
            return putFixed(std::atof(cell.c_str()), target, told);
        case SQL_C_TYPE_TIMESTAMP:
            return putFixed(stampOf(cell), target, told);
        case SQL_C_TYPE_DATE: {
            const SQL_TIMESTAMP_STRUCT stamp = stampOf(cell + " 00:00:00");
            return putFixed(SQL_DATE_STRUCT{stamp.year, stamp.month, stamp.day}, target, told);
        }
        default:
            return SQL_ERROR;
    }
}

std::string shownParameter(const BoundParameter& parameter) {
    const auto* const found = std::ranges::find_if(
        kTypes, [&](const auto& each) { return parameter.type == each.second; });
    const std::string type =
        found == kTypes.end() ? std::to_string(parameter.type) : std::string(found->first);
    const bool isNull = parameter.length != nullptr && *parameter.length == SQL_NULL_DATA;
    return type + " " + (isNull ? "NULL" : shownValue(parameter));
}

}  // namespace kap::test::replay

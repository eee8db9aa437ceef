// Asks the host's own automation functions what they make of the cases on standard input, and
// prints each case with the answer. Built for Windows; see regenerate.sh.
//
// A case is a line of fields separated by tabs: operation, locale, arguments. A value is written
// "Type:text" with '.' as decimal point, a Date as its number of days; "\t", "\n", "\r", "\\" and
// "\uXXXX" stand for what is not written as it is.
#include <windows.h>

#include <oleauto.h>

#include <charconv>
#include <cstdint>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

std::wstring widen(std::string_view utf8) {
    std::wstring out(utf8.size(), L'\0');
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                         out.data(), static_cast<int>(out.size()));
    out.resize(static_cast<std::size_t>(size));
    return out;
}

std::wstring unescape(std::wstring_view text) {
    const std::map<wchar_t, wchar_t> plain = {
        {L't', L'\t'}, {L'n', L'\n'}, {L'r', L'\r'}, {L'\\', L'\\'}};
    std::wstring out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != L'\\') {
            out.push_back(text[i]);
        } else if (text[++i] == L'u') {
            out.push_back(
                static_cast<wchar_t>(std::stoi(std::wstring(text.substr(i + 1, 4)), nullptr, 16)));
            i += 4;
        } else {
            out.push_back(plain.at(text[i]));
        }
    }
    return out;
}

std::string escape(std::wstring_view text) {
    std::string out;
    for (const wchar_t unit : text) {
        const bool printable = unit >= 0x20 && unit != 0x7F && unit != L'\\' &&
                               (unit < 0xD800 || unit > 0xDFFF) && unit != 0xA0 &&
                               (unit < 0x2000 || unit > 0x206F);
        if (printable) {
            char utf8[4];
            const int size = WideCharToMultiByte(CP_UTF8, 0, &unit, 1, utf8, 4, nullptr, nullptr);
            out.append(utf8, static_cast<std::size_t>(size));
        } else {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04X", static_cast<unsigned>(unit));
            out += code;
        }
    }
    return out;
}

template <class Number>
Number read(std::string_view text) {
    Number value{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) {
        throw std::runtime_error("no number: " + std::string(text));
    }
    return value;
}

template <class Number>
std::string shown(Number value) {
    char text[400];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

// "-12.50" as its digits and its scale.
DECIMAL readDecimal(std::string_view text) {
    DECIMAL value{};
    for (const char unit : text) {
        if (unit == '-') {
            value.sign = DECIMAL_NEG;
        } else if (unit == '.') {
            value.scale = 1;
        } else {
            std::uint64_t low = static_cast<std::uint64_t>(value.Lo32) * 10 +
                                static_cast<std::uint64_t>(unit - '0');
            value.Lo32 = static_cast<ULONG>(low);
            std::uint64_t middle = static_cast<std::uint64_t>(value.Mid32) * 10 + (low >> 32);
            value.Mid32 = static_cast<ULONG>(middle);
            value.Hi32 = static_cast<ULONG>(value.Hi32 * 10 + (middle >> 32));
            value.scale = static_cast<BYTE>(value.scale == 0 ? 0 : value.scale + 1);
        }
    }
    value.scale = static_cast<BYTE>(value.scale == 0 ? 0 : value.scale - 1);
    return value;
}

std::string shown(DECIMAL value) {
    std::string reversed;
    const int scale = value.scale;
    const bool zero = value.Hi32 == 0 && value.Mid32 == 0 && value.Lo32 == 0;
    do {
        std::uint64_t rest = 0;
        for (ULONG* word : {&value.Hi32, &value.Mid32, &value.Lo32}) {
            const std::uint64_t part = (rest << 32) | *word;
            *word = static_cast<ULONG>(part / 10);
            rest = part % 10;
        }
        reversed.push_back(static_cast<char>('0' + rest));
        if (static_cast<int>(reversed.size()) == scale) {
            reversed.push_back('.');
        }
    } while (value.Hi32 != 0 || value.Mid32 != 0 || value.Lo32 != 0 ||
             static_cast<int>(reversed.size()) < scale + (scale == 0 ? 1 : 2));
    if (value.sign != 0 && !zero) {
        reversed.push_back('-');
    }
    return {reversed.rbegin(), reversed.rend()};
}

CY readCurrency(std::string_view text) {
    const DECIMAL read = readDecimal(text);
    std::int64_t scaled = static_cast<std::int64_t>(read.Lo64);
    for (int i = read.scale; i < 4; ++i) {
        scaled *= 10;
    }
    CY value{};
    value.int64 = read.sign != 0 ? -scaled : scaled;
    return value;
}

std::string shown(CY value) {
    DECIMAL decimal{};
    const auto scaled = value.int64;
    decimal.Lo64 = scaled < 0 ? 0 - static_cast<ULONGLONG>(scaled) : static_cast<ULONGLONG>(scaled);
    decimal.sign = scaled < 0 ? DECIMAL_NEG : 0;
    decimal.scale = 4;
    return shown(decimal);
}

const std::map<std::string, VARTYPE, std::less<>> kTypes = {
    {"Empty", VT_EMPTY}, {"Null", VT_NULL},    {"Integer", VT_I2},  {"Long", VT_I4},
    {"Single", VT_R4},   {"Double", VT_R8},    {"Currency", VT_CY}, {"Date", VT_DATE},
    {"String", VT_BSTR}, {"Boolean", VT_BOOL}, {"Byte", VT_UI1},    {"Decimal", VT_DECIMAL}};

VARIANT readValue(std::string_view field) {
    const std::size_t colon = field.find(':');
    const std::string_view text = colon == field.npos ? "" : field.substr(colon + 1);
    VARIANT value;
    VariantInit(&value);
    const VARTYPE type = kTypes.at(std::string(field.substr(0, colon)));
    switch (type) {
        case VT_I2:
            value.iVal = read<short>(text);
            break;
        case VT_I4:
            value.lVal = read<int>(text);
            break;
        case VT_R4:
            value.fltVal = read<float>(text);
            break;
        case VT_R8:
            value.dblVal = read<double>(text);
            break;
        case VT_CY:
            value.cyVal = readCurrency(text);
            break;
        case VT_DATE:
            value.date = read<double>(text);
            break;
        case VT_BSTR: {
            const std::wstring wide = unescape(widen(text));
            value.bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
            break;
        }
        case VT_BOOL:
            value.boolVal = text == "True" ? VARIANT_TRUE : VARIANT_FALSE;
            break;
        case VT_UI1:
            value.bVal = static_cast<BYTE>(read<int>(text));
            break;
        case VT_DECIMAL:
            value.decVal = readDecimal(text);
            break;
        default:
            break;
    }
    value.vt = type;
    return value;
}

std::string shown(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return "Empty";
        case VT_NULL:
            return "Null";
        case VT_I2:
            return "Integer:" + shown(static_cast<int>(value.iVal));
        case VT_I4:
            return "Long:" + shown(static_cast<int>(value.lVal));
        case VT_R4:
            return "Single:" + shown(value.fltVal);
        case VT_R8:
            return "Double:" + shown(value.dblVal);
        case VT_CY:
            return "Currency:" + shown(value.cyVal);
        case VT_DATE:
            return "Date:" + shown(value.date);
        case VT_BSTR:
            return "String:" + escape({value.bstrVal, SysStringLen(value.bstrVal)});
        case VT_BOOL:
            return value.boolVal != 0 ? "Boolean:True" : "Boolean:False";
        case VT_UI1:
            return "Byte:" + shown(static_cast<int>(value.bVal));
        case VT_DECIMAL:
            return "Decimal:" + shown(value.decVal);
        default:
            return "type " + shown(static_cast<int>(value.vt));
    }
}

std::string failure(HRESULT result) {
    switch (result) {
        case DISP_E_TYPEMISMATCH:
        case DISP_E_BADVARTYPE:
            return "error 13";
        case DISP_E_OVERFLOW:
            return "error 6";
        case DISP_E_DIVBYZERO:
            return "error 11";
        case E_INVALIDARG:
            return "error 5";
        default:
            char text[24];
            std::snprintf(text, sizeof text, "failure %08lX", static_cast<unsigned long>(result));
            return text;
    }
}

// Only the user's own language: some functions take no other. Its settings are those of the
// library's locale table.
LCID userLocale = 0;

void chooseLocale(const std::string& name) {
    const std::map<std::string, LCID> known = {
        {"it-IT", 0x0410}, {"en-US", 0x0409}, {"en-GB", 0x0809}};
    userLocale = known.at(name);
    if (GetUserDefaultLCID() != userLocale) {
        throw std::runtime_error("the user's language is not " + name);
    }
    if (name == "it-IT") {
        SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SSHORTDATE, L"dd/MM/yyyy");
    }
}

using Fields = std::vector<std::string>;

std::string change(const Fields& fields) {
    VARIANT value = readValue(fields.at(2));
    VARIANT result;
    VariantInit(&result);
    const HRESULT done = VariantChangeTypeEx(&result, &value, userLocale, VARIANT_LOCALBOOL,
                                             kTypes.at(fields.at(3)));
    return FAILED(done) ? failure(done) : shown(result);
}

// A date read from a text without a year, whose year is this one, is shown without it.
std::string dayAndMonth(const Fields& fields) {
    VARIANT value = readValue(fields.at(2));
    DATE date = 0;
    const HRESULT done = VarDateFromStr(value.bstrVal, userLocale, 0, &date);
    if (FAILED(done)) {
        return failure(done);
    }
    SYSTEMTIME read{};
    SYSTEMTIME now{};
    VariantTimeToSystemTime(date, &read);
    GetLocalTime(&now);
    char text[40];
    std::snprintf(text, sizeof text, "%d-%d %d:%d:%d", read.wMonth, read.wDay, read.wHour,
                  read.wMinute, read.wSecond);
    return (read.wYear == now.wYear ? "this year "
                                    : "year " + shown(static_cast<int>(read.wYear)) + " ") +
           text;
}

std::string format(const Fields& fields) {
    VARIANT value = readValue(fields.at(2));
    std::wstring pattern = unescape(widen(fields.at(3)));
    const int firstDay = fields.size() > 4 ? read<int>(fields[4]) : 1;
    const int firstWeek = fields.size() > 5 ? read<int>(fields[5]) : 1;
    BYTE tokens[4096];
    HRESULT done = VarTokenizeFormatString(pattern.data(), tokens, sizeof tokens, firstDay,
                                           firstWeek, userLocale, nullptr);
    if (FAILED(done)) {
        return failure(done);
    }
    BSTR text = nullptr;
    done = VarFormatFromTokens(&value, pattern.data(), tokens, 0, &text, userLocale);
    return FAILED(done) ? failure(done) : "String:" + escape({text, SysStringLen(text)});
}

using Binary = HRESULT(WINAPI*)(VARIANT*, VARIANT*, VARIANT*);

std::string calculate(Binary operation, const Fields& fields) {
    VARIANT left = readValue(fields.at(2));
    VARIANT right = readValue(fields.at(3));
    VARIANT result;
    VariantInit(&result);
    const HRESULT done = operation(&left, &right, &result);
    return FAILED(done) ? failure(done) : shown(result);
}

std::string negate(const Fields& fields) {
    VARIANT value = readValue(fields.at(2));
    VARIANT result;
    VariantInit(&result);
    const HRESULT done = VarNeg(&value, &result);
    return FAILED(done) ? failure(done) : shown(result);
}

std::string compare(const Fields& fields) {
    VARIANT left = readValue(fields.at(2));
    VARIANT right = readValue(fields.at(3));
    const HRESULT done = VarCmp(&left, &right, userLocale, NORM_IGNORECASE);
    const std::map<HRESULT, std::string> known = {
        {VARCMP_LT, "less"}, {VARCMP_EQ, "equal"}, {VARCMP_GT, "greater"}, {VARCMP_NULL, "Null"}};
    return FAILED(done) ? failure(done) : known.at(done);
}

std::string answer(const Fields& fields) {
    const std::map<std::string, Binary> operations = {
        {"add", &VarAdd},    {"subtract", &VarSub},        {"multiply", &VarMul},
        {"divide", &VarDiv}, {"integer divide", &VarIdiv}, {"modulo", &VarMod},
        {"power", &VarPow},  {"concatenate", &VarCat}};
    const std::string& name = fields.at(0);
    if (const auto found = operations.find(name); found != operations.end()) {
        return calculate(found->second, fields);
    }
    const std::map<std::string, std::string (*)(const Fields&)> others = {
        {"change", &change},
        {"day and month", &dayAndMonth},
        {"format", &format},
        {"negate", &negate},
        {"compare", &compare}};
    return others.at(name)(fields);
}

Fields split(const std::string& line) {
    Fields fields;
    std::size_t start = 0;
    for (std::size_t tab = 0; tab != line.npos; start = tab + 1) {
        tab = line.find('\t', start);
        fields.push_back(line.substr(start, tab == line.npos ? tab : tab - start));
    }
    return fields;
}

}  // namespace

int main(int count, char** arguments) {
    std::ios::sync_with_stdio(false);
    try {
        chooseLocale(count > 1 ? arguments[1] : "");
    } catch (const std::exception& error) {
        std::cerr << "probe: " << error.what() << '\n';
        return 2;
    }
    std::string line;
    while (std::getline(std::cin, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        try {
            std::cout << line << '\t' << answer(split(line)) << '\n';
        } catch (const std::exception& error) {
            std::cerr << "probe: " << line << ": " << error.what() << '\n';
            return 1;
        }
    }
}

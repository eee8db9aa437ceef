#include "cli/output/value_text.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "base/quoting.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

// What a Double surely carries.
constexpr int kDoubleDigits = 15;

// The day, the time, or both: what the date has of them.
std::string dateText(Date date) {
    constexpr std::size_t kTimeAt = 11;
    const double day = std::trunc(date.days);
    if (date.days == day) {
        return plain::isoDate(date);
    }
    return plain::isoDateTime(date).substr(day == 0 ? kTimeAt : 0);
}

std::string isoText(Date date) {
    constexpr std::size_t kBlankAt = 10;
    std::string text = plain::isoDateTime(date);
    text[kBlankAt] = 'T';
    return text;
}

std::string currencyText(Currency value) {
    constexpr int kCurrencyScale = 4;
    return Decimal(value.scaled, kCurrencyScale).plainText();
}

// Text that UTF-8 cannot carry is shown with U+FFFD in its place.
std::string utf8For(const String& text) {
    return AutomationError(0, text).what();
}

std::string objectText(const Ref<Object>& object) {
    return object ? object->className().utf8() : "Nothing";
}

// Visits the elements of one dimension from its lower to its upper bound.
template <class Visit>
void forEachIndex(const Array& array, std::vector<std::int32_t>& indexes, Visit visit) {
    const Array::Dimension& dimension = array.dimensions()[indexes.size()];
    indexes.push_back(dimension.lower);
    for (std::size_t i = 0; i < dimension.count; ++i, ++indexes.back()) {
        visit();
    }
    indexes.pop_back();
}

std::string elementsText(const Array& array, std::vector<std::int32_t>& indexes) {
    if (indexes.size() == array.dimensions().size()) {
        return literalText(array.at(indexes));
    }
    std::string out;
    forEachIndex(array, indexes,
                 [&] { out += (out.empty() ? "" : ", ") + elementsText(array, indexes); });
    return "(" + out + ")";
}

Json elementsJson(const Array& array, std::vector<std::int32_t>& indexes) {
    if (indexes.size() == array.dimensions().size()) {
        return jsonValue(array.at(indexes));
    }
    Json out = Json::array();
    forEachIndex(array, indexes, [&] { out.push_back(elementsJson(array, indexes)); });
    return out;
}

std::string boundsText(const Array& array) {
    std::string out;
    for (std::size_t dimension = 1; dimension <= array.dimensions().size(); ++dimension) {
        out += (out.empty() ? "" : ", ") + plain::text(array.lowerBound(dimension)) + " To " +
               plain::text(array.upperBound(dimension));
    }
    return "(" + out + ")";
}

}  // namespace

std::string typeText(const Variant& value) {
    if (!value.isArray()) {
        return std::string(typeName(value.type()));
    }
    const auto& array = value.as<Array>();
    return std::string(typeName(array.elementType())) + boundsText(array);
}

std::string literalText(const Variant& value) {
    std::vector<std::int32_t> indexes;
    switch (value.type()) {
        case VarType::Empty:
            return "Empty";
        case VarType::Null:
            return "Null";
        case VarType::Error:
            return "Missing";
        case VarType::Boolean:
            return value.as<bool>() ? "True" : "False";
        case VarType::Currency:
            return currencyText(value.as<Currency>());
        case VarType::Decimal:
            return value.as<Decimal>().plainText();
        case VarType::Date:
            return "#" + dateText(value.as<Date>()) + "#";
        case VarType::String:
            return inQuotes(utf8For(value.as<String>()));
        case VarType::Object:
            return objectText(value.as<Ref<Object>>());
        case VarType::Array:
            return elementsText(value.as<Array>(), indexes);
        case VarType::Double:
            return plain::general(value.as<double>(), kDoubleDigits);
        case VarType::Single:
            return plain::shortest(value.as<float>());
        default:
            return plain::text(convert::toLong(value));  // Byte, Integer, Long
    }
}

Json jsonValue(const Variant& value) {
    std::vector<std::int32_t> indexes;
    switch (value.type()) {
        case VarType::Empty:
        case VarType::Null:
        case VarType::Error:
            return nullptr;
        case VarType::Boolean:
            return value.as<bool>();
        case VarType::Currency:
            return currencyText(value.as<Currency>());
        case VarType::Decimal:
            return value.as<Decimal>().plainText();
        case VarType::Date:
            return isoText(value.as<Date>());
        case VarType::String:
            return utf8For(value.as<String>());
        case VarType::Object:
            return value.as<Ref<Object>>() ? Json(objectText(value.as<Ref<Object>>())) : Json();
        case VarType::Array:
            return elementsJson(value.as<Array>(), indexes);
        case VarType::Double:
            return value.as<double>();
        case VarType::Single:
            return Json::parse(plain::shortest(value.as<float>()));
        default:
            return convert::toLong(value);
    }
}

}  // namespace kap::cli

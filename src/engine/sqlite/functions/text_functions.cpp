#include <algorithm>
#include <cmath>
#include <utility>

#include <kaputil/automation/plain_text.hpp>

#include "base/quoting.hpp"
#include "base/unicode.hpp"
#include "engine/sqlite/functions/function_support.hpp"
#include "engine/values/exact.hpp"
#include "engine/values/text_units.hpp"
#include "tsql/server_error.hpp"

namespace kap::engine {

namespace {

// What a variable text holds at most; longer results are cut as the server cuts them.
constexpr std::int64_t kMaxTextUnits = 8000;

[[noreturn]] void invalidLength(const char* function) {
    throw tsql::ServerError(tsql::Message::InvalidLength, {function});
}

std::size_t size(std::int64_t count) {
    return static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
}

// kap_len(text): blanks at the end do not count.
Value length(const Arguments& arguments) {
    return static_cast<std::int64_t>(unitLength(withoutTrailingBlanks(arguments.text(0))));
}

// kap_text_bytes(text, width): bytes as the server stores them, one or two a unit.
Value textByteCount(const Arguments& arguments) {
    return static_cast<std::int64_t>(unitLength(arguments.text(0))) * arguments.integer(1);
}

Value upper(const Arguments& arguments) {
    return fromUnits(unicode::upper(toUnits(arguments.text(0))));
}

Value lower(const Arguments& arguments) {
    return fromUnits(unicode::lower(toUnits(arguments.text(0))));
}

Value trimLeft(const Arguments& arguments) {
    return std::string(withoutLeadingBlanks(arguments.text(0)));
}

Value trimRight(const Arguments& arguments) {
    return std::string(withoutTrailingBlanks(arguments.text(0)));
}

// The part of [start, start + count) that lies within the text, positions from 1; a start below 1
// uses up the count.
std::pair<std::size_t, std::size_t> window(std::int64_t start, std::int64_t count) {
    const Wide end = Wide{start} + count;
    const std::int64_t first = std::max<std::int64_t>(start, 1);
    const Wide inside = end - first;
    const Wide limited = std::clamp<Wide>(inside, 0, std::int64_t{1} << 40);
    return {static_cast<std::size_t>(first - 1), static_cast<std::size_t>(limited)};
}

// kap_substring(text, start, count)
Value substring(const Arguments& arguments) {
    if (arguments.integer(2) < 0) invalidLength("LEFT or SUBSTRING");
    const auto [first, count] = window(arguments.integer(1), arguments.integer(2));
    return std::string(unitSlice(arguments.text(0), first, count));
}

// kap_subbytes(bytes, start, count)
Value subbytes(const Arguments& arguments) {
    if (arguments.integer(2) < 0) invalidLength("LEFT or SUBSTRING");
    const auto [first, count] = window(arguments.integer(1), arguments.integer(2));
    const Blob blob = arguments.blob(0);
    return Blob{blob.bytes.substr(std::min(first, blob.bytes.size()), count)};
}

Value left(const Arguments& arguments) {
    if (arguments.integer(1) < 0) invalidLength("LEFT or SUBSTRING");
    return std::string(unitSlice(arguments.text(0), 0, size(arguments.integer(1))));
}

// kap_quotename(name, mark): the mark doubled within, and around it.
Value quoteName(const Arguments& arguments) {
    static constexpr std::pair<char, char> kMarks[] = {{'[', ']'}, {']', ']'}, {'(', ')'},
                                                       {')', ')'}, {'<', '>'}, {'>', '>'},
                                                       {'{', '}'}, {'}', '}'}};
    static constexpr std::string_view kAlike = "'\"`";
    const std::string_view given = arguments.text(1);
    const char mark = given.empty() ? '[' : given.front();
    char open = mark;
    char close = mark;
    for (const auto& [known, end] : kMarks) {
        if (known != mark) continue;
        close = end;
        open = end == ']' ? '[' : end == ')' ? '(' : end == '>' ? '<' : '{';
    }
    const bool quote = open != close || kAlike.find(mark) != std::string_view::npos;
    constexpr std::size_t kLongest = 128;
    if (!quote || unitLength(arguments.text(0)) > kLongest) return {};
    return enclosed(arguments.text(0), open, close);
}

Value right(const Arguments& arguments) {
    if (arguments.integer(1) < 0) {
        throw tsql::ServerError(tsql::Message::InvalidRightLength);
    }
    const std::string_view text = arguments.text(0);
    const std::size_t units = unitLength(text);
    const std::size_t wanted = std::min(size(arguments.integer(1)), units);
    return std::string(text.substr(unitOffset(text, units - wanted)));
}

// A text cut to a limit of units; 0 is none.
std::string cutTo(std::string text, std::int64_t limit) {
    if (limit > 0) text.resize(unitOffset(text, size(limit)));
    return text;
}

// kap_replace(text, what, by, limit): what is found ignoring case.
Value replace(const Arguments& arguments) {
    const std::u16string text = toUnits(arguments.text(0));
    const std::u16string folded = foldedUnits(arguments.text(0));
    const std::u16string what = foldedUnits(arguments.text(1));
    const std::u16string by = toUnits(arguments.text(2));
    if (what.empty() || folded.size() != text.size()) return std::string(arguments.text(0));
    std::u16string result;
    std::size_t from = 0;
    for (std::size_t at = folded.find(what); at != std::u16string::npos;
         at = folded.find(what, from)) {
        result.append(text, from, at - from).append(by);
        from = at + what.size();
    }
    return cutTo(fromUnits(result.append(text, from)), arguments.integer(3));
}

// kap_charindex(what, text, start)
Value charIndex(const Arguments& arguments) {
    const std::u16string what = foldedUnits(arguments.text(0));
    const std::u16string text = foldedUnits(arguments.text(1));
    const std::int64_t start = std::max<std::int64_t>(arguments.integer(2), 1);
    if (what.empty()) return std::int64_t{0};
    const std::size_t found = text.find(what, static_cast<std::size_t>(start - 1));
    return found == std::u16string::npos ? std::int64_t{0} : static_cast<std::int64_t>(found) + 1;
}

// kap_stuff(text, start, count, by, limit): NULL for a start outside the text, as the server
// answers.
Value stuff(const Arguments& arguments) {
    const std::string_view text = arguments.text(0);
    const std::int64_t start = arguments.integer(1);
    const std::int64_t count = arguments.integer(2);
    if (start < 1 || count < 0 || start > static_cast<std::int64_t>(unitLength(text))) return {};
    const std::size_t from = unitOffset(text, static_cast<std::size_t>(start - 1));
    const std::string_view rest = text.substr(from);
    std::string result(text.substr(0, from));
    if (!arguments.isNull(3)) result += arguments.text(3);
    result += rest.substr(unitOffset(rest, size(count)));
    const std::size_t limit = size(arguments.integer(4));
    if (limit > 0 && result.size() > limit && unitLength(result) > limit) {
        throw tsql::ServerError(tsql::Message::Truncated);
    }
    return result;
}

Value stuffFunction(const Arguments& arguments) {
    if (arguments.isNull(0) || arguments.isNull(1) || arguments.isNull(2)) return {};
    return stuff(arguments);
}

Value reverse(const Arguments& arguments) {
    std::u16string units = toUnits(arguments.text(0));
    std::reverse(units.begin(), units.end());
    // Pairs have to stand the right way round again.
    for (std::size_t i = 0; i + 1 < units.size(); ++i) {
        const bool lowFirst =
            (units[i] & 0xFC00U) == 0xDC00U && (units[i + 1] & 0xFC00U) == 0xD800U;
        if (lowFirst) std::swap(units[i], units[i + 1]);
    }
    return fromUnits(units);
}

// kap_replicate(text, times, limit): cut at the limit of units; 0 is none.
Value replicate(const Arguments& arguments) {
    constexpr std::int64_t kMostBytes = 1'000'000'000;  // that the database keeps in a value
    const std::int64_t times = arguments.integer(1);
    const std::int64_t limit = arguments.integer(2);
    if (times < 0) return {};
    const std::string_view text = arguments.text(0);
    if (text.empty()) return std::string();
    const auto bytes = static_cast<std::int64_t>(text.size());
    const std::int64_t most = limit > 0 ? limit / static_cast<std::int64_t>(unitLength(text)) + 1
                                        : kMostBytes / bytes + 1;
    const std::int64_t needed = std::min(times, most);
    if (needed > kMostBytes / bytes) {
        throw tsql::ServerError(tsql::Message::LargeObjectTooLarge);
    }
    std::string result;
    result.reserve(size(needed * bytes));
    for (std::int64_t i = 0; i < needed; ++i)
        result += text;
    return cutTo(std::move(result), limit);
}

Value space(const Arguments& arguments) {
    const std::int64_t count = arguments.integer(0);
    if (count < 0) return {};
    return std::string(size(std::min(count, kMaxTextUnits)), ' ');
}

// A number with so many decimals. A tie goes away from zero, as people round, also where the
// number's binary form lies exactly between two texts.
std::string roundedText(double number, int decimals) {
    constexpr int kMoreDigits = 20;  // than a binary form that is no tie can hide
    const std::string exact = plain::fixed(number, decimals + kMoreDigits);
    const std::string_view cut = std::string_view(exact).substr(exact.size() - kMoreDigits);
    const bool tie = cut.front() == '5' && cut.find_first_not_of('0', 1) == std::string_view::npos;
    return plain::fixed(tie ? std::nextafter(number, number * 2) : number, decimals);
}

// kap_str(number, width, decimals): right-aligned, stars when the whole part does not fit.
Value str(const Arguments& arguments) {
    constexpr std::int64_t kMostDecimals = 16;
    const std::int64_t width = arguments.integer(1);
    const std::int64_t decimals = std::clamp<std::int64_t>(arguments.integer(2), 0, kMostDecimals);
    if (width < 1 || width > kMaxTextUnits) return {};
    const double number = arguments.real(0);
    std::string text = roundedText(number, static_cast<int>(decimals));
    if (text.size() > size(width) && decimals > 0) {
        // Decimals give way to the whole part.
        const std::size_t whole = text.find('.');
        const std::size_t room = size(width) > whole + 1 ? size(width) - whole - 1 : 0;
        text = roundedText(number, static_cast<int>(room));
    }
    if (text.size() > size(width)) return std::string(size(width), '*');
    return std::string(size(width) - text.size(), ' ') + text;
}

}  // namespace

void registerTextFunctions(Registrar& registrar) {
    registrar.scalar("kap_len", 1, length);
    registrar.scalar("kap_text_bytes", 2, textByteCount);
    registrar.scalar("kap_upper", 1, upper);
    registrar.scalar("kap_lower", 1, lower);
    registrar.scalar("kap_ltrim", 1, trimLeft);
    registrar.scalar("kap_rtrim", 1, trimRight);
    registrar.scalar("kap_substring", 3, substring);
    registrar.scalar("kap_subbytes", 3, subbytes);
    registrar.scalar("kap_left", 2, left);
    registrar.scalar("kap_right", 2, right);
    registrar.scalar("kap_quotename", 2, quoteName);
    registrar.scalar("kap_replace", 4, replace);
    registrar.scalar("kap_charindex", 3, charIndex);
    registrar.scalar("kap_stuff", 5, stuffFunction, OnNull::Call);
    registrar.scalar("kap_reverse", 1, reverse);
    registrar.scalar("kap_replicate", 3, replicate);
    registrar.scalar("kap_space", 1, space);
    registrar.scalar("kap_str", 3, str);
}

}  // namespace kap::engine

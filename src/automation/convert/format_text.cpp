#include <algorithm>

#include "automation/convert/format_writers.hpp"
#include "base/unicode.hpp"

namespace kap::convert {
namespace {

bool isMark(const FormatStep& step, char16_t mark) {
    return !step.literal && step.text.front() == mark;
}

bool isPlace(const FormatStep& step) {
    return isMark(step, u'@') || isMark(step, u'&');
}

bool has(const FormatSection& section, char16_t mark) {
    return std::any_of(section.steps.begin(), section.steps.end(),
                       [mark](const FormatStep& step) { return isMark(step, mark); });
}

}  // namespace

// The characters fill the places from the right, with '!' from the left; an '@' without one is a
// blank, a '&' nothing. What has no place follows at the end.
std::u16string formatText(const FormatSection& section, std::u16string_view text) {
    const std::u16string cased = has(section, u'<')   ? unicode::lower(text)
                                 : has(section, u'>') ? unicode::upper(text)
                                                      : std::u16string(text);
    const auto places = static_cast<std::size_t>(
        std::count_if(section.steps.begin(), section.steps.end(), isPlace));
    const std::size_t missing = places - std::min(places, cased.size());
    std::size_t empty = has(section, u'!') ? 0 : missing;  // places at the front without character
    std::u16string out;
    std::size_t next = 0;
    for (const FormatStep& step : section.steps) {
        if (step.literal) {
            out += step.text;
        } else if (isPlace(step)) {
            if (empty == 0 && next < cased.size()) {
                out.push_back(cased[next++]);
            } else {
                empty -= empty > 0 ? 1 : 0;
                out.append(isMark(step, u'@') ? 1 : 0, u' ');
            }
        }
    }
    return out + cased.substr(next);
}

}  // namespace kap::convert

#include "automation/convert/format_section.hpp"

#include <algorithm>
#include <array>

#include "base/unicode.hpp"

namespace kap::convert {
namespace {

// The parts of a date that a format can name, longer ones before those they begin with.
constexpr std::array<std::u16string_view, 31> kDateParts = {
    u"dddddd", u"ddddd", u"dddd",  u"ddd", u"dd",   u"d",     u"mmmm", u"mmm", u"mm", u"m", u"yyyy",
    u"yy",     u"y",     u"hh",    u"h",   u"nn",   u"n",     u"ss",   u"s",   u"ww", u"w", u"q",
    u"c",      u"ttttt", u"AM/PM", u"A/P", u"AMPM", u"am/pm", u"a/p",  u"/",   u":"};

bool isHalfOfDay(std::u16string_view part) {
    return part.front() == u'A' || part.front() == u'a';
}

// The part of a date at the start of `text`, in any case but for the forms of AM/PM; empty if none.
std::u16string_view datePart(std::u16string_view text) {
    for (const std::u16string_view part : kDateParts) {
        const std::u16string_view start = text.substr(0, part.size());
        if (isHalfOfDay(part) ? start == part : unicode::sameName(start, part)) {
            return part;
        }
    }
    return {};
}

FormatKind kindOf(std::u16string_view text) {
    switch (text.front()) {
        case u'0':
        case u'#':
        case u'.':
        case u',':
        case u'%':
            return FormatKind::Number;
        case u'@':
        case u'&':
        case u'<':
        case u'>':
        case u'!':
            return FormatKind::Text;
        default:
            return datePart(text).empty() ? FormatKind::Literal : FormatKind::Date;
    }
}

class SectionReader {
public:
    explicit SectionReader(std::u16string_view pattern) : rest_(pattern) {}

    std::vector<FormatSection> read() {
        sections_.emplace_back();
        while (!rest_.empty()) {
            readStep();
        }
        for (FormatSection& section : sections_) {
            section.kind = kind_;
        }
        return std::move(sections_);
    }

private:
    void readStep() {
        switch (rest_.front()) {
            case u';':
                sections_.emplace_back();
                return rest_.remove_prefix(1);
            case u'\\':
                rest_.remove_prefix(1);
                return addLiteral(take(1));
            case u'"':
                rest_.remove_prefix(1);
                addLiteral(take(std::min(rest_.find(u'"'), rest_.size())));
                take(1);
                return;
            default:
                return readCharacter();
        }
    }

    void readCharacter() {
        const FormatKind kind = kindOf(rest_);
        if (kind_ == FormatKind::Literal) {
            kind_ = kind;
        }
        if (kind_ == FormatKind::Number && isExponent()) {
            return addStep(take(2));
        }
        if (kind == FormatKind::Literal || kind != kind_) {
            return addLiteral(take(1));
        }
        if (kind != FormatKind::Date) {
            return addStep(take(1));
        }
        const std::u16string_view part = datePart(rest_);
        addStep(part);  // in its own letters, whatever the case of the format
        rest_.remove_prefix(part.size());
    }

    [[nodiscard]] bool isExponent() const {
        return rest_.size() >= 2 && (rest_[0] == u'E' || rest_[0] == u'e') &&
               (rest_[1] == u'+' || rest_[1] == u'-');
    }

    std::u16string_view take(std::size_t count) {
        const std::u16string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    void addStep(std::u16string_view text) {
        sections_.back().steps.push_back({std::u16string(text), false});
    }

    void addLiteral(std::u16string_view text) {
        if (!text.empty()) {
            sections_.back().steps.push_back({std::u16string(text), true});
        }
    }

    std::u16string_view rest_;
    std::vector<FormatSection> sections_;
    FormatKind kind_ = FormatKind::Literal;  // of the whole format, once it is known
};

}  // namespace

std::vector<FormatSection> formatSections(std::u16string_view pattern) {
    return SectionReader(pattern).read();
}

}  // namespace kap::convert

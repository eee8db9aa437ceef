#include "core/tagged_text.hpp"

#include <kaputil/automation/error.hpp>

#include "core/tag_search.hpp"

namespace kap {
namespace {

constexpr std::size_t kAbsent = std::u16string_view::npos;
constexpr std::u16string_view kMarker = u"</";

std::size_t countMarkers(std::u16string_view gap) {
    std::size_t count = 0;
    for (std::size_t at = gap.find(kMarker); at != kAbsent; at = gap.find(kMarker, at + 1)) {
        ++count;
    }
    return count;
}

// Whether a name's tags are found in the list: one with a '<' or '>' never is a tag, and one that
// begins with '/' is another name's closing tag.
bool isTagName(std::u16string_view name) {
    return name.find_first_of(u"<>") == kAbsent && !name.starts_with(u'/');
}

struct TagExtent {
    std::size_t begin = kAbsent;
    std::size_t end = kAbsent;  // behind the '>'
};

TagExtent findTag(std::u16string_view text) {
    std::size_t begin = text.find(u'<');
    while (begin != kAbsent) {
        const std::size_t next = text.find_first_of(u"<>", begin + 1);
        if (next == kAbsent) {
            break;
        }
        if (text[next] == u'>') {
            return {begin, next + 1};
        }
        begin = next;
    }
    return {};
}

}  // namespace

TaggedText::TaggedText() : tags_(1) {}

std::u16string TaggedText::text() const {
    std::u16string out;
    for (const Tag& tag : tags_) {
        appendTo(out, tag);
    }
    return out;
}

void TaggedText::assign(std::u16string_view text) {
    tags_.assign(1, Tag{});
    names_.clear();
    markerCount_ = 0;
    markers_.clear();
    fill(tags_.begin(), text);
}

std::optional<std::u16string> TaggedText::read(const std::u16string& name) const {
    if (!isTagName(name)) {
        return tagsearch::read(text(), name);
    }
    const auto found = names_.find(name);
    if (found == names_.end() || found->second.opening.count == 0) {
        return std::nullopt;
    }
    const TagPair& pair = found->second;
    if (pair.closing.count == 0) {
        throw AutomationError(errors::kInvalidArgument);
    }
    const Place opening = firstOf(pair.opening);
    const Place closing = firstOf(pair.closing);
    std::u16string value = opening->gap;
    for (Place place = std::next(opening); place != closing; ++place) {
        if (place == tags_.end()) {
            throw AutomationError(errors::kInvalidArgument);
        }
        appendTo(value, *place);
    }
    return value;
}

void TaggedText::write(std::u16string name, std::u16string_view value) {
    if (!isTagName(name)) {
        assign(tagsearch::write(text(), name, value));
        return;
    }
    Names::value_type& entry = *names_.try_emplace(std::move(name)).first;
    const TagPair& pair = entry.second;
    if (pair.opening.count == 0) {
        fill(insertTag(tags_.end(), entry, false), value);
        insertTag(tags_.end(), entry, true);
        return;
    }
    if (pair.closing.count == 0) {
        throw AutomationError(errors::kInvalidArgument);
    }
    const Place opening = firstOf(pair.opening);
    const Place closing = firstOf(pair.closing);
    if (pair.opening.count == 1 && leadsTo(opening, closing)) {
        replaceBetween(opening, closing, value);
    } else {
        assign(tagsearch::write(text(), entry.first, value));
    }
}

void TaggedText::erase(const std::u16string& name) {
    if (!isTagName(name)) {
        assign(tagsearch::erase(text(), name));
        return;
    }
    const auto found = names_.find(name);
    if (found == names_.end() || found->second.opening.count == 0) {
        return;
    }
    if (found->second.closing.count > 0) {
        const Place opening = firstOf(found->second.opening);
        const Place closing = firstOf(found->second.closing);
        if (leadsTo(opening, closing)) {
            const Place before = std::prev(opening);
            const std::u16string joined = before->gap + closing->gap;
            replaceBetween(before, std::next(closing), joined);
            return;
        }
    }
    assign(tagsearch::erase(text(), name));
}

std::u16string TaggedText::markerName(std::size_t rank) const {
    findMarkers(rank);
    const Marker& marker = markers_[rank];
    if (marker.position == kAtTag) {
        return marker.tag->name->first;
    }
    // No '>' follows a '<' inside a gap, so the first one is that of the next tag.
    const auto next = std::next(marker.tag);
    if (next == tags_.end()) {
        throw AutomationError(errors::kInvalidArgument);
    }
    return marker.tag->gap.substr(marker.position + kMarker.size()) +
           (next->closing ? u"</" : u"<") + next->name->first;
}

void TaggedText::appendTo(std::u16string& out, const Tag& tag) {
    if (tag.name != nullptr) {
        out += tag.closing ? u"</" : u"<";
        out += tag.name->first;
        out += u'>';
    }
    out += tag.gap;
}

// When the first occurrence of one name is unknown, one pass finds those of all such names.
TaggedText::Place TaggedText::firstOf(const Occurrences& occurrences) const {
    if (!occurrences.firstKnown) {
        for (Place place = std::next(tags_.begin()); place != tags_.end(); ++place) {
            Occurrences& candidate = place->occurrences();
            if (!candidate.firstKnown) {
                candidate.first = place;
                candidate.firstKnown = true;
            }
        }
    }
    return occurrences.first;
}

bool TaggedText::leadsTo(Place opening, Place closing) const {
    while (opening != tags_.end() && opening != closing) {
        ++opening;
    }
    return opening == closing;
}

TaggedText::Place TaggedText::insertTag(Place before, Names::value_type& name, bool closing) {
    const Place place = tags_.insert(before, Tag{&name, closing});
    Occurrences& occurrences = place->occurrences();
    if (occurrences.count == 0) {
        occurrences.first = place;
        occurrences.firstKnown = true;
    } else if (before != tags_.end()) {
        occurrences.firstKnown = false;
    }
    ++occurrences.count;
    markerCount_ += closing ? 1 : 0;
    return place;
}

void TaggedText::removeTag(Place place) {
    Names::value_type& name = *place->name;
    Occurrences& occurrences = place->occurrences();
    --occurrences.count;
    if (occurrences.firstKnown && occurrences.first == place) {
        occurrences.firstKnown = false;
    }
    markerCount_ -= (place->closing ? 1 : 0) + countMarkers(place->gap);
    tags_.erase(place);
    if (name.second.opening.count == 0 && name.second.closing.count == 0) {
        names_.erase(names_.find(name.first));
    }
}

// Puts `text` behind a tag whose gap is empty.
void TaggedText::fill(Place tag, std::u16string_view text) {
    const Place end = std::next(tag);
    TagExtent extent = findTag(text);
    while (true) {
        tag->gap = text.substr(0, extent.begin);
        markerCount_ += countMarkers(tag->gap);
        if (extent.begin == kAbsent) {
            return;
        }
        const bool closing = text[extent.begin + 1] == u'/';
        const std::size_t start = extent.begin + (closing ? 2 : 1);
        std::u16string name(text.substr(start, extent.end - 1 - start));
        tag = insertTag(end, *names_.try_emplace(std::move(name)).first, closing);
        text.remove_prefix(extent.end);
        extent = findTag(text);
    }
}

// Makes `text` all that stands between two tags. Only tags inside `text` can come of it: before it
// stands a '>' (or nothing), behind it a '<' (or nothing).
void TaggedText::replaceBetween(Place first, Place last, std::u16string_view text) {
    if (std::next(first) == last && first->gap.find(u'<') == kAbsent &&
        text.find(u'<') == kAbsent) {
        first->gap = text;  // no tags and no markers, before and after
        return;
    }
    markers_.clear();
    for (Place place = std::next(first); place != last;) {
        removeTag(place++);
    }
    markerCount_ -= countMarkers(first->gap);
    first->gap.clear();
    fill(first, text);
}

void TaggedText::findMarkers(std::size_t rank) const {
    auto tag = tags_.cbegin();
    std::size_t from = 0;
    if (!markers_.empty()) {
        const Marker& last = markers_.back();
        tag = last.tag;
        from = last.position == kAtTag ? 0 : last.position + 1;
    }
    while (markers_.size() <= rank) {
        const std::size_t position = tag->gap.find(kMarker, from);
        if (position != kAbsent) {
            markers_.push_back({tag, position});
            from = position + 1;
            continue;
        }
        ++tag;
        from = 0;
        if (tag->closing) {
            markers_.push_back({tag, kAtTag});
        }
    }
}

}  // namespace kap

#include "core/tagged_text.hpp"

#include <algorithm>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "core/tag_search.hpp"

namespace kap {
namespace {

constexpr std::size_t kAbsent = std::u16string_view::npos;
constexpr std::u16string_view kMarker = u"</";
constexpr std::size_t kSpareRoom = 1024;  // characters
constexpr std::size_t kUsualTags = 32;

constexpr std::u16string_view openingOf(bool closing) {
    return closing ? kMarker : kMarker.substr(0, 1);
}

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

TaggedText::TaggedText() {
    tags_.reserve(kUsualTags);
    tags_.emplace_back();
}

std::u16string TaggedText::text() const {
    std::size_t size = gapsUsed_;
    for (Place place = after(kEnds); place != kEnds; place = after(place)) {
        size += tags_[place].name->first.size() + (tags_[place].closing ? 3 : 2);
    }
    std::u16string out;
    out.reserve(size);
    out += gapOf(kEnds);
    for (Place place = after(kEnds); place != kEnds; place = after(place)) {
        appendTo(out, place);
    }
    return out;
}

void TaggedText::clear() {
    tags_.assign(1, Tag{});
    free_ = kEnds;
    gaps_.clear();
    gapsUsed_ = 0;
    names_.clear();
    markerCount_ = 0;
    markers_.clear();
}

void TaggedText::assign(std::u16string_view text) {
    clear();
    fill(kEnds, text);
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
    const Place closing = firstOf(pair.closing);
    Place place = firstOf(pair.opening);
    std::u16string value(gapOf(place));
    for (place = after(place); place != closing; place = after(place)) {
        if (place == kEnds) {
            throw AutomationError(errors::kInvalidArgument);
        }
        appendTo(value, place);
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
        fill(insertTag(kEnds, entry, false), value);
        insertTag(kEnds, entry, true);
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
            const Place before = tags_[opening].previous;
            std::u16string joined(gapOf(before));
            joined += gapOf(closing);
            replaceBetween(before, after(closing), joined);
            return;
        }
    }
    assign(tagsearch::erase(text(), name));
}

std::u16string TaggedText::markerName(std::size_t rank) const {
    findMarkers(rank);
    const Marker& marker = markers_[rank];
    if (marker.position == kAtTag) {
        return tags_[marker.tag].name->first;
    }
    // No '>' follows a '<' inside a gap, so the first one is that of the next tag.
    const Place next = after(marker.tag);
    if (next == kEnds) {
        throw AutomationError(errors::kInvalidArgument);
    }
    std::u16string name(gapOf(marker.tag).substr(marker.position + kMarker.size()));
    name += openingOf(tags_[next].closing);
    name += tags_[next].name->first;
    return name;
}

void TaggedText::appendTo(std::u16string& out, Place place) const {
    const Tag& tag = tags_[place];
    const std::u16string_view opening = openingOf(tag.closing);
    const std::u16string& name = tag.name->first;
    const std::u16string_view gap = gapOf(place);
    const std::size_t at = out.size();
    out.resize(at + opening.size() + name.size() + 1 + gap.size());
    char16_t* to = std::ranges::copy(opening, out.data() + at).out;
    to = std::ranges::copy(name, to).out;
    *to++ = u'>';
    std::ranges::copy(gap, to);
}

void TaggedText::setGap(Place place, std::u16string_view text) {
    Tag& tag = tags_[place];
    if (text.size() <= tag.gapSize) {
        text.copy(gaps_.data() + tag.gap, text.size());
    } else {
        gaps_ += text;
        tag.gap = gaps_.size() - text.size();
    }
    gapsUsed_ += text.size();
    gapsUsed_ -= tag.gapSize;
    tag.gapSize = text.size();
    dropUnusedGaps();
}

// So that gaps which have been replaced by longer ones take at most the room of the others.
void TaggedText::dropUnusedGaps() {
    if (gaps_.size() <= 2 * gapsUsed_ + kSpareRoom) {
        return;
    }
    std::u16string kept;
    kept.reserve(gapsUsed_);
    Place place = kEnds;
    do {
        const std::size_t begin = kept.size();
        kept += gapOf(place);
        tags_[place].gap = begin;
        place = after(place);
    } while (place != kEnds);
    gaps_ = std::move(kept);
}

// When the first occurrence of one name is unknown, one pass finds those of all such names.
TaggedText::Place TaggedText::firstOf(const Occurrences& occurrences) const {
    if (!occurrences.firstKnown) {
        for (Place place = after(kEnds); place != kEnds; place = after(place)) {
            Occurrences& candidate = tags_[place].occurrences();
            if (!candidate.firstKnown) {
                candidate.first = place;
                candidate.firstKnown = true;
            }
        }
    }
    return occurrences.first;
}

bool TaggedText::leadsTo(Place opening, Place closing) const {
    while (opening != kEnds && opening != closing) {
        opening = after(opening);
    }
    return opening == closing;
}

TaggedText::Place TaggedText::newTag() {
    if (free_ == kEnds) {
        tags_.emplace_back();
        return static_cast<Place>(tags_.size() - 1);
    }
    const Place place = free_;
    free_ = after(place);
    return place;
}

TaggedText::Place TaggedText::insertTag(Place before, Names::value_type& name, bool closing) {
    const Place place = newTag();
    Tag& tag = tags_[place];
    tag.name = &name;
    tag.closing = closing;
    tag.previous = tags_[before].previous;
    tag.next = before;
    tags_[tag.previous].next = place;
    tags_[before].previous = place;
    Occurrences& occurrences = tag.occurrences();
    if (occurrences.count == 0) {
        occurrences.first = place;
        occurrences.firstKnown = true;
    } else if (before != kEnds) {
        occurrences.firstKnown = false;
    }
    ++occurrences.count;
    markerCount_ += closing ? 1 : 0;
    return place;
}

void TaggedText::removeTag(Place place) {
    Tag& tag = tags_[place];
    Names::value_type& name = *tag.name;
    Occurrences& occurrences = tag.occurrences();
    --occurrences.count;
    if (occurrences.firstKnown && occurrences.first == place) {
        occurrences.firstKnown = false;
    }
    markerCount_ -= (tag.closing ? 1 : 0) + countMarkers(gapOf(place));
    gapsUsed_ -= tag.gapSize;
    tags_[tag.previous].next = tag.next;
    tags_[tag.next].previous = tag.previous;
    tag = Tag{.next = free_};
    free_ = place;
    if (name.second.opening.count == 0 && name.second.closing.count == 0) {
        names_.erase(names_.find(name.first));
    }
}

// Puts `text` behind a tag whose gap is empty.
void TaggedText::fill(Place tag, std::u16string_view text) {
    const Place end = after(tag);
    TagExtent extent = findTag(text);
    while (true) {
        const std::u16string_view gap = text.substr(0, extent.begin);
        setGap(tag, gap);
        markerCount_ += countMarkers(gap);
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
    if (after(first) == last && gapOf(first).find(u'<') == kAbsent && text.find(u'<') == kAbsent) {
        setGap(first, text);  // no tags and no markers, before and after
        return;
    }
    markers_.clear();
    while (after(first) != last) {
        removeTag(after(first));
    }
    markerCount_ -= countMarkers(gapOf(first));
    fill(first, text);
}

void TaggedText::findMarkers(std::size_t rank) const {
    Place tag = kEnds;
    std::size_t from = 0;
    if (!markers_.empty()) {
        const Marker& last = markers_.back();
        tag = last.tag;
        from = last.position == kAtTag ? 0 : last.position + 1;
    }
    while (markers_.size() <= rank) {
        const std::size_t position = gapOf(tag).find(kMarker, from);
        if (position != kAbsent) {
            markers_.push_back({tag, position});
            from = position + 1;
            continue;
        }
        tag = after(tag);
        from = 0;
        if (tags_[tag].closing) {
            markers_.push_back({tag, kAtTag});
        }
    }
}

}  // namespace kap

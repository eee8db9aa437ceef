#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kap {

// The text behind a property string, with an index of its tags.
//
// What the operations mean is defined on the text: the first "<NAME>", the first "</NAME>", every
// occurrence of "</". Clients rely on that for odd texts too (duplicates, tags inside values, tags
// never closed), so nothing here assumes that a text is well formed.
//
// A tag is any '<', characters that are neither '<' nor '>', and '>'. Tags cannot overlap, so every
// text is exactly a row of tags and the gaps between them, and a name without '<' and '>' is found
// at a tag or nowhere. The row is kept as a linked list, a table tells where each name occurs
// first, and an operation changes only the stretch of text between two tags. Names that a tag
// cannot hold, and the rewriting of duplicates, work on the text as a whole.
//
// A property costs no allocation but its name's: the list's links are positions in one vector, and
// the gaps stand one behind the other in one string, in the order in which they were written.
class TaggedText {
public:
    TaggedText();
    TaggedText(const TaggedText&) = delete;
    TaggedText& operator=(const TaggedText&) = delete;

    [[nodiscard]] std::u16string text() const;
    void assign(std::u16string_view text);

    // The text between the first opening and the first closing tag of a name; nullopt when it has
    // no opening tag. Raises 5 when no closing tag follows.
    [[nodiscard]] std::optional<std::u16string> read(const std::u16string& name) const;
    // Replaces the value of a name or appends the name. Raises 5 when it is never closed.
    void write(std::u16string name, std::u16string_view value);
    void erase(const std::u16string& name);

    // How many times "</" occurs.
    [[nodiscard]] std::size_t markerCount() const noexcept { return markerCount_; }
    // What stands between the "</" of this rank, counted from 0, and the next '>'. Raises 5 when
    // there is no '>'.
    [[nodiscard]] std::u16string markerName(std::size_t rank) const;

private:
    // Of a tag, in `tags_`.
    using Place = std::uint32_t;
    // The start of the text, which is also what follows the last tag.
    static constexpr Place kEnds = 0;

    // The tags of one kind that carry one name. Which of them is the first is forgotten when a
    // change in the middle of the text makes it uncertain, and looked up again when next asked.
    struct Occurrences {
        std::uint32_t count = 0;
        bool firstKnown = false;
        Place first = kEnds;
    };
    struct TagPair {
        Occurrences opening;
        Occurrences closing;
    };
    using Names = std::unordered_map<std::u16string, TagPair>;

    struct Tag {
        Names::value_type* name = nullptr;  // null: the start of the text
        std::size_t gap = 0;                // the text up to the next tag: its place in `gaps_`
        std::size_t gapSize = 0;
        Place previous = kEnds;
        Place next = kEnds;
        bool closing = false;

        [[nodiscard]] Occurrences& occurrences() const {
            return closing ? name->second.closing : name->second.opening;
        }
    };

    // A marker stands at the beginning of a closing tag or inside a gap.
    struct Marker {
        Place tag;
        std::size_t position;  // in the tag's gap; kAtTag: the tag itself
    };
    static constexpr std::size_t kAtTag = static_cast<std::size_t>(-1);

    void clear();
    [[nodiscard]] Place after(Place place) const { return tags_[place].next; }
    [[nodiscard]] std::u16string_view gapOf(Place place) const {
        return std::u16string_view(gaps_).substr(tags_[place].gap, tags_[place].gapSize);
    }
    void setGap(Place place, std::u16string_view text);
    void dropUnusedGaps();
    void appendTo(std::u16string& out, Place place) const;
    [[nodiscard]] Place firstOf(const Occurrences& occurrences) const;
    [[nodiscard]] bool leadsTo(Place opening, Place closing) const;
    Place newTag();
    Place insertTag(Place before, Names::value_type& name, bool closing);
    void removeTag(Place place);
    void fill(Place tag, std::u16string_view text);
    void replaceBetween(Place first, Place last, std::u16string_view text);
    void findMarkers(std::size_t rank) const;

    std::vector<Tag> tags_;  // begins with the start of the text
    Place free_ = kEnds;     // the first tag that was taken out; its `next` is another one
    std::u16string gaps_;
    std::size_t gapsUsed_ = 0;  // characters of `gaps_` that are some tag's gap
    Names names_;
    std::size_t markerCount_ = 0;
    mutable std::vector<Marker> markers_;  // the first ones, as far as they have been asked for
};

}  // namespace kap

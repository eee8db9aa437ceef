#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <kaputil/automation/linked_object.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// The keyed collection of the automation world: elements in the order in which they were added,
// counted from 1, each with a key or without one. Keys are compared ignoring case.
//
//     auto towns = kap::make<kap::Collection>();
//     towns->Add(u"Bari", u"BA");
//     towns->Add(u"Milano", u"MI");
//     towns->Item(u"mi");   // "Milano"
//     towns->Item(1);       // "Bari"
//
// Looking up a key takes constant time however many elements there are; so does going through the
// positions in either direction.
class KAPUTIL_EXPORT Collection final : public LinkedObject {
public:
    Collection();
    ~Collection() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The element with this key, a text, or at this position from 1, anything else. Raises 5 for a
    // key that no element has, 9 for a position that there is not.
    [[nodiscard]] Variant Item(const Variant& index) const;

    // Appends an element, or puts it before or after another one, which is given by key or
    // position. Raises 457 for a key that an element has, 13 for a key that is no text, 5 when
    // `before` and `after` are both given, and what `Item` raises for them.
    void Add(const Variant& item, const Variant& key = Variant::missing(),
             const Variant& before = Variant::missing(), const Variant& after = Variant::missing());

    [[nodiscard]] std::int32_t Count() const;

    // Takes an element out; the others keep their order. Raises what `Item` raises.
    void Remove(const Variant& index);

    [[nodiscard]] std::vector<Variant> elements() override;

    // Whether an element has this key. C++ only.
    [[nodiscard]] bool contains(std::u16string_view key) const;

    // The element with this key when it is a linked object, else null. C++ only.
    [[nodiscard]] LinkedObject* findLinked(std::u16string_view key) const;

protected:
    void collectLinks(std::vector<LinkedObject*>& links) const override;

private:
    struct Element {
        std::optional<String> key;
        AnyLink item;
    };
    using Elements = std::list<Element>;
    class Keys;

    [[nodiscard]] Elements::iterator find(const Variant& index) const;
    [[nodiscard]] Elements::iterator at(std::int32_t position) const;

    mutable Elements elements_;
    std::unique_ptr<Keys> keys_;
    // The last element found by position: going through all of them asks for its neighbour next.
    mutable std::int32_t nearPosition_ = 0;  // 0: none
    mutable Elements::iterator near_;
};

}  // namespace kap

#pragma once

#include <cstdint>

#include <kaputil/automation/collection.hpp>
#include <kaputil/automation/linked_object.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

// What the collections of the configuration tree have in common: elements by name, ignoring case.
//
// The whole tree lives as long as anybody holds one of its nodes, also one that was deleted from
// its collection: it keeps its `Parent` and so its `Path`.
class KAPUTIL_EXPORT CfgCollection : public LinkedObject {
public:
    // The keyed collection itself, not a copy: it enumerates the elements in the order in which
    // they were added, and what is changed through it is changed here, without setting a `Parent`.
    [[nodiscard]] Ref<Collection> Collezione() const { return elements_.get(); }

    // Raises 6 when there are more than 32,767 elements.
    [[nodiscard]] std::int16_t Count() const;

    // Takes an element out. Raises 5 for a name that is not there.
    void Delete(const String& nome);

protected:
    CfgCollection();

    // Appends an element. Raises 457 when the name is there already.
    void append(LinkedObject& element, const String& nome);
    // The element of this class and name. Raises -2147221503 with the description
    // "CFG   PATH\NAME  non  trovato" when there is none.
    template <class Element>
    [[nodiscard]] Ref<Element> element(const String& nome) const {
        auto* found = dynamic_cast<Element*>(elements_.pointer()->findLinked(nome));
        if (found == nullptr) {
            raiseNotFound(nome);
        }
        return Ref<Element>(found);
    }

    // Where the elements are, for that description.
    [[nodiscard]] virtual String ownerPath() const = 0;
    void collectLinks(std::vector<LinkedObject*>& links) const override;

private:
    [[noreturn]] void raiseNotFound(const String& nome) const;

    Link<Collection> elements_;
};

// A collection that belongs to an element of the level above.
class KAPUTIL_EXPORT InnerCfgCollection : public CfgCollection {
public:
    // The element that owns the collection, or an unset object.
    [[nodiscard]] Ref<Object> Parent() const;
    void setParent(const Ref<Object>& value);

    // The same for the element that makes the collection while it is being made itself, when a
    // counted reference to it that comes and goes would end it.
    void setParentOfNew(LinkedObject& value) { parent_.link(*this, value); }

protected:
    // The `Path` of the parent. Raises 91 without one.
    [[nodiscard]] String ownerPath() const override;
    void collectLinks(std::vector<LinkedObject*>& links) const override;

private:
    AnyLink parent_;
};

}  // namespace kap

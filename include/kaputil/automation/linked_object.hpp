#pragma once

#include <utility>
#include <vector>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

class LinkGroup;

// A part of a structure whose parts refer to each other in both directions, as parents and children
// do.
//
// Two objects that count references to each other would never end. So the parts refer to each other
// by links (`Link`, `AnyLink`), which are not counted, and everything else refers to them by
// counted references as to any object. Whoever holds one part keeps alive what can be reached from
// it, through links in either direction: holding a leaf keeps its parents, and a parent its
// children. When nobody holds any part the whole structure ends, whatever its shape and the order
// in which its parts were dropped.
//
// A part that was cut off and is not held any more ends a little later, when looking for such parts
// is worth it, and at the latest with the structure.
class KAPUTIL_EXPORT LinkedObject : public DescribedObject {
protected:
    LinkedObject() = default;
    ~LinkedObject() override;

    // Appends every object that this one has a link to; a link that is unset, or holds something
    // else, counts as null.
    virtual void collectLinks(std::vector<LinkedObject*>& links) const = 0;

private:
    friend class LinkGroup;
    void onFirstReference() const noexcept final;
    void onLastReferenceGone() const noexcept final;

    mutable LinkGroup* group_ = nullptr;  // null: linked with nothing
    mutable bool reached_ = false;        // used while a group looks for what was cut off
    mutable bool made_ = false;           // its constructor has done all of its work
};

// What links do to the objects at their ends.
namespace link {

// `from` refers to `to` from now on.
KAPUTIL_EXPORT void joined(LinkedObject& from, LinkedObject& to);
// The same for an object that has just been made for `from` and that nobody else knows of: it ends
// when there is no memory to join it.
KAPUTIL_EXPORT void joinedNew(LinkedObject& from, LinkedObject& made);
// `from` no longer refers to something that it referred to.
KAPUTIL_EXPORT void cut(LinkedObject& from);

}  // namespace link

// A reference from one linked object to another. It belongs to the object that is named whenever it
// changes, which tells of it in `collectLinks`.
template <class T>
class Link {
public:
    Link() = default;
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    // Makes a new object at the other end. Also for constructors, where nobody holds the owner yet:
    // a counted reference that came and went would end both.
    template <class... Arguments>
    T& create(LinkedObject& owner, Arguments&&... arguments) {
        T* const made = new T(std::forward<Arguments>(arguments)...);
        link::joinedNew(owner, *made);
        target_ = made;
        return *made;
    }

    void set(LinkedObject& owner, const Ref<T>& target) {
        if (target.get() == target_) {
            return;
        }
        if (target) {
            link::joined(owner, *target);
        }
        const bool cuts = target_ != nullptr;
        target_ = target.get();
        if (cuts) {
            link::cut(owner);
        }
    }

    [[nodiscard]] Ref<T> get() const { return Ref<T>(target_); }
    [[nodiscard]] T* pointer() const noexcept { return target_; }

private:
    T* target_ = nullptr;
};

// A place of a linked object for any value: an object that can be linked is, everything else is
// held as usual.
class KAPUTIL_EXPORT AnyLink {
public:
    AnyLink() = default;
    AnyLink(AnyLink&&) noexcept = default;
    AnyLink& operator=(AnyLink&&) noexcept = default;
    AnyLink(const AnyLink&) = delete;
    AnyLink& operator=(const AnyLink&) = delete;
    ~AnyLink() = default;

    void set(LinkedObject& owner, const Variant& value);
    // Links an object that may be in its constructor still.
    void link(LinkedObject& owner, LinkedObject& target);
    // Empties the place.
    void clear(LinkedObject& owner) { set(owner, Variant()); }

    [[nodiscard]] Variant get() const;
    [[nodiscard]] LinkedObject* linked() const noexcept { return linked_; }

private:
    void replace(LinkedObject& owner, LinkedObject* linked, const Variant& value);

    Variant value_;
    LinkedObject* linked_ = nullptr;
};

}  // namespace kap

#pragma once

#include <cstddef>
#include <vector>

#include <kaputil/automation/linked_object.hpp>

namespace kap {

// Linked objects that must be looked at together to tell whether anybody still needs them: each is,
// or once was, linked with another of the group.
class LinkGroup {
public:
    LinkGroup() = default;
    LinkGroup(const LinkGroup&) = delete;
    LinkGroup& operator=(const LinkGroup&) = delete;

    // The group of an object that has, or had, a link.
    [[nodiscard]] static LinkGroup& ofMember(const LinkedObject& object) { return *object.group_; }

    // Makes one group of those of two objects.
    static void unite(LinkedObject& one, LinkedObject& other);
    // The same for an object that was made for the other and has done its constructor's work. It
    // ends when there is no memory for that.
    static void uniteWithNew(LinkedObject& one, LinkedObject& made);

    // The first reference to a member from outside, and the end of the last one. The latter may end
    // members, and with the last of them this group.
    void memberIsReferenced() noexcept { ++referenced_; }
    void memberIsDropped() noexcept;

    // The constructor of a member has failed. Ends what it has made, unless another member is in
    // its constructor still.
    void memberHasFailed(const LinkedObject& failed) noexcept;

    // A member cut a link. May end members.
    void linkIsCut();

private:
    void add(LinkedObject& object);
    void absorb(LinkGroup& other);
    void suspect(std::size_t weight);
    void sweep();
    [[nodiscard]] std::size_t markReached() const;
    void forgetReached() const;
    static void end(const std::vector<LinkedObject*>& objects);

    std::vector<LinkedObject*> members_;
    std::size_t referenced_ = 0;  // members that somebody outside refers to
    // What happened since the last sweep that may have left members behind, by weight.
    std::size_t suspicion_ = 0;
    std::size_t sweepCost_ = 0;  // members and links that the last sweep looked at
};

}  // namespace kap

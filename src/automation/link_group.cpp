#include "automation/link_group.hpp"

#include <algorithm>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

namespace kap {
namespace {

// A member can be left behind when a link is cut, or when it joined by a link that leads away from
// it, and its last reference goes. References to members come and go all the time, so that alone
// weighs little; and a sweep looks at every member and link, so it waits until it is paid for.
constexpr std::size_t kDropped = 1;
constexpr std::size_t kCutOrUnited = 8;
constexpr std::size_t kBearable = 4;  // for each member or link

}  // namespace

void LinkGroup::unite(LinkedObject& one, LinkedObject& other) {
    if (one.group_ == nullptr && other.group_ == nullptr) {
        auto group = std::make_unique<LinkGroup>();
        group->add(one);
        one.group_ = group.release();
    }
    if (one.group_ == nullptr) {
        other.group_->add(one);
        one.group_ = other.group_;
    } else if (other.group_ == nullptr) {
        one.group_->add(other);
        other.group_ = one.group_;
    } else if (one.group_ != other.group_) {
        // The smaller joins the larger: however a structure grows, an object moves few times.
        const bool oneIsLarger = one.group_->members_.size() >= other.group_->members_.size();
        LinkGroup& larger = oneIsLarger ? *one.group_ : *other.group_;
        LinkGroup* smaller = oneIsLarger ? other.group_ : one.group_;
        larger.absorb(*smaller);
        delete smaller;
    }
}

void LinkGroup::uniteWithNew(LinkedObject& one, LinkedObject& made) {
    try {
        unite(one, made);
    } catch (...) {
        delete &made;
        throw;
    }
    made.made_ = true;
}

// Either fails before anything is changed, when there is no memory.
void LinkGroup::add(LinkedObject& object) {
    members_.push_back(&object);
    suspicion_ += kCutOrUnited;  // without sweeping: the object may be in its constructor
    if (object.isReferenced()) {
        ++referenced_;
    }
}

void LinkGroup::absorb(LinkGroup& other) {
    members_.insert(members_.end(), other.members_.begin(), other.members_.end());
    for (const LinkedObject* member : other.members_) {
        member->group_ = this;
    }
    referenced_ += other.referenced_;
    suspicion_ += other.suspicion_ + kCutOrUnited;
}

void LinkGroup::memberIsDropped() noexcept {
    if (--referenced_ > 0) {
        suspect(kDropped);
        return;
    }
    const std::unique_ptr<LinkGroup> last(this);
    end(members_);
}

void LinkGroup::memberHasFailed(const LinkedObject& failed) noexcept {
    std::erase(members_, &failed);
    const bool needed = referenced_ > 0 || !std::ranges::all_of(members_, &LinkedObject::made_);
    if (!needed) {
        const std::unique_ptr<LinkGroup> last(this);
        end(members_);
    }
}

void LinkGroup::linkIsCut() {
    suspect(kCutOrUnited);
}

void LinkGroup::suspect(std::size_t weight) {
    suspicion_ += weight;
    if (suspicion_ > kBearable * std::max(members_.size(), sweepCost_)) {
        sweep();
    }
}

// Without memory for it the unreached stay until the next sweep: this is part of dropping a
// reference, which never fails.
void LinkGroup::sweep() {
    suspicion_ = 0;
    std::vector<LinkedObject*> ended;
    try {
        ended.reserve(members_.size());
        sweepCost_ = markReached();
    } catch (const std::bad_alloc&) {
        forgetReached();
        return;
    }
    const auto unreached = std::stable_partition(
        members_.begin(), members_.end(), [](const LinkedObject* one) { return one->reached_; });
    ended.assign(unreached, members_.end());
    members_.erase(unreached, members_.end());
    forgetReached();
    end(ended);
}

void LinkGroup::forgetReached() const {
    for (const LinkedObject* member : members_) {
        member->reached_ = false;
    }
}

std::size_t LinkGroup::markReached() const {
    std::size_t visits = 0;
    std::vector<LinkedObject*> toVisit;
    std::ranges::copy_if(members_, std::back_inserter(toVisit),
                         [](const LinkedObject* one) { return one->isReferenced(); });
    while (!toVisit.empty()) {
        LinkedObject* const object = toVisit.back();
        toVisit.pop_back();
        ++visits;
        if (object != nullptr && !object->reached_) {
            object->reached_ = true;
            object->collectLinks(toVisit);
        }
    }
    return visits;
}

// Nobody refers to them, so nothing calls them any more: what they hold besides may end with them
// and drop objects, but none of these.
void LinkGroup::end(const std::vector<LinkedObject*>& objects) {
    for (LinkedObject* object : objects) {
        object->group_ = nullptr;
    }
    for (const LinkedObject* object : objects) {
        delete object;
    }
}

}  // namespace kap

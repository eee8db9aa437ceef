#include <kaputil/automation/linked_object.hpp>

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <random>
#include <set>

#include "automation/class_builder.hpp"
#include "support/seed.hpp"

namespace kap {
namespace {

// A part with a parent and some children, which tells a list that it is alive.
class Part final : public LinkedObject {
public:
    explicit Part(std::set<const Part*>& alive) : alive_(alive) { alive_.insert(this); }
    ~Part() override { alive_.erase(this); }

    [[nodiscard]] const ClassDescription& description() const override {
        static const ClassDescription kDescription = ClassBuilder<Part>(u"Part", u"", u"").build();
        return kDescription;
    }

    void setParent(const Ref<Part>& value) { parent_.set(*this, value); }
    [[nodiscard]] Ref<Part> parent() const { return parent_.get(); }
    void setChild(std::size_t index, const Ref<Part>& value) { children_[index].set(*this, value); }
    [[nodiscard]] Ref<Part> child(std::size_t index) const { return children_[index].get(); }
    void setAny(const Variant& value) { any_.set(*this, value); }
    [[nodiscard]] Variant any() const { return any_.get(); }

    // The other ends of the links, for the model of a test.
    [[nodiscard]] std::vector<const Part*> ends() const {
        std::vector<const Part*> all = {parent_.pointer()};
        for (const auto& one : children_) {
            all.push_back(one.pointer());
        }
        all.push_back(static_cast<const Part*>(any_.linked()));
        return all;
    }

protected:
    void collectLinks(std::vector<LinkedObject*>& links) const override {
        links.push_back(parent_.pointer());
        for (const auto& one : children_) {
            links.push_back(one.pointer());
        }
        links.push_back(any_.linked());
    }

private:
    std::set<const Part*>& alive_;
    Link<Part> parent_;
    std::array<Link<Part>, 3> children_;
    AnyLink any_;
};

class LinkedObjects : public testing::Test {
protected:
    Ref<Part> part() { return make<Part>(alive_); }
    static void attach(const Ref<Part>& parent, std::size_t place, const Ref<Part>& child) {
        parent->setChild(place, child);
        child->setParent(parent);
    }
    [[nodiscard]] std::size_t alive() const { return alive_.size(); }

    std::set<const Part*> alive_;
};

TEST_F(LinkedObjects, EndsAloneWithItsLastReference) {
    Ref<Part> one = part();
    one = {};
    EXPECT_EQ(alive(), 0U);
}

TEST_F(LinkedObjects, EndTogetherWithTheReferenceToTheTop) {
    Ref<Part> top = part();
    attach(top, 0, part());
    attach(top, 1, part());
    attach(top->child(0), 0, part());
    EXPECT_EQ(alive(), 4U);
    top = {};
    EXPECT_EQ(alive(), 0U);
}

TEST_F(LinkedObjects, LiveWhileTheDeepestIsHeld) {
    Ref<Part> top = part();
    attach(top, 0, part());
    attach(top->child(0), 0, part());
    Ref<Part> deep = top->child(0)->child(0);
    const Part* const above = top.get();
    top = {};
    EXPECT_EQ(alive(), 3U);
    EXPECT_EQ(deep->parent()->parent().get(), above);
    deep = {};
    EXPECT_EQ(alive(), 0U);
}

TEST_F(LinkedObjects, KeepTheParentOfOneThatWasTakenOut) {
    Ref<Part> top = part();
    Ref<Part> removed = part();
    attach(top, 0, removed);
    top->setChild(0, {});
    const Part* const parent = top.get();
    top = {};
    EXPECT_EQ(removed->parent().get(), parent);
    removed = {};
    EXPECT_EQ(alive(), 0U);
}

TEST_F(LinkedObjects, MayReferToThemselves) {
    Ref<Part> one = part();
    attach(one, 0, one);
    one = {};
    EXPECT_EQ(alive(), 0U);
}

TEST_F(LinkedObjects, LetGoOfWhatWasCutOffWhileTheRestLives) {
    const Ref<Part> top = part();
    for (int i = 0; i < 1000; ++i) {
        attach(top, 0, part());
    }
    EXPECT_LT(alive(), 10U);
}

TEST_F(LinkedObjects, HoldAnyOtherValueAsItIs) {
    Ref<Part> one = part();
    one->setAny(u"testo");
    EXPECT_EQ(one->any().as<String>(), u"testo");
    const Ref<Part> other = part();
    one->setAny(Variant(other));
    EXPECT_EQ(one->any().as<Ref<Object>>(), Ref<Object>(other));
    one->setAny(Variant());
    EXPECT_TRUE(one->any().isEmpty());
}

TEST_F(LinkedObjects, LetGoOfWhatWasDroppedAfterItWasCutOffWhileTheRestIsUsed) {
    const Ref<Part> top = part();
    attach(top, 1, part());
    std::vector<Ref<Part>> removed;
    for (int i = 0; i < 1000; ++i) {
        removed.push_back(part());
        attach(top, 0, removed.back());
    }
    EXPECT_EQ(alive(), 1002U);
    removed.clear();
    for (int i = 0; i < 10'000; ++i) {
        static_cast<void>(top->child(1));
    }
    EXPECT_LT(alive(), 10U);
}

TEST_F(LinkedObjects, LetGoOfStrangersThatOnlyLinkedToThem) {
    const Ref<Part> top = part();
    for (int i = 0; i < 1000; ++i) {
        part()->setParent(top);
    }
    EXPECT_LT(alive(), 10U);
}

// Whatever is reached from a part that is held, through links, is alive.
void expectReachedAlive(const std::vector<Ref<Part>>& held, const std::set<const Part*>& alive) {
    std::set<const Part*> reached;
    std::vector<const Part*> toVisit;
    for (const auto& one : held) {
        toVisit.push_back(one.get());
    }
    while (!toVisit.empty()) {
        const Part* const one = toVisit.back();
        toVisit.pop_back();
        if (one != nullptr && reached.insert(one).second) {
            ASSERT_TRUE(alive.contains(one));
            const auto ends = one->ends();
            toVisit.insert(toVisit.end(), ends.begin(), ends.end());
        }
    }
}

TEST_F(LinkedObjects, LiveAsLongAsTheyAreReachedAndNoLongerInAnyStructure) {
    std::mt19937 random(test::randomSeed());
    const auto below = [&](std::size_t bound) { return random() % bound; };
    std::vector<Ref<Part>> held;
    for (int step = 0; step < 4000; ++step) {
        const Ref<Part> one = held.empty() ? part() : held[below(held.size())];
        const Ref<Part> other = held.empty() ? one : held[below(held.size())];
        switch (below(9)) {
            case 0:
            case 1:
                held.push_back(part());
                break;
            case 2:
                held.erase(held.begin(), held.begin() + std::ssize(held) / 4);
                break;
            case 3:
                one->setChild(below(3), {});
                break;
            case 4:
                one->setParent(below(2) == 0 ? other : Ref<Part>());
                break;
            case 5:
                one->setAny(below(2) == 0 ? Variant(other) : Variant(u"testo"));
                break;
            case 6:
                if (const Ref<Part> next = one->child(below(3))) {
                    held.push_back(next);
                }
                break;
            default:
                attach(one, below(3), other);
        }
        if (step % 50 == 0) {
            expectReachedAlive(held, alive_);
        }
    }
    held.clear();
    EXPECT_EQ(alive(), 0U);
}

// Makes two children in its constructor, which link themselves to it and make two of their own,
// until the steps are used up.
class Maker final : public LinkedObject {
public:
    Maker(std::set<const Maker*>& alive, int& steps, int depth, Maker* parent = nullptr)
        : alive_(alive) {
        alive_.insert(this);
        try {
            if (parent != nullptr) {
                parent_.link(*this, *parent);
            }
            step(steps);
            for (auto& child : children_) {
                if (depth > 0) {
                    child.create(*this, alive, steps, depth - 1, this);
                }
                step(steps);
            }
        } catch (...) {
            alive_.erase(this);
            throw;
        }
    }
    ~Maker() override { alive_.erase(this); }

    [[nodiscard]] const ClassDescription& description() const override {
        static const ClassDescription kDescription =
            ClassBuilder<Maker>(u"Maker", u"", u"").build();
        return kDescription;
    }

protected:
    void collectLinks(std::vector<LinkedObject*>& links) const override {
        links.push_back(parent_.linked());
        for (const auto& one : children_) {
            links.push_back(one.pointer());
        }
    }

private:
    static void step(int& steps) {
        if (steps-- == 0) {
            throw std::bad_alloc();
        }
    }

    std::set<const Maker*>& alive_;
    AnyLink parent_;
    std::array<Link<Maker>, 2> children_;
};

TEST(LinkedObjectsInTheMaking, EndWithTheConstructorThatFails) {
    std::set<const Maker*> alive;
    int failures = 0;
    for (bool made = false; !made; ++failures) {
        int steps = failures;
        try {
            const auto top = make<Maker>(alive, steps, 2);
            EXPECT_EQ(alive.size(), 7U);
            made = true;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(alive.size(), 0U) << failures;
        }
    }
    EXPECT_EQ(alive.size(), 0U);
    EXPECT_EQ(failures, 22);  // three steps for each of seven, and the one that is done
}

}  // namespace
}  // namespace kap

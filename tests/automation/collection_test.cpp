#include <kaputil/automation/collection.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "support/late_bound.hpp"
#include "support/seed.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::call;
using test::raisedBy;
using test::shown;

std::string all(const Ref<Collection>& collection) {
    std::string text;
    for (const Variant& value : collection->elements()) {
        text += (text.empty() ? "" : " ") + convert::toString(value).utf8();
    }
    return text;
}

Ref<Collection> towns() {
    auto collection = make<Collection>();
    collection->Add(u"Bari", u"BA");
    collection->Add(u"Milano", u"MI");
    collection->Add(u"Torino", u"TO");
    return collection;
}

TEST(Collection, FindsElementsByKeyIgnoringCase) {
    EXPECT_EQ(shown(towns()->Item(u"mi")), "String Milano");
    EXPECT_EQ(shown(towns()->Item(u"TO")), "String Torino");
    EXPECT_TRUE(towns()->contains(u"To"));
    EXPECT_FALSE(towns()->contains(u"RM"));
}

TEST(Collection, FindsElementsByPositionFromOne) {
    EXPECT_EQ(shown(towns()->Item(1)), "String Bari");
    EXPECT_EQ(shown(towns()->Item(std::int16_t{3})), "String Torino");
    EXPECT_EQ(shown(towns()->Item(2.5)), "String Milano");
}

TEST(Collection, RefusesKeysAndPositionsThatThereAreNot) {
    const auto collection = towns();
    EXPECT_EQ(raisedBy([&] { return collection->Item(u"RM"); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { return collection->Item(u"1"); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { return collection->Item(0); }), errors::kSubscriptOutOfRange);
    EXPECT_EQ(raisedBy([&] { return collection->Item(4); }), errors::kSubscriptOutOfRange);
    EXPECT_EQ(raisedBy([&] { return collection->Item(Variant::null()); }),
              errors::kInvalidUseOfNull);
}

TEST(Collection, RefusesAKeyThatAnElementHas) {
    const auto collection = towns();
    EXPECT_EQ(raisedBy([&] {
                  collection->Add(u"Barletta", u"ba");
                  return 0;
              }),
              errors::kDuplicateKey);
    EXPECT_EQ(all(collection), "Bari Milano Torino");
}

TEST(Collection, HoldsElementsWithoutAKeyAndWithAnEmptyOne) {
    const auto collection = make<Collection>();
    collection->Add(1);
    collection->Add(1);
    collection->Add(2, u"");
    EXPECT_EQ(collection->Count(), 3);
    EXPECT_EQ(shown(collection->Item(u"")), "Long 2");
}

TEST(Collection, RefusesAKeyThatIsNoText) {
    const auto collection = towns();
    EXPECT_EQ(raisedBy([&] {
                  collection->Add(u"Roma", 7);
                  return 0;
              }),
              errors::kTypeMismatch);
    EXPECT_EQ(collection->Count(), 3);
}

TEST(Collection, PutsElementsBeforeAndAfterOthers) {
    const auto collection = towns();
    collection->Add(u"Asti", u"AT", u"ba");
    collection->Add(u"Monza", Variant::missing(), Variant::missing(), 3);
    EXPECT_EQ(all(collection), "Asti Bari Milano Monza Torino");
    EXPECT_EQ(shown(collection->Item(4)), "String Monza");
    EXPECT_EQ(raisedBy([&] {
                  collection->Add(u"Roma", u"RM", 1, 1);
                  return 0;
              }),
              errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] {
                  collection->Add(u"Roma", u"RM", u"XX");
                  return 0;
              }),
              errors::kInvalidArgument);
}

TEST(Collection, KeepsTheOrderOfTheOthersWhenOneGoes) {
    const auto collection = towns();
    collection->Remove(u"mi");
    EXPECT_EQ(all(collection), "Bari Torino");
    collection->Remove(1);
    EXPECT_EQ(all(collection), "Torino");
    collection->Add(u"Milano", u"MI");
    EXPECT_EQ(all(collection), "Torino Milano");
    EXPECT_EQ(raisedBy([&] {
                  collection->Remove(u"BA");
                  return 0;
              }),
              errors::kInvalidArgument);
}

TEST(Collection, FindsEveryPositionInAnyOrderAmongChanges) {
    std::mt19937 random(test::randomSeed());
    const auto collection = make<Collection>();
    std::vector<std::int32_t> model;
    for (std::int32_t step = 0; step < 3000; ++step) {
        const auto place = model.empty() ? 0 : static_cast<std::int32_t>(random() % model.size());
        if (model.empty() || random() % 3 == 0) {
            collection->Add(step);
            model.push_back(step);
        } else if (random() % 5 == 0) {
            collection->Remove(place + 1);
            model.erase(model.begin() + place);
        } else {
            ASSERT_EQ(collection->Item(place + 1).as<std::int32_t>(),
                      model[static_cast<std::size_t>(place)]);
        }
    }
}

TEST(Collection, IsCalledByName) {
    const auto collection = make<Collection>();
    call(*collection, u"Add", {u"Bari", u"BA"});
    EXPECT_EQ(shown(call(*collection, u"item", {u"ba"})), "String Bari");
    EXPECT_EQ(shown(call(*collection, u"Count")), "Long 1");
    std::vector<Variant> key = {u"BA"};
    EXPECT_EQ(shown(collection->invoke(kDefaultMember, InvokeKind::MethodOrGet, {key, {}})),
              "String Bari");
    call(*collection, u"Remove", {1});
    EXPECT_EQ(collection->className(), String(u"Collection"));
    EXPECT_EQ(collection->Count(), 0);
}

// An object that has nothing to do with links but counts its references like any other.
class Guest final : public Object {
public:
    explicit Guest(int& alive) : alive_(alive) { ++alive_; }
    ~Guest() override { --alive_; }
    [[nodiscard]] String className() const override { return u"Guest"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view) const override {
        return std::nullopt;
    }
    Variant invoke(std::int32_t, InvokeKind, const Arguments&) override { return {}; }

private:
    int& alive_;
};

TEST(Collection, HoldsObjectsUntilTheyAreTakenOut) {
    int alive = 0;
    auto collection = make<Collection>();
    collection->Add(Variant(make<Guest>(alive)), u"a");
    collection->Add(Variant(make<Guest>(alive)), u"b");
    collection->Remove(u"a");
    EXPECT_EQ(alive, 1);
    collection = {};
    EXPECT_EQ(alive, 0);
}

TEST(Collection, EndsAlsoWhenItHoldsItself) {
    int alive = 0;
    auto collection = make<Collection>();
    collection->Add(Variant(collection), u"self");
    collection->Add(Variant(make<Guest>(alive)));
    collection = {};
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace kap

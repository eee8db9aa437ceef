#include <kaputil/automation/ref.hpp>

#include <gtest/gtest.h>

#include <utility>

#include <kaputil/automation/variant.hpp>

#include "automation/class_builder.hpp"

namespace kap {
namespace {

// Tells when it ends.
class Witness final : public Object {
public:
    explicit Witness(int& alive) : alive_(alive) { ++alive_; }
    ~Witness() override { --alive_; }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    [[nodiscard]] String className() const override { return u"Witness"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view) const override {
        return std::nullopt;
    }
    using Object::invoke;
    Variant invoke(std::int32_t, InvokeKind, const Arguments&) override { return {}; }

private:
    int& alive_;
};

TEST(Ref, EndsTheObjectWithItsLastReference) {
    int alive = 0;
    {
        const auto first = make<Witness>(alive);
        const Ref<Object> second = first;
        const Variant third = second;
        EXPECT_EQ(alive, 1);
        EXPECT_EQ(Ref<Object>(first), second);
    }
    EXPECT_EQ(alive, 0);
}

TEST(Ref, HandsTheObjectOverWhenMoved) {
    int alive = 0;
    auto first = make<Witness>(alive);
    Ref<Object> second = std::move(first);
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(alive, 1);
    second = {};
    EXPECT_EQ(alive, 0);
}

TEST(Ref, SurvivesAssignmentToItself) {
    int alive = 0;
    auto first = make<Witness>(alive);
    const auto& same = first;
    first = same;
    EXPECT_EQ(alive, 1);
    EXPECT_TRUE(first);
}

TEST(Ref, IsDroppedByAVariantThatTakesAnotherValue) {
    int alive = 0;
    Variant holder = make<Witness>(alive);
    EXPECT_EQ(alive, 1);
    holder = 1;
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace kap

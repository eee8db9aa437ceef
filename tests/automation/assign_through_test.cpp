// Assigning with arguments to members that give objects: `rows.Fields("Nome") = value`.
#include <gtest/gtest.h>

#include <map>
#include <vector>

#include <kaputil/automation/collection.hpp>

#include "automation/class_builder.hpp"
#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::invoke;
using test::raisedBy;
using test::shown;

// What a value is assigned to in the end.
class Cell final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription kDescription =
            ClassBuilder<Cell>(u"Cell", u"7", u"8")
                .property<&Cell::value, &Cell::setValue>(u"Value")
                .build(u"Value");
        return kDescription;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }
    [[nodiscard]] Variant value() const { return value_; }
    void setValue(const Variant& value) { value_ = value; }

private:
    Variant value_;
};

// Cells by row and column, through members of every kind.
class Sheet final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription kDescription =
            ClassBuilder<Sheet>(u"Sheet", u"9", u"10")
                .property<&Sheet::item>(u"Item", {u"Row", Parameter(u"Column").otherwise(1)})
                .method<&Sheet::find>(u"Find", {u"Row"})
                .property<&Sheet::stamp>(u"Stamp", {u"Row"})
                .build(u"Item");
        return kDescription;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }
    [[nodiscard]] Ref<Cell> item(std::int32_t row, std::int32_t column) {
        Ref<Cell>& cell = cells_[{row, column}];
        if (!cell) {
            cell = make<Cell>();
        }
        return cell;
    }
    Ref<Cell> find(std::int32_t row) {
        ++found;
        return item(row, 1);
    }
    [[nodiscard]] Variant stamp(std::int32_t row) const { return row; }

    int found = 0;

private:
    std::map<std::pair<std::int32_t, std::int32_t>, Ref<Cell>> cells_;
};

// A sheet behind properties: the default one that is read only, and one that takes another sheet.
class Binder final : public DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription kDescription =
            ClassBuilder<Binder>(u"Binder", u"11", u"12")
                .property<&Binder::sheet>(u"Sheet")
                .property<&Binder::sheet, &Binder::setSheet>(u"Chosen")
                .property<&Binder::note, &Binder::setNote>(u"Note")
                .alsoSet()
                .build(u"Sheet");
        return kDescription;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }
    [[nodiscard]] Ref<Sheet> sheet() const { return sheet_; }
    void setSheet(const Ref<Sheet>& sheet) { sheet_ = sheet; }
    [[nodiscard]] Variant note() const { return note_; }
    void setNote(const Variant& note) { note_ = note; }

private:
    Ref<Sheet> sheet_ = make<Sheet>();
    Variant note_;
};

class AssigningThrough : public testing::Test {
protected:
    [[nodiscard]] std::string held(std::int32_t row, std::int32_t column = 1) const {
        return shown(binder_->sheet()->item(row, column)->value());
    }

    Ref<Binder> binder_ = make<Binder>();
};

TEST_F(AssigningThrough, ReachesTheDefaultMemberOfWhatAMemberGives) {
    invoke(*binder_->sheet(), u"Item", InvokeKind::Let, {2, u"x"});
    EXPECT_EQ(held(2), "String x");
    invoke(*binder_->sheet(), u"Item", InvokeKind::Let, {2, 3, u"y"});
    EXPECT_EQ(held(2, 3), "String y");
}

TEST_F(AssigningThrough, HandsArgumentsOnThroughMembersThatTakeNone) {
    invoke(*binder_, u"Sheet", InvokeKind::Let, {4, u"a"});
    EXPECT_EQ(held(4), "String a");
    std::vector<Variant> arguments = {5, u"b"};
    binder_->invoke(kDefaultMember, InvokeKind::Let, Arguments{arguments, {}});
    EXPECT_EQ(held(5), "String b");
    invoke(*binder_, u"Chosen", InvokeKind::Let, {6, u"c"});
    EXPECT_EQ(held(6), "String c");
    invoke(*binder_, u"Chosen", InvokeKind::LetOrSet, {7, make<Cell>()});
    EXPECT_EQ(held(7), "Object");
}

TEST_F(AssigningThrough, TakesNamedArguments) {
    std::vector<Variant> positional = {u"x"};
    Variant row = 2;
    Variant column = 5;
    const Arguments::Named named[] = {{u"Column", &column}, {u"Row", &row}};
    binder_->sheet()->invoke(u"Item", InvokeKind::Let, Arguments{positional, named});
    EXPECT_EQ(held(2, 5), "String x");
    binder_->invoke(u"Sheet", InvokeKind::Let, Arguments{positional, {named, 2}});
    EXPECT_EQ(raisedBy([&] {
                  return binder_->sheet()->invoke(u"Item", InvokeKind::Let, Arguments{{}, named});
              }),
              449);
}

TEST_F(AssigningThrough, FollowsAVariantPropertyThatHoldsAnObject) {
    binder_->setNote(make<Sheet>());
    const auto sheet = binder_->note().as<Ref<Object>>();
    invoke(*binder_, u"Note", InvokeKind::Let, {1, u"x"});
    EXPECT_EQ(
        shown(invoke(*sheet, u"Item", InvokeKind::Get, {1}).as<Ref<Object>>()->defaultValue()),
        "String x");
    binder_->setNote(u"testo");
    EXPECT_EQ(raisedBy([&] { return invoke(*binder_, u"Note", InvokeKind::Let, {1, u"x"}); }), 450);
    invoke(*binder_, u"Note", InvokeKind::Let, {u"altro"});
    EXPECT_EQ(shown(binder_->note()), "String altro");
}

TEST_F(AssigningThrough, RaisesWhatReadingRaises) {
    EXPECT_EQ(raisedBy([&] { return invoke(*binder_, u"Sheet", InvokeKind::Let, {u"x", 1}); }), 13);
    EXPECT_EQ(raisedBy([&] {
                  return invoke(*binder_, u"Sheet", InvokeKind::Let, {1, 2, 3, 4});
              }),
              450);
    binder_->setSheet({});
    EXPECT_EQ(raisedBy([&] { return invoke(*binder_, u"Sheet", InvokeKind::Let, {1, u"x"}); }), 91);
}

TEST_F(AssigningThrough, IsRefusedWhereNothingCanBeAssigned) {
    EXPECT_EQ(raisedBy([&] { return invoke(*binder_, u"Sheet", InvokeKind::Let, {1}); }), 438);
    EXPECT_EQ(raisedBy([&] {
                  return invoke(*binder_->sheet(), u"Stamp", InvokeKind::Let, {1, u"x"});
              }),
              438);
    EXPECT_EQ(raisedBy([&] {
                  return invoke(*binder_->sheet(), u"Item", InvokeKind::Set, {1, make<Cell>()});
              }),
              438);
}

TEST_F(AssigningThrough, RunsNoMethodButTheDefaultMember) {
    EXPECT_EQ(raisedBy([&] {
                  return invoke(*binder_->sheet(), u"Find", InvokeKind::Let, {1, u"x"});
              }),
              438);
    EXPECT_EQ(binder_->sheet()->found, 0);
    const auto cells = make<Collection>();
    cells->Add(make<Cell>(), u"prima");
    invoke(*cells, u"Item", InvokeKind::Let, {u"prima", 5});
    EXPECT_EQ(shown(cells->Item(1).as<Ref<Object>>()->defaultValue()), "Long 5");
    cells->Add(7, u"seconda");
    EXPECT_EQ(raisedBy([&] {
                  return invoke(*cells, u"Item", InvokeKind::Let, {u"seconda", 5});
              }),
              438);
}

}  // namespace
}  // namespace kap

// What recordsets tell their driver about the rows that they change.
#include <gtest/gtest.h>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>

#include "data/driver.hpp"
#include "support/fake_driver.hpp"

namespace kap::ado {
namespace {

// A recordset of two rows of a table with the key N and the columns A and B.
class RowPlans : public testing::Test {
protected:
    RowPlans() {
        connection_->Open(u"Provider=Fake");
        Result result;
        for (const char* name : {"N", "A", "B"}) {
            ColumnInfo column;
            column.name = name;
            column.type = DataTypeEnum::adInteger;
            column.definedSize = 4;
            column.baseTable = "T";
            column.baseColumn = name;
            column.key = column.name == "N";
            result.columns.push_back(column);
            ColumnStore& cells = result.rows.emplace_back();
            cells.appendInteger(1);
            cells.appendInteger(2);
        }
        driver_.database.answer({result});
        rows_->Open(u"SELECT N, A, B FROM T", Variant(connection_), CursorTypeEnum::adOpenKeyset,
                    LockTypeEnum::adLockOptimistic);
    }
    [[nodiscard]] const RowChange& change(std::size_t number) const {
        return driver_.database.changes.at(number);
    }

    test::FakeDriver driver_;
    Ref<Connection> connection_ = make<Connection>();
    Ref<Recordset> rows_ = make<Recordset>();
};

TEST_F(RowPlans, RowsThatAreChangedAlikeShareOne) {
    rows_->Update(u"A", 10);
    rows_->MoveNext();
    rows_->Update(u"A", 20);
    EXPECT_EQ(change(0).plan, change(1).plan);
    EXPECT_EQ(change(0).values, (std::vector<Value>{std::int64_t{10}}));
    EXPECT_EQ(change(1).values, (std::vector<Value>{std::int64_t{20}}));
    EXPECT_EQ(change(0).criteria, (std::vector<Value>{std::int64_t{1}, std::int64_t{1}}));
    EXPECT_EQ(change(1).criteria, (std::vector<Value>{std::int64_t{2}, std::int64_t{2}}));
}

TEST_F(RowPlans, OtherColumnsMakeAnother) {
    rows_->Update(u"A", 10);
    rows_->Update(u"B", 10);
    rows_->Delete();
    EXPECT_NE(change(0).plan, change(1).plan);
    EXPECT_NE(change(0).plan->key(), change(1).plan->key());
    EXPECT_EQ(change(2).plan->kind(), RowPlan::Kind::Delete);
}

TEST_F(RowPlans, OfTwoRecordsetsAreTheSameToTheDriver) {
    rows_->Update(u"A", 10);
    rows_->Close();
    rows_->Open();
    rows_->Update(u"A", 11);
    EXPECT_EQ(change(0).plan->key(), change(1).plan->key());
}

TEST_F(RowPlans, ReadBackAWholeRowForAServerCursor) {
    rows_->Update(u"B", 10);
    const auto& readBack = change(0).plan->readBack();
    ASSERT_EQ(readBack.size(), 3U);
    EXPECT_EQ(readBack[0].name, "N");
    EXPECT_EQ(readBack[1].name, "A");
    EXPECT_EQ(readBack[2].name, "B");
    EXPECT_EQ(change(0).plan->table(), "T");
}

TEST_F(RowPlans, ReadBackWhatWasAssignedForAClientCursor) {
    rows_->Close();
    rows_->setCursorLocation(CursorLocationEnum::adUseClient);
    rows_->Open();
    rows_->Update(u"B", 10);
    ASSERT_EQ(change(0).plan->readBack().size(), 1U);
    EXPECT_EQ(change(0).plan->readBack().front().name, "B");
}

TEST_F(RowPlans, OfANewRowHaveNoCriteria) {
    rows_->AddNew();
    rows_->Update(u"N", 3);
    EXPECT_EQ(change(0).plan->kind(), RowPlan::Kind::Insert);
    EXPECT_TRUE(change(0).plan->criteria().empty());
    EXPECT_EQ(change(0).plan->values().size(), 1U);
    EXPECT_EQ(change(0).plan->readBack().size(), 3U);
}

}  // namespace
}  // namespace kap::ado

#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::raisedBy;
using test::shown;

// Seven numbered records.
class PositionTest : public RecordsetTest {
protected:
    [[nodiscard]] Ref<Recordset> numbers(
        CursorLocationEnum location = CursorLocationEnum::adUseClient) const {
        return openLive(connection_,
                        u"SELECT 1 AS N UNION ALL SELECT 2 UNION ALL SELECT 3 UNION ALL SELECT 4 "
                        u"UNION ALL SELECT 5 UNION ALL SELECT 6 UNION ALL SELECT 7",
                        location);
    }

    [[nodiscard]] Ref<Recordset> forwardOnly() const {
        return connection_->Execute(u"SELECT Codice FROM Clienti ORDER BY Codice");
    }
};

TEST_F(PositionTest, MovesToAnAbsolutePosition) {
    const auto rows = numbers();
    rows->setAbsolutePosition(5);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 5");
    EXPECT_EQ(rows->AbsolutePosition(), 5);
    EXPECT_EQ(raisedBy([&] { rows->setAbsolutePosition(0); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { rows->setAbsolutePosition(8); }), errors::kInvalidArgument);
    EXPECT_EQ(rows->AbsolutePosition(), 5);
}

TEST_F(PositionTest, CountsPositionsWithoutDeletedRecords) {
    const auto rows = all();
    rows->MoveNext();
    rows->Delete();
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    rows->setAbsolutePosition(2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3");
    EXPECT_EQ(rows->AbsolutePosition(), 2);
}

TEST_F(PositionTest, TurnsPages) {
    const auto rows = numbers();
    EXPECT_EQ(rows->PageSize(), 10);
    EXPECT_EQ(rows->PageCount(), 1);
    rows->setPageSize(3);
    EXPECT_EQ(rows->PageCount(), 3);
    EXPECT_EQ(rows->AbsolutePage(), 1);
    rows->setAbsolutePage(3);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 7");
    EXPECT_EQ(rows->AbsolutePage(), 3);
    rows->setAbsolutePage(2);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 4");
    rows->MoveLast();
    rows->MoveNext();
    EXPECT_EQ(rows->AbsolutePage(), -3);
    EXPECT_EQ(raisedBy([&] { rows->setAbsolutePage(4); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { rows->setPageSize(0); }), errors::kInvalidArgument);
}

TEST_F(PositionTest, AWholeLastPageIsTheLast) {
    const auto rows = numbers();
    rows->setPageSize(7);
    EXPECT_EQ(rows->PageCount(), 1);
}

TEST_F(PositionTest, ReturnsToABookmark) {
    const auto rows = numbers();
    rows->Move(2);
    const Variant third = rows->Bookmark();
    rows->MoveLast();
    rows->setBookmark(third);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3");
    rows->Move(2, third);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 5");
    rows->Move(-1, third);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 2");
}

TEST_F(PositionTest, ABookmarkKeepsItsRecordWhenTheOrderChanges) {
    const auto rows = numbers();
    const Variant first = rows->Bookmark();
    rows->setSort(u"N DESC");
    rows->setBookmark(first);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    EXPECT_EQ(rows->AbsolutePosition(), 7);
}

TEST_F(PositionTest, RefusesWhatIsNoBookmarkOfItsRecords) {
    const auto rows = numbers();
    for (const Variant& wrong : {Variant(0.0), Variant(8.0), Variant(1.5), Variant(u"x"),
                                 Variant(std::int32_t{3}), Variant::null()}) {
        EXPECT_EQ(raisedBy([&] { rows->setBookmark(wrong); }), errors::kBadBookmark);
    }
    rows->MoveLast();
    rows->MoveNext();
    EXPECT_EQ(raisedBy([&] { return rows->Bookmark(); }), errors::kNoCurrentRecord);
}

TEST_F(PositionTest, ABookmarkOfADeletedOrHiddenRecordIsRefused) {
    const auto rows = all();
    const Variant first = rows->Bookmark();
    rows->setFilter(u"Codice > 1");
    EXPECT_EQ(raisedBy([&] { rows->setBookmark(first); }), errors::kBadBookmark);
    rows->setFilter(u"");
    rows->Delete();
    EXPECT_EQ(raisedBy([&] { rows->setBookmark(first); }), errors::kBadBookmark);
}

TEST_F(PositionTest, ComparesBookmarksByTheOrderShown) {
    const auto rows = numbers();
    const Variant one = rows->Bookmark();
    rows->MoveNext();
    const Variant two = rows->Bookmark();
    EXPECT_EQ(rows->CompareBookmarks(one, two), CompareEnum::adCompareLessThan);
    EXPECT_EQ(rows->CompareBookmarks(two, two), CompareEnum::adCompareEqual);
    rows->setSort(u"N DESC");
    EXPECT_EQ(rows->CompareBookmarks(one, two), CompareEnum::adCompareGreaterThan);
    rows->setFilter(u"N > 1");
    EXPECT_EQ(rows->CompareBookmarks(one, two), CompareEnum::adCompareNotComparable);
}

TEST_F(PositionTest, AForwardOnlyCursorNeitherCountsNorGoesBack) {
    const auto rows = forwardOnly();
    EXPECT_EQ(rows->RecordCount(), -1);
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    EXPECT_EQ(rows->PageCount(), -1);
    rows->MoveNext();
    EXPECT_EQ(raisedBy([&] { rows->MovePrevious(); }), errors::kCannotFetchBackward);
    EXPECT_EQ(raisedBy([&] { rows->Move(-1); }), errors::kCannotFetchBackward);
    EXPECT_EQ(raisedBy([&] { return rows->Bookmark(); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { rows->setAbsolutePosition(1); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { rows->setSort(u"Codice"); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(raisedBy([&] { return rows->Clone(); }), errors::kFeatureNotAvailable);
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 2");
}

TEST_F(PositionTest, AForwardOnlyCursorStartsAgainAndReachesItsEnd) {
    const auto rows = forwardOnly();
    rows->Move(2);
    rows->MoveFirst();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 1");
    rows->MoveLast();
    EXPECT_EQ(shown(fieldOf(rows, 0)), "Long 3");
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
}

TEST_F(PositionTest, TheDefaultsAreAForwardOnlyReadOnlyServerCursor) {
    const auto rows = make<Recordset>();
    rows->Open(u"SELECT * FROM Clienti", Variant(connection_));
    EXPECT_EQ(rows->CursorType(), CursorTypeEnum::adOpenForwardOnly);
    EXPECT_EQ(rows->LockType(), LockTypeEnum::adLockReadOnly);
    EXPECT_EQ(rows->CursorLocation(), CursorLocationEnum::adUseServer);
}

TEST_F(PositionTest, ADynamicCursorBecomesAKeyset) {
    const auto rows = make<Recordset>();
    rows->Open(u"SELECT * FROM Clienti", Variant(connection_), CursorTypeEnum::adOpenDynamic);
    EXPECT_EQ(rows->CursorType(), CursorTypeEnum::adOpenKeyset);
    EXPECT_EQ(rows->RecordCount(), 3);
}

TEST_F(PositionTest, FetchesNoMoreRecordsThanAsked) {
    const auto rows = make<Recordset>();
    rows->setMaxRecords(2);
    rows->setCursorLocation(CursorLocationEnum::adUseClient);
    rows->Open(u"SELECT * FROM Clienti ORDER BY Codice", Variant(connection_));
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(raisedBy([&] { rows->setMaxRecords(1); }), errors::kObjectOpen);
    rows->Close();
    EXPECT_EQ(raisedBy([&] { rows->setMaxRecords(-1); }), errors::kInvalidArgument);
}

TEST_F(PositionTest, TellsWhatItCanDo) {
    using enum CursorOptionEnum;
    const auto live = all();
    for (const auto option : {adMovePrevious, adBookmark, adApproxPosition, adFind, adAddNew,
                              adUpdate, adDelete, adResync, adHoldRecords}) {
        EXPECT_TRUE(live->Supports(option)) << static_cast<int>(option);
    }
    EXPECT_FALSE(live->Supports(adUpdateBatch));
    EXPECT_FALSE(live->Supports(adSeek));
    const auto forward = forwardOnly();
    EXPECT_FALSE(forward->Supports(adMovePrevious));
    EXPECT_FALSE(forward->Supports(adBookmark));
    EXPECT_FALSE(forward->Supports(adUpdate));
    EXPECT_TRUE(forward->Supports(adFind));
}

TEST_F(PositionTest, KeepsWhatItIsTold) {
    const auto rows = make<Recordset>();
    EXPECT_EQ(rows->CacheSize(), 1);
    rows->setCacheSize(50);
    EXPECT_EQ(rows->CacheSize(), 50);
    EXPECT_EQ(raisedBy([&] { rows->setCacheSize(0); }), errors::kInvalidArgument);
    rows->setMarshalOptions(MarshalOptionsEnum::adMarshalModifiedOnly);
    EXPECT_EQ(rows->MarshalOptions(), MarshalOptionsEnum::adMarshalModifiedOnly);
    EXPECT_EQ(raisedBy([&] { rows->setMarshalOptions(MarshalOptionsEnum{7}); }),
              errors::kInvalidArgument);
}

TEST_F(PositionTest, SavesAPendingChangeBeforeGoingToAPosition) {
    const auto rows = all();
    rows->Fields()->Item(u"Nome")->setValue(u"Neri");
    rows->setAbsolutePosition(2);
    EXPECT_EQ(shown(test::valueOf(connection_, u"SELECT Nome FROM Clienti WHERE Codice = 1")),
              "String Neri");
}

}  // namespace
}  // namespace kap::ado

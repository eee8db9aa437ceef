#include "ado/recordset_fixture.hpp"

namespace kap::ado {
namespace {

using test::fieldOf;
using test::openLive;
using test::raisedBy;
using test::shown;
using test::valueOf;

// Articles with every kind of value, found by number.
class SearchTest : public RecordsetTest {
protected:
    SearchTest() {
        test::prepare(
            connection_,
            u"CREATE TABLE Articoli (N int PRIMARY KEY, Nome nvarchar(30), Prezzo money, "
            u"Sconto decimal(5,2), Peso float, Dal datetime, Attivo bit, Foto varbinary(4), "
            u"Lordo real, Grande bigint, Nota text, Chiave uniqueidentifier);"
            u"INSERT INTO Articoli (N, Nome, Prezzo, Sconto, Peso, Dal, Attivo, Foto, Lordo, "
            u"Grande, Nota, Chiave) VALUES "
            u"(1, 'Vite', 1.5, 10.25, 0.1, '2003-12-31 18:30:00', 1, 0x01, 0.1, 9000000000, "
            u"'una nota', '6F9619FF-8B86-D011-B42D-00C04FC964FF'),"
            u"(2, 'dado', 2, 5, 0.2, '2004-01-01', 0, NULL, 0.2, 2, NULL, NULL),"
            u"(3, 'Vite lunga', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL),"
            u"(4, 'È rondella', 4, 7.5, 3, '1899-12-29 06:00:00', 1, NULL, 3, -1, '', NULL),"
            u"(5, 'L''ancora', 1.5, 0, 1e10, '2004-01-01 00:00:00', 0, NULL, 5, 0, 'x', NULL)");
    }

    [[nodiscard]] Ref<Recordset> articles() const {
        return openLive(connection_, u"SELECT * FROM Articoli ORDER BY N");
    }

    // The numbers of the articles that a filter shows.
    [[nodiscard]] static std::string numbersOf(const Ref<Recordset>& rows) {
        std::string numbers;
        if (rows->RecordCount() > 0) {
            rows->MoveFirst();
        }
        for (; !rows->Eof(); rows->MoveNext()) {
            numbers += (numbers.empty() ? "" : " ") + convert::toString(fieldOf(rows, u"N")).utf8();
        }
        return numbers;
    }

    [[nodiscard]] std::string filtered(const char* criteria) const {
        const auto rows = articles();
        rows->setFilter(criteria);
        return numbersOf(rows);
    }

    [[nodiscard]] std::int32_t refusal(const char* criteria) const {
        const auto rows = articles();
        return raisedBy([&] { rows->setFilter(criteria); });
    }
};

TEST_F(SearchTest, FiltersTextsWithoutRegardToCaseAndTrailingBlanks) {
    EXPECT_EQ(filtered("Nome = 'VITE'"), "1");
    EXPECT_EQ(filtered("nome = 'Vite  '"), "1");
    EXPECT_EQ(filtered("Nome = 'è RONDELLA'"), "4");
    EXPECT_EQ(filtered("Nome <> 'vite'"), "2 3 4 5");
    EXPECT_EQ(filtered("Nome < 'F'"), "2 4");
    EXPECT_EQ(filtered("Nome >= 'L''ancora'"), "1 3 5");
    EXPECT_EQ(filtered("Nota = ''"), "4");
}

TEST_F(SearchTest, FiltersWithWildcards) {
    EXPECT_EQ(filtered("Nome LIKE 'vite*'"), "1 3");
    EXPECT_EQ(filtered("Nome LIKE '%LUNGA%'"), "3");
    EXPECT_EQ(filtered("Nome LIKE '*n*'"), "3 4 5");
    EXPECT_EQ(filtered("Nome LIKE 'v%'"), "1 3");
    EXPECT_EQ(filtered("Nome LIKE 'vite'"), "1");
    EXPECT_EQ(filtered("Nome LIKE '*'"), "1 2 3 4 5");
    EXPECT_EQ(filtered("Nome LIKE 'x*'"), "");
}

TEST_F(SearchTest, FiltersNumbersExactly) {
    EXPECT_EQ(filtered("Prezzo = 1.5"), "1 5");
    EXPECT_EQ(filtered("Prezzo > 1.49999"), "1 2 4 5");
    EXPECT_EQ(filtered("Prezzo > 1.50001"), "2 4");
    EXPECT_EQ(filtered("Sconto = 10.25"), "1");
    EXPECT_EQ(filtered("Sconto = 10.251"), "");
    EXPECT_EQ(filtered("Sconto <= 5"), "2 5");
    EXPECT_EQ(filtered("N < 2.5"), "1 2");
    EXPECT_EQ(filtered("N <> 2.5"), "1 2 3 4 5");
    EXPECT_EQ(filtered("Peso = 0.1"), "1");
    EXPECT_EQ(filtered("Peso >= 1e10"), "5");
    EXPECT_EQ(filtered("Lordo = 0.1"), "1");
    EXPECT_EQ(filtered("Grande = 9000000000"), "1");
    EXPECT_EQ(filtered("Grande < -0.5"), "4");
    EXPECT_EQ(filtered("N < 99999999999999999999"), "1 2 3 4 5");
}

TEST_F(SearchTest, ANumberInQuotesIsReadAsTheUserWritesIt) {
    EXPECT_EQ(filtered("Sconto = '10,25'"), "1");
    EXPECT_EQ(filtered("N = '2'"), "2");
}

TEST_F(SearchTest, FiltersDates) {
    EXPECT_EQ(filtered("Dal = #12/31/2003 18:30:00#"), "1");
    EXPECT_EQ(filtered("Dal = #2003-12-31 18:30:00#"), "1");
    EXPECT_EQ(filtered("Dal >= #1/1/2004#"), "2 5");
    EXPECT_EQ(filtered("Dal = '31/12/2003 18:30:00'"), "1");
    EXPECT_EQ(filtered("Dal < #12/30/1899#"), "4");
    EXPECT_EQ(filtered("Dal < 0"), "4");
}

TEST_F(SearchTest, FiltersBooleans) {
    EXPECT_EQ(filtered("Attivo = True"), "1 4");
    EXPECT_EQ(filtered("Attivo = false"), "2 5");
    EXPECT_EQ(filtered("Attivo = -1"), "1 4");
    EXPECT_EQ(filtered("Attivo <> 0"), "1 4");
}

TEST_F(SearchTest, NullIsOnlyEqualOrNot) {
    EXPECT_EQ(filtered("Prezzo = Null"), "3");
    EXPECT_EQ(filtered("Dal <> null"), "1 2 4 5");
    EXPECT_EQ(filtered("Prezzo <> 1.5"), "2 4");
    EXPECT_EQ(refusal("Prezzo > Null"), errors::kInvalidArgument);
}

TEST_F(SearchTest, AReplacedNullCountsAsWhatItReads) {
    const auto rows = articles();
    rows->replaceNulls(2);
    rows->replaceNulls(10);
    rows->setFilter(u"Prezzo = 0");
    EXPECT_EQ(numbersOf(rows), "3");
    rows->setFilter(u"Nota = ''");
    EXPECT_EQ(numbersOf(rows), "2 3 4");
    rows->setFilter(u"Nota LIKE '*'");
    EXPECT_EQ(numbersOf(rows), "1 2 3 4 5");
}

TEST_F(SearchTest, FiltersIdentifiersWithAndWithoutBraces) {
    EXPECT_EQ(filtered("Chiave = '{6f9619ff-8b86-d011-b42d-00c04fc964ff}'"), "1");
    EXPECT_EQ(filtered("Chiave = '6F9619FF-8B86-D011-B42D-00C04FC964FF'"), "1");
}

TEST_F(SearchTest, JoinsConditions) {
    EXPECT_EQ(filtered("Prezzo = 1.5 AND Attivo = True"), "1");
    EXPECT_EQ(filtered("N = 1 OR N = 3 AND Nome LIKE 'v*'"), "1 3");
    EXPECT_EQ(filtered("(N = 1 AND Prezzo > 1.5) OR (N = 2 AND Prezzo > 1.5)"), "2");
}

TEST_F(SearchTest, RefusesCriteriaThatDoNotFitTheColumn) {
    EXPECT_EQ(refusal("Manca = 1"), errors::kItemNotFound);
    EXPECT_EQ(refusal("N = 'abc'"), errors::kInvalidArgument);
    EXPECT_EQ(refusal("N = abc"), errors::kInvalidArgument);
    EXPECT_EQ(refusal("N = #1/1/2004#"), errors::kInvalidArgument);
    EXPECT_EQ(refusal("N LIKE '1*'"), errors::kInvalidArgument);
    EXPECT_EQ(refusal("Dal = #99/99/2004#"), errors::kInvalidArgument);
    EXPECT_EQ(refusal("Foto = 1"), errors::kInvalidArgument);
    EXPECT_EQ(refusal("Attivo = forse"), errors::kInvalidArgument);
}

TEST_F(SearchTest, ARefusedFilterLeavesTheOldOne) {
    const auto rows = articles();
    rows->setFilter(u"N > 3");
    EXPECT_EQ(raisedBy([&] { rows->setFilter(u"N >"); }), errors::kInvalidArgument);
    EXPECT_EQ(shown(rows->Filter()), "String N > 3");
    EXPECT_EQ(numbersOf(rows), "4 5");
}

TEST_F(SearchTest, AFilterCountsAndPositionsOnlyWhatItShows) {
    const auto rows = articles();
    rows->setFilter(u"Attivo = False");
    EXPECT_EQ(rows->RecordCount(), 2);
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 2");
    rows->MoveLast();
    EXPECT_EQ(rows->AbsolutePosition(), 2);
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 5");
    rows->setFilter(u"N > 99");
    EXPECT_TRUE(rows->Bof());
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(raisedBy([&] { rows->MoveFirst(); }), errors::kNoCurrentRecord);
    rows->setFilter(0);
    EXPECT_EQ(rows->RecordCount(), 5);
}

TEST_F(SearchTest, ARecordThatLeavesTheFilterStaysCurrentUntilTheNextMovement) {
    const auto rows = articles();
    rows->setFilter(u"Attivo = False");
    std::string visited;
    for (; !rows->Eof(); rows->MoveNext()) {
        visited += convert::toString(fieldOf(rows, u"N")).utf8();
        rows->Update(u"Attivo", true);
        EXPECT_EQ(shown(fieldOf(rows, u"Attivo")), "Boolean Vero");
    }
    EXPECT_EQ(visited, "25");
    EXPECT_EQ(rows->RecordCount(), 0);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Articoli WHERE Attivo = 1")),
              "Long 4");
}

TEST_F(SearchTest, AddsARecordUnderAFilter) {
    const auto rows = articles();
    rows->setFilter(u"Attivo = True");
    rows->AddNew(Array::ofVariants({u"N", u"Attivo"}), Array::ofVariants({9, true}));
    EXPECT_EQ(rows->RecordCount(), 3);
    rows->AddNew(Array::ofVariants({u"N", u"Attivo"}), Array::ofVariants({10, false}));
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 10");
    EXPECT_EQ(numbersOf(rows), "1 4 9");
}

TEST_F(SearchTest, FiltersByBookmarks) {
    const auto rows = articles();
    const Variant first = rows->Bookmark();
    rows->Move(3);
    rows->setFilter(Array::ofVariants({rows->Bookmark(), first}));
    EXPECT_EQ(numbersOf(rows), "1 4");
    EXPECT_EQ(raisedBy([&] { rows->setFilter(Array::ofVariants({77.0})); }), errors::kBadBookmark);
}

TEST_F(SearchTest, DeletesWhatTheFilterShows) {
    const auto rows = articles();
    EXPECT_EQ(raisedBy([&] { rows->Delete(AffectEnum::adAffectGroup); }), errors::kInvalidArgument);
    rows->setFilter(u"Attivo = True");
    rows->Delete(AffectEnum::adAffectGroup);
    EXPECT_EQ(rows->RecordCount(), 0);
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT COUNT(*) FROM Articoli")), "Long 3");
    rows->setFilter(u"");
    EXPECT_EQ(numbersOf(rows), "2 3 5");
}

TEST_F(SearchTest, SortsByOneColumnWithNullsFirst) {
    const auto rows = articles();
    rows->setSort(u"Prezzo");
    EXPECT_EQ(numbersOf(rows), "3 1 5 2 4");
    rows->setSort(u"Prezzo DESC");
    EXPECT_EQ(numbersOf(rows), "4 2 1 5 3");
}

TEST_F(SearchTest, SortsBySeveralColumnsAndBackToTheQuerysOrder) {
    const auto rows = articles();
    rows->setSort(u"[Prezzo] ASC, N DESC");
    EXPECT_EQ(numbersOf(rows), "3 5 1 2 4");
    EXPECT_EQ(rows->Sort(), String(u"[Prezzo] ASC, N DESC"));
    rows->setSort(u"");
    EXPECT_EQ(numbersOf(rows), "1 2 3 4 5");
}

TEST_F(SearchTest, SortsTextsAsTheDatabaseDoes) {
    const auto rows = articles();
    rows->setSort(u"Nome");
    const auto query = openLive(connection_, u"SELECT N FROM Articoli ORDER BY Nome");
    EXPECT_EQ(numbersOf(rows), "2 4 5 1 3");
    EXPECT_EQ(numbersOf(query), "2 4 5 1 3");
}

TEST_F(SearchTest, SortsDatesAndStandsOnTheFirstRecord) {
    const auto rows = articles();
    rows->MoveLast();
    rows->setSort(u"Dal DESC, N");
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    EXPECT_EQ(numbersOf(rows), "2 5 1 4 3");
}

TEST_F(SearchTest, SortsWhatAFilterShows) {
    const auto rows = articles();
    rows->setFilter(u"N > 1");
    rows->setSort(u"Nome DESC");
    EXPECT_EQ(numbersOf(rows), "3 5 4 2");
    rows->setFilter(u"");
    EXPECT_EQ(numbersOf(rows), "3 1 5 4 2");
}

TEST_F(SearchTest, RefusesAnOrderThatCannotBeReadAndKeepsTheOldOne) {
    const auto rows = articles();
    rows->setSort(u"N DESC");
    EXPECT_EQ(raisedBy([&] { rows->setSort(u"Manca"); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { rows->setSort(u"N UP"); }), errors::kInvalidArgument);
    EXPECT_EQ(rows->Sort(), String(u"N DESC"));
    EXPECT_EQ(numbersOf(rows), "5 4 3 2 1");
}

TEST_F(SearchTest, FindsForwardFromTheCurrentRecord) {
    const auto rows = articles();
    rows->Find(u"Prezzo = 1.5");
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 1");
    rows->Find(u"Prezzo = 1.5", 1);
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 5");
    rows->Find(u"Prezzo = 1.5", 1);
    EXPECT_TRUE(rows->Eof());
    EXPECT_EQ(raisedBy([&] { rows->Find(u"N = 1"); }), errors::kNoCurrentRecord);
}

TEST_F(SearchTest, FindsBackwardAndFromAStart) {
    using enum SearchDirectionEnum;
    const auto rows = articles();
    const Variant first = rows->Bookmark();
    rows->MoveLast();
    rows->Find(u"Nome LIKE 'vite*'", 0, adSearchBackward);
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 3");
    rows->Find(u"Nome LIKE 'vite*'", 1, adSearchBackward);
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 1");
    rows->Find(u"N = 9", 0, adSearchBackward);
    EXPECT_TRUE(rows->Bof());
    rows->Find(u"N > 1", 0, adSearchForward, first);
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 2");
    rows->Find(u"N < 9", 0, adSearchBackward, std::int32_t{2});  // from the last
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 5");
    EXPECT_EQ(raisedBy([&] { rows->Find(u"N = 1", 0, SearchDirectionEnum{0}); }),
              errors::kInvalidArgument);
}

TEST_F(SearchTest, FindsOnlyAmongWhatIsShown) {
    const auto rows = articles();
    rows->setFilter(u"N > 1");
    rows->Find(u"Prezzo = 1.5");
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 5");
    rows->MoveFirst();
    rows->Delete();
    rows->Find(u"N < 4");
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 3");
}

TEST_F(SearchTest, FindTakesOneComparison) {
    const auto rows = articles();
    EXPECT_EQ(raisedBy([&] { rows->Find(u"N = 1 AND N = 2"); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { rows->Find(u"Manca = 1"); }), errors::kItemNotFound);
    EXPECT_EQ(raisedBy([&] { rows->Find(u""); }), errors::kInvalidArgument);
}

TEST_F(SearchTest, FindsForwardInAForwardOnlyCursor) {
    const auto rows = connection_->Execute(u"SELECT * FROM Articoli ORDER BY N");
    rows->Find(u"Nome = 'vite lunga'");
    EXPECT_EQ(shown(fieldOf(rows, u"N")), "Long 3");
    EXPECT_EQ(raisedBy([&] { rows->Find(u"N = 1", 0, SearchDirectionEnum::adSearchBackward); }),
              errors::kFeatureNotAvailable);
}

TEST_F(SearchTest, FindSavesAPendingChangeFirst) {
    const auto rows = articles();
    rows->Fields()->Item(u"Nome")->setValue(u"Chiodo");
    rows->Find(u"N = 2");
    EXPECT_EQ(shown(valueOf(connection_, u"SELECT Nome FROM Articoli WHERE N = 1")),
              "String Chiodo");
}

}  // namespace
}  // namespace kap::ado

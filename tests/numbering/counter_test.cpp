#include "numbering/counter.hpp"

#include <gtest/gtest.h>

#include <kaputil/data/error_numbers.hpp>

#include "numbering/company.hpp"
#include "numbering/reservation.hpp"

// What happens when another program writes between our reading and our writing.
namespace kap::numbering::test {
namespace {

constexpr const char* kRowNotWritten = "Errore di update su tabella progressivi !!!";

// A company whose counter has been read, as in the middle of a call.
class ReadCounter : public testing::Test {
protected:
    ReadCounter() {
        company_.counter("41", "7", "0");
        row_ = findByCode(request_, *errore_).row;
    }

    void another(const std::string& script) const {
        open(company_.connectionString())->Execute(String(script));
    }
    std::string messageOf(const Ref<CErrore>& outcome) const {
        return outcome->Numero().as<String>() == String(u"0")
                   ? std::string()
                   : outcome->LeggiAttributo(u"ERR_MSG1").as<String>().utf8();
    }

    Company company_;
    Variant connection_{company_.connection()};
    Request request_{"FAI", "D", "S", 2025, 120, connection_, "FAT", "vtx_TabDoc", 1};
    Ref<CErrore> errore_ = make<CErrore>();
    Ref<ado::Recordset> row_;
};

TEST_F(ReadCounter, IsAdvancedFromWhereAnotherProgramLeftIt) {
    another("UPDATE vtx_TabPro SET n_Def = 60");
    EXPECT_EQ(messageOf(AggiornaContatore(*row_, u"n_Def", 0)), "");
    EXPECT_EQ(company_.definitive(), "Long 61");
    EXPECT_EQ(shown(valueOf(*row_, u"n_Def")), "Long 61");
}

TEST_F(ReadCounter, GetsItsConsecutiveNumbersFromTwoPrograms) {
    Variant other(open(company_.connectionString()));
    Ref<CErrore> errore;
    EXPECT_EQ(
        shown(Progressivi_OLD(u"FAI", u"D", u"S", 2025, 0, other, u"FAT", u"vtx_TabDoc", errore)),
        "Long 42");
    Ref<CErrore> own;
    EXPECT_EQ(shown(resultOfWriting(AggiornaContatore(*row_, u"n_Def", 0), *row_, request_, own)),
              "Long 43");
}

TEST_F(ReadCounter, DoesNotMindAnotherColumnThatChanged) {
    another("UPDATE vtx_TabPro SET n_Prov = 60");
    EXPECT_EQ(messageOf(AggiornaContatore(*row_, u"n_Def", 0)), "");
    EXPECT_EQ(company_.definitive(), "Long 42");
    EXPECT_EQ(company_.provisional(), "Long 60");
}

TEST_F(ReadCounter, GetsAnExactNumberInOneAttemptOnly) {
    another("UPDATE vtx_TabPro SET n_Def = 60");
    EXPECT_EQ(messageOf(AggiornaContatore(*row_, u"n_Def", 42)), kRowNotWritten);
    EXPECT_EQ(company_.definitive(), "Long 60");
    EXPECT_EQ(messageOf(AggiornaContatore(*row_, u"n_Def", 61)), "");
    EXPECT_EQ(company_.definitive(), "Long 61");
}

TEST_F(ReadCounter, CannotBeWrittenWhenItIsGone) {
    another("DELETE FROM vtx_TabPro");
    Ref<CErrore> errore = errore_;
    EXPECT_EQ(
        shown(resultOfWriting(AggiornaContatore(*row_, u"n_Def", 0), *row_, request_, errore)),
        "Double 120");
    EXPECT_EQ(messageOf(errore), kRowNotWritten);
}

TEST_F(ReadCounter, GivesUpAfterFiveAttempts) {
    company_.run("ALTER TABLE vtx_TabPro ADD CONSTRAINT Pieno CHECK (n_Def < 42)");
    EXPECT_EQ(messageOf(AggiornaContatore(*row_, u"n_Def", 0)), kRowNotWritten);
    EXPECT_EQ(company_.definitive(), "Long 41");
}

TEST_F(ReadCounter, PassesOverUsedNumbersBeforeStoring) {
    company_.document(42);
    company_.document(43);
    EXPECT_EQ(messageOf(RegistraProgressivo(connection_, *row_, u"n_Def", 42, 1)), "");
    EXPECT_EQ(company_.definitive(), "Long 44");
}

TEST_F(ReadCounter, BeginsBehindTheLastNumberWhenNoneIsGiven) {
    company_.document(8);
    EXPECT_EQ(messageOf(RegistraProgressivo(connection_, *row_, u"n_Prov", 0, 5)), "");
    EXPECT_EQ(company_.provisional(), "Long 9");
}

TEST_F(ReadCounter, ForgetsTheCallersNumberWhenUsedNumbersDoNotMatter) {
    company_.document(42);
    EXPECT_EQ(messageOf(RegistraProgressivo(connection_, *row_, u"n_Def", 99, 0)), "");
    EXPECT_EQ(company_.definitive(), "Long 42");
}

// No second attempt: whoever stores a number as it is hears of the other program.
TEST_F(ReadCounter, RefusesAStoringAsItIsWhenAnotherProgramWasFirst) {
    another("UPDATE vtx_TabPro SET n_Def = 60");
    EXPECT_EQ(raisedBy([&] {
                  storeDefinitive(*row_, 57.0);
                  return 0;
              }),
              ado::errors::kConcurrency);
    EXPECT_EQ(company_.definitive(), "Long 60");
}

TEST_F(ReadCounter, RefusesTheEndOfAReservationWhenAnotherProgramWasFirst) {
    company_.reserve(120);
    another("UPDATE vtx_TabPro SET n_Def = 60");
    EXPECT_EQ(raisedBy([&] { return checkReservation(request_, u"FAT", *row_, *errore_); }),
              ado::errors::kConcurrency);
    EXPECT_EQ(company_.definitive(), "Long 60");
    // The reservation was deleted before.
    EXPECT_EQ(company_.state(120), "gone");
}

TEST_F(ReadCounter, RefusesAReservationThatAnotherProgramChanged) {
    company_.reserve(120);
    const auto reservation = openLive(
        company_.connection(), u"SELECT TOP 1 * FROM vtx_TabProPrenotati WHERE Numero = '120'",
        ado::CursorLocationEnum::adUseServer);
    another("UPDATE vtx_TabProPrenotati SET Stato = 'D'");
    EXPECT_EQ(raisedBy([&] {
                  ControllaPrenotato(request_, *reservation, *row_, u"FAI", *errore_);
                  return 0;
              }),
              ado::errors::kConcurrency);
    EXPECT_EQ(company_.state(120), "String D");
    EXPECT_EQ(company_.definitive(), "Long 41");
}

}  // namespace
}  // namespace kap::numbering::test

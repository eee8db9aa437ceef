#include <kaputil/core/cerrore.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <kaputil/automation/array.hpp>

#include "support/late_bound.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::call;
using test::invoke;
using test::raisedBy;
using test::shown;

constexpr const char* kFresh = "String <ERR_NUMERO>0</ERR_NUMERO><ERR_MSG1></ERR_MSG1>";

String messages(int count) {
    String text;
    for (int i = 1; i <= count; ++i) {
        const String number = std::to_string(i);
        text += u"<ERR_MSG" + number + u">m" + number + u"</ERR_MSG" + number + u">";
    }
    return text;
}

TEST(CErrore, IsFreshWhenNew) {
    const auto error = make<CErrore>();
    EXPECT_EQ(shown(error->Numero()), "String 0");
    EXPECT_EQ(shown(error->MsgToString()), "String ");
    EXPECT_EQ(shown(error->ToString()), kFresh);
}

TEST(CErrore, GivesItsMessagesInOrder) {
    const auto error = make<CErrore>();
    error->AddMessaggio(u"A");
    error->AddMessaggio(u"B");
    EXPECT_EQ(shown(error->MsgToString()), "String A\r\nB\r\n");
    const Variant array = error->MsgToArray();
    EXPECT_EQ(array.as<Array>().lowerBound(), 1);
    EXPECT_EQ(array.as<Array>().upperBound(), 2);
    EXPECT_EQ(shown(array.as<Array>().at(1)), "String A");
    EXPECT_EQ(shown(array.as<Array>().at(2)), "String B");
}

TEST(CErrore, PutsTheFirstMessageRightBehindTheNumber) {
    const auto error = make<CErrore>();
    error->ScriviAttributo(u"campo", u"Codice");
    error->AddMessaggio(u"A");
    error->AddMessaggio(u"B");
    EXPECT_EQ(shown(error->ToString()),
              "String <ERR_NUMERO>0</ERR_NUMERO><ERR_MSG1>A</ERR_MSG1><CAMPO>Codice</CAMPO>"
              "<ERR_MSG2>B</ERR_MSG2>");
}

TEST(CErrore, CountsNoMessageWhenTheFirstOneOfAStringIsEmpty) {
    const auto error = make<CErrore>();
    error->Init(u"<ERR_NUMERO>1</ERR_NUMERO><ERR_MSG1></ERR_MSG1><ERR_MSG2>B</ERR_MSG2>");
    EXPECT_EQ(shown(error->MsgToString()), "String ");
    error->AddMessaggio(u"A");
    EXPECT_EQ(shown(error->MsgToString()), "String A\r\n");
}

TEST(CErrore, HasANullNumberWhenTheStringHadNone) {
    const auto error = make<CErrore>();
    error->Init(u"<ERR_MSG1>A</ERR_MSG1>");
    EXPECT_EQ(shown(error->Numero()), "Null");
    EXPECT_EQ(shown(error->MsgToString()), "String A\r\n");
}

TEST(CErrore, ReturnsExactlyTheStringItWasGiven) {
    const auto error = make<CErrore>();
    for (const char16_t* text :
         {u"", u"x", u"<ERR_NUMERO>7</ERR_NUMERO>coda<X>1</X>", u"<A></A>x<A></A></"}) {
        error->Init(text);
        EXPECT_EQ(error->ToString().as<String>(), text);
    }
}

TEST(CErrore, StoresTheTextOfANumber) {
    const auto error = make<CErrore>();
    error->setNumero(12);
    EXPECT_EQ(shown(error->Numero()), "String 12");
    error->setNumero(Variant::null());
    EXPECT_EQ(shown(error->Numero()), "String ");
}

TEST(CErrore, IsFreshAgainWhicheverWayItWasWritten) {
    const std::function<void(CErrore&)> writes[] = {
        [](CErrore& error) { error.setNumero(7); },
        [](CErrore& error) { error.AddMessaggio(u"uno"); },
        [](CErrore& error) { error.Init(u"<ERR_NUMERO>3</ERR_NUMERO>"); },
        [](CErrore& error) { error.ScriviAttributo(u"Altro", u"x"); },
    };
    const auto error = make<CErrore>();
    for (const auto& write : writes) {
        error->Clear();
        write(*error);
        error->Clear();
        EXPECT_EQ(shown(error->ToString()), kFresh);
        EXPECT_EQ(shown(error->MsgToString()), "String ");
    }
}

TEST(CErrore, ReturnsToItsFreshStateWhenCleared) {
    const auto error = make<CErrore>();
    error->setNumero(1);
    error->AddMessaggio(u"A");
    error->ScriviAttributo(u"campo", u"x");
    error->Clear();
    EXPECT_EQ(shown(error->ToString()), kFresh);
    EXPECT_EQ(shown(error->MsgToString()), "String ");
}

TEST(CErrore, KeepsAllButCountsOnlyTwentyMessagesOfAString) {
    const auto error = make<CErrore>();
    error->Init(messages(22));
    error->AddMessaggio(u"nuovo");
    const Array& array = error->MsgToArray().as<Array>();
    EXPECT_EQ(array.upperBound(), 21);
    EXPECT_EQ(shown(array.at(20)), "String m20");
    EXPECT_EQ(shown(error->LeggiAttributo(u"ERR_MSG21")), "String nuovo");
    EXPECT_EQ(shown(error->LeggiAttributo(u"ERR_MSG22")), "String m22");
}

TEST(CErrore, KeepsNumberAttributesAndMessagesInARoundTrip) {
    const auto from = make<CErrore>();
    from->setNumero(1);
    from->AddMessaggio(u"A");
    from->AddMessaggio(u"B");
    from->ScriviAttributo(u"campo", u"Codice");
    const auto to = make<CErrore>();
    to->Init(from->ToString().as<String>());
    EXPECT_EQ(shown(to->Numero()), "String 1");
    EXPECT_EQ(shown(to->MsgToString()), "String A\r\nB\r\n");
    EXPECT_EQ(shown(to->LeggiAttributo(u"Campo")), "String Codice");
}

TEST(CErrore, ReachesNumberMessagesAndWholeStringAsAttributes) {
    const auto error = make<CErrore>();
    error->ScriviAttributo(u"err_numero", u"9");
    error->ScriviAttributo(u"ERR_MSG1", u"A");
    EXPECT_EQ(shown(error->Numero()), "String 9");
    EXPECT_EQ(shown(error->LeggiAttributo(u"ERR_MSG1")), "String A");
    EXPECT_EQ(shown(error->LeggiAttributo(u"manca")), "Null");
    EXPECT_EQ(shown(error->LeggiAttributo(u"DEFAULT")),
              "String <ERR_NUMERO>9</ERR_NUMERO><ERR_MSG1>A</ERR_MSG1>");
}

TEST(CErrore, DoesNotCountTheMessagesOfAStringSetAsAnAttribute) {
    const auto error = make<CErrore>();
    error->ScriviAttributo(u"", u"<ERR_MSG1>A</ERR_MSG1>");
    EXPECT_EQ(shown(error->ToString()), "String <ERR_MSG1>A</ERR_MSG1>");
    EXPECT_EQ(shown(error->MsgToString()), "String ");
}

TEST(CErrore, HasNoArrayOfNoMessages) {
    EXPECT_EQ(raisedBy([] { return make<CErrore>()->MsgToArray(); }), 9);
}

TEST(CErrore, GivesAMissingMessageAsNullInTheArrayAndRefusesItInTheText) {
    const auto error = make<CErrore>();
    error->AddMessaggio(u"A");
    error->AddMessaggio(u"B");
    error->ScriviAttributo(u"", u"<ERR_MSG2>B</ERR_MSG2>");
    EXPECT_EQ(shown(error->MsgToArray().as<Array>().at(1)), "Null");
    EXPECT_EQ(raisedBy([&] { return error->MsgToString(); }), 94);
}

TEST(CErrore, OverflowsPast32767Messages) {
    const auto error = make<CErrore>();
    for (int i = 0; i < 32767; ++i) {
        error->AddMessaggio(u"m");
    }
    EXPECT_EQ(error->MsgToArray().as<Array>().upperBound(), 32767);
    EXPECT_EQ(error->MsgToString().as<String>().size(), 3U * 32767);
    EXPECT_EQ(raisedBy([&] { return error->AddMessaggio(u"m"), 0; }), 6);
}

TEST(CErroreDispatch, CallsItsMembersByName) {
    const auto error = make<CErrore>();
    invoke(*error, u"NUMERO", InvokeKind::Let, {1});
    call(*error, u"addMessaggio", {u"A"});
    EXPECT_EQ(shown(call(*error, u"Numero")), "String 1");
    EXPECT_EQ(shown(call(*error, u"MsgToString")), "String A\r\n");
    call(*error, u"Init", {u"<X>1</X>"});
    EXPECT_EQ(shown(call(*error, u"LeggiAttributo", {u"x"})), "String 1");
    call(*error, u"ScriviAttributo", {u"x", 2});
    EXPECT_EQ(shown(call(*error, u"ToString")), "String <X>2</X>");
    call(*error, u"Clear");
    EXPECT_EQ(shown(call(*error, u"ToString")), kFresh);
    EXPECT_EQ(raisedBy([&] { return call(*error, u"MsgToArray"); }), 9);
}

TEST(CErroreDispatch, SharesOneIdentifierBetweenReadingAndAssigningTheNumber) {
    const auto error = make<CErrore>();
    EXPECT_EQ(error->memberId(u"Numero"), 0x68030000);
    EXPECT_EQ(error->memberId(u"AddMessaggio"), 0x60030000);
    EXPECT_EQ(error->memberId(u"ScriviAttributo"), 0x60030007);
}

TEST(CErroreDispatch, RefusesMissingSurplusAndUnknown) {
    const auto error = make<CErrore>();
    EXPECT_EQ(raisedBy([&] { return call(*error, u"AddMessaggio"); }), 449);
    EXPECT_EQ(raisedBy([&] { return call(*error, u"Init", {u"a", u"b"}); }), 450);
    EXPECT_EQ(raisedBy([&] { return call(*error, u"Altro"); }), 438);
}

TEST(CErroreDispatch, DescribesItself) {
    const ClassDescription& description = CErrore::classDescription();
    EXPECT_EQ(description.classId, u"feb2ec34-3b6a-45b8-90c5-87f442d1898e");
    EXPECT_EQ(description.interfaceId, u"fb6ea86a-741a-4273-9191-c3873d6b8657");
    EXPECT_TRUE(description.find(u"AddMessaggio")->parameters[0].byReference);
    EXPECT_EQ(description.find(u"Numero")->kind, MemberKind::Property);
    EXPECT_EQ(description.find(u"Init")->parameters[0].type, VarType::String);
}

}  // namespace
}  // namespace kap

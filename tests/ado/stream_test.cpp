#include <kaputil/ado/stream.hpp>

#include <gtest/gtest.h>

#include <kaputil/automation/array.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/late_bound.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"

namespace kap::ado {
namespace {

using test::raisedBy;
using test::shown;

Ref<Stream> openText(const char16_t* charset = u"Unicode") {
    auto stream = make<Stream>();
    stream->setCharset(charset);
    stream->Open();
    return stream;
}

Ref<Stream> openBinary(std::vector<std::uint8_t> bytes = {}) {
    auto stream = make<Stream>();
    stream->setType(StreamTypeEnum::adTypeBinary);
    stream->Open();
    if (!bytes.empty()) {
        stream->Write(Array::ofBytes(std::move(bytes)));
        stream->setPosition(0);
    }
    return stream;
}

String pathIn(const test::TemporaryFolder& folder, const char* name) {
    return String(folder.file(name));
}

TEST(Stream, IsClosedWithItsDefaultsUntilItIsOpened) {
    const auto stream = make<Stream>();
    EXPECT_EQ(stream->State(), ObjectStateEnum::adStateClosed);
    EXPECT_EQ(stream->Type(), StreamTypeEnum::adTypeText);
    EXPECT_EQ(stream->Charset(), String(u"Unicode"));
    EXPECT_EQ(stream->LineSeparator(), LineSeparatorEnum::adCRLF);
    EXPECT_EQ(stream->Mode(), ConnectModeEnum::adModeUnknown);
    EXPECT_EQ(raisedBy([&] { (void)stream->Size(); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { (void)stream->EOS(); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { (void)stream->ReadText(); }), errors::kObjectClosed);
    EXPECT_EQ(raisedBy([&] { stream->Close(); }), errors::kObjectClosed);
    stream->Open();
    EXPECT_EQ(stream->Size(), 0);
    EXPECT_TRUE(stream->EOS());
    EXPECT_EQ(raisedBy([&] { stream->Open(); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { stream->setMode(ConnectModeEnum::adModeRead); }), errors::kObjectOpen);
    EXPECT_EQ(raisedBy([&] { make<Stream>()->Open(u"URL=http://x"); }),
              errors::kFeatureNotAvailable);
}

TEST(Stream, TextsBeginWithTheMarkOfTheirEncoding) {
    const auto stream = openText();
    stream->WriteText(u"Perché");
    EXPECT_EQ(stream->Size(), 14);
    EXPECT_EQ(stream->Position(), 14);
    stream->setPosition(0);
    EXPECT_EQ(stream->ReadText(), String(u"Perché"));
    EXPECT_EQ(stream->ReadText(), String());
    stream->setPosition(2);
    EXPECT_EQ(stream->ReadText(3), String(u"Per"));

    const auto utf8 = openText(u"UTF-8");
    utf8->WriteText(u"Perché");
    EXPECT_EQ(utf8->Size(), 10);
    utf8->setPosition(0);
    EXPECT_EQ(utf8->ReadText(6), String(u"Perché"));

    const auto ascii = openText(u"us-ascii");
    ascii->WriteText(u"Perché €");
    ascii->setPosition(0);
    EXPECT_EQ(ascii->ReadText(), String(u"Perch? ?"));
    const auto latin = openText(u"iso-8859-15");
    latin->WriteText(u"é€");
    EXPECT_EQ(latin->Size(), 2);
    latin->setPosition(0);
    EXPECT_EQ(latin->ReadText(), String(u"é€"));
}

TEST(Stream, ReadsAndPassesOverLines) {
    const auto stream = openText();
    stream->WriteText(u"uno", StreamWriteEnum::adWriteLine);
    stream->WriteText(u"due", StreamWriteEnum::adWriteLine);
    stream->WriteText(u"tre");
    stream->setPosition(0);
    EXPECT_EQ(stream->ReadText(-2), String(u"uno"));
    stream->SkipLine();
    EXPECT_FALSE(stream->EOS());
    EXPECT_EQ(stream->ReadText(-2), String(u"tre"));
    EXPECT_TRUE(stream->EOS());
    stream->setLineSeparator(LineSeparatorEnum::adLF);
    stream->setPosition(0);
    EXPECT_EQ(stream->ReadText(-2), String(u"uno\r"));
    EXPECT_EQ(raisedBy([&] { stream->setLineSeparator(LineSeparatorEnum{5}); }),
              errors::kInvalidArgument);
    // A unit that holds the separator's bytes across two characters is none.
    const auto wide = openText();
    wide->setLineSeparator(LineSeparatorEnum::adLF);
    wide->WriteText(u"\u0A41\u0100\nb");
    wide->setPosition(0);
    EXPECT_EQ(wide->ReadText(-2), String(u"\u0A41\u0100"));
}

TEST(Stream, WritesAndReadsBytes) {
    const auto stream = openBinary({1, 2, 3, 4});
    EXPECT_EQ(stream->Size(), 4);
    const Variant part = stream->Read(3);
    EXPECT_EQ(part.as<Array>().bytes(), (std::vector<std::uint8_t>{1, 2, 3}));
    EXPECT_EQ(stream->Read().as<Array>().size(), 1U);
    EXPECT_TRUE(stream->Read().isNull());
    stream->setPosition(1);
    stream->Write(Array::ofBytes({9}));
    EXPECT_EQ(stream->Size(), 4);
    stream->SetEOS();
    EXPECT_EQ(stream->Size(), 2);
    stream->setPosition(4);
    EXPECT_EQ(stream->Size(), 4);
    stream->setPosition(0);
    EXPECT_EQ(stream->Read().as<Array>().bytes(), (std::vector<std::uint8_t>{1, 9, 0, 0}));
    EXPECT_EQ(raisedBy([&] { stream->setPosition(-1); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { stream->Write(u"x"); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { (void)stream->Read(-2); }), errors::kInvalidArgument);
}

TEST(Stream, IsTextOrBinaryAndChangesAtItsBeginningOnly) {
    const auto stream = openText(u"utf-8");
    EXPECT_EQ(raisedBy([&] { (void)stream->Read(); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { stream->Write(Array::ofBytes({1})); }), errors::kIllegalOperation);
    stream->WriteText(u"à");
    EXPECT_EQ(raisedBy([&] { stream->setType(StreamTypeEnum::adTypeBinary); }),
              errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { stream->setCharset(u"us-ascii"); }), errors::kIllegalOperation);
    stream->setPosition(0);
    stream->setType(StreamTypeEnum::adTypeBinary);
    EXPECT_EQ(stream->Read().as<Array>().bytes(),
              (std::vector<std::uint8_t>{0xEF, 0xBB, 0xBF, 0xC3, 0xA0}));
    EXPECT_EQ(raisedBy([&] { (void)stream->ReadText(); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { openText()->setCharset(u"klingon"); }), errors::kInvalidArgument);
}

TEST(Stream, CopiesIntoAnother) {
    const auto text = openText(u"utf-8");
    text->WriteText(u"Però");
    text->setPosition(0);
    const auto wide = openText();
    text->CopyTo(wide, 3);
    EXPECT_EQ(wide->Size(), 8);
    text->CopyTo(wide);
    wide->setPosition(0);
    EXPECT_EQ(wide->ReadText(), String(u"Però"));
    const auto bytes = openBinary();
    text->setPosition(0);
    text->CopyTo(bytes);
    EXPECT_EQ(bytes->Size(), 8);
    bytes->setPosition(0);
    EXPECT_EQ(raisedBy([&] { bytes->CopyTo(wide); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { bytes->CopyTo(Ref<Stream>()); }), errors::kInvalidArgument);
    EXPECT_EQ(raisedBy([&] { bytes->CopyTo(make<Stream>()); }), errors::kObjectClosed);
}

TEST(Stream, IsLoadedFromFilesAndSavedToThem) {
    const test::TemporaryFolder folder;
    const String file = pathIn(folder, "nota.txt");
    const auto stream = openText(u"windows-1252");
    stream->WriteText(u"più €");
    stream->SaveToFile(file);
    EXPECT_EQ(stream->Position(), 0);
    EXPECT_EQ(raisedBy([&] { stream->SaveToFile(file); }), errors::kWritingFile);
    stream->setPosition(5);
    stream->WriteText(u"!");
    stream->SaveToFile(file, SaveOptionsEnum::adSaveCreateOverWrite);

    const auto again = openText(u"windows-1252");
    again->LoadFromFile(file);
    EXPECT_EQ(again->Position(), 0);
    EXPECT_EQ(again->ReadText(), String(u"più €!"));
    EXPECT_EQ(raisedBy([&] { again->LoadFromFile(pathIn(folder, "manca")); }),
              errors::kOpeningFile);
    EXPECT_EQ(raisedBy([&] { again->SaveToFile(pathIn(folder, "x"), SaveOptionsEnum{3}); }),
              errors::kInvalidArgument);
}

TEST(Stream, ThatIsForReadingRefusesToBeWritten) {
    const auto stream = make<Stream>();
    stream->Open(Variant::missing(), ConnectModeEnum::adModeRead);
    EXPECT_EQ(raisedBy([&] { stream->WriteText(u"x"); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { stream->setPosition(1); }), errors::kIllegalOperation);
    EXPECT_EQ(raisedBy([&] { stream->SetEOS(); }), errors::kIllegalOperation);
}

TEST(Stream, IsReachedByName) {
    const auto stream = make<Stream>();
    test::call(*stream, u"Open");
    test::call(*stream, u"WriteText", {u"abc", 1});
    EXPECT_EQ(shown(test::call(*stream, u"Size")), "Long 12");
}

}  // namespace
}  // namespace kap::ado

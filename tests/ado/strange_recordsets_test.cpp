// Saved recordsets that no recordset has written.
#include <gtest/gtest.h>

#include <string>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/data/error_numbers.hpp>

#include "support/shown.hpp"

namespace kap::ado {
namespace {

const std::string kHead =
    "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882' "
    "xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882' "
    "xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#RowsetSchema'>";

std::string column(const std::string& name, const std::string& type) {
    return "<s:AttributeType name='" + name + "'><s:datatype " + type + "/></s:AttributeType>";
}

std::string saved(const std::string& columns, const std::string& rows) {
    return kHead + "<s:Schema><s:ElementType name='row'>" + columns +
           "</s:ElementType></s:Schema><rs:data>" + rows + "</rs:data></xml>";
}

Ref<Recordset> opened(const std::string& text) {
    const auto stream = make<Stream>();
    stream->setCharset(u"utf-8");
    stream->Open();
    stream->WriteText(String(text));
    stream->setPosition(0);
    auto rows = make<Recordset>();
    rows->Open(Variant(stream));
    return rows;
}

TEST(StrangeRecordsets, HoldNoValueThatTheirTypeDoesNot) {
    struct Case {
        const char* type;
        const char* held;
        const char* notHeld;
    };
    for (const Case& each :
         {Case{"dt:type='i1'", "-128", "-129"}, Case{"dt:type='ui1'", "255", "256"},
          Case{"dt:type='i2'", "32767", "32768"}, Case{"dt:type='ui2'", "65535", "-1"},
          Case{"dt:type='int'", "-2147483648", "2147483648"},
          Case{"dt:type='ui4'", "4294967295", "4294967296"},
          Case{"dt:type='i8'", "9223372036854775807", "9223372036854775808"},
          Case{"dt:type='r4'", "3e38", "4e38"}, Case{"dt:type='r8'", "1e308", "1e309"},
          Case{"dt:type='boolean'", "True", "2"},
          Case{"dt:type='dateTime'", "9999-12-31T23:59:59", "9999-12-31T24:00:00"},
          Case{"dt:type='number' rs:scale='4'", "922337203685477.5807", "92233720368547758.07"}}) {
        SCOPED_TRACE(each.type);
        const std::string row = "<z:row a='";
        const auto rows = opened(saved(column("a", each.type), row + each.held + "'/>"));
        EXPECT_NO_THROW(static_cast<void>(rows->Fields()->Item(0)->Value()));
        EXPECT_EQ(test::raisedBy([&] {
                      static_cast<void>(
                          opened(saved(column("a", each.type), row + each.notHeld + "'/>")));
                  }),
                  errors::kReadingFile);
    }
}

TEST(StrangeRecordsets, AreRefusedForColumnsThatCannotBe) {
    for (const char* type : {"dt:type='number' rs:scale='200' rs:precision='5'",
                             "dt:type='string' dt:maxLength='-5'", "dt:type='ui9'"}) {
        EXPECT_EQ(test::raisedBy([&] { static_cast<void>(opened(saved(column("a", type), ""))); }),
                  errors::kReadingFile)
            << type;
    }
}

std::string times(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

// Each row takes memory for each column.
TEST(StrangeRecordsets, AreRefusedWhenTheyAreWiderThanAnyTable) {
    std::string columns;
    for (int i = 0; i < 100'000; ++i) {
        columns += column("c" + std::to_string(i), "dt:type='int'");
    }
    const std::string text = saved(columns, times(100'000, "<z:row/>"));
    EXPECT_EQ(test::raisedBy([&] { static_cast<void>(opened(text)); }), errors::kReadingFile);
}

TEST(StrangeRecordsets, TakeTimeByTheirLength) {
    std::string attributes;
    for (int i = 0; i < 300'000; ++i) {
        attributes += " a" + std::to_string(i) + "=''";
    }
    const std::string columns = column("b", "dt:type='int'");
    EXPECT_EQ(1, opened(saved(columns, "<z:row" + attributes + "/>"))->RecordCount());
    EXPECT_EQ(0, opened(times(300'000, "<!a>") + saved(columns, ""))->RecordCount());
}

}  // namespace
}  // namespace kap::ado

// Values that are nested ever deeper, or hold one another: they are read or refused, however little
// stack there is.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/collection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/core/cproprieta.hpp>

#include "support/database.hpp"
#include "support/shown.hpp"
#include "support/thread_stack.hpp"

namespace kap {
namespace {

constexpr std::size_t kStackOfAThread = std::size_t{1} << 20U;
constexpr int kFar = 300'000;

std::string repeated(int count, const std::string& text) {
    std::string all;
    all.reserve(text.size() * static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

std::string nestedIn(const std::string& begin, int depth, const std::string& end) {
    return repeated(depth, begin) + repeated(depth, end);
}

class NestedJson : public testing::Test {
protected:
    static constexpr int kDeepest = 128;
    static constexpr const char* kNoJson = "13609";

    // What a function of JSON answers, or the number of its error.
    static std::string answer(const std::string& expression) {
        const auto connection = test::openMemory();
        try {
            return test::shown(test::valueOf(connection, String("SELECT " + expression)));
        } catch (const AutomationError&) {
            return std::to_string(connection->Errors()->Item(0)->NativeError());
        }
    }
};

TEST_F(NestedJson, IsReadTo128LevelsAndRefusedBeyond) {
    inThreadOf(kStackOfAThread, [] {
        for (const auto& [begin, end] :
             {std::pair<std::string, std::string>{"[", "]"}, {"{\"a\":", "}"}}) {
            const std::string core = begin == "[" ? "" : "1";
            const auto json = [&, begin = begin, end = end](int depth) {
                return "N'" + repeated(depth, begin) + core + repeated(depth, end) + "'";
            };
            for (const int depth : {1, kDeepest - (core.empty() ? 0 : 1)}) {
                EXPECT_EQ("Long 1", answer("ISJSON(" + json(depth) + ")")) << depth;
                EXPECT_NE(kNoJson, answer("COUNT(*) FROM OPENJSON(" + json(depth) + ")"));
                EXPECT_NE(kNoJson, answer("JSON_QUERY(" + json(depth) + ")"));
                EXPECT_NE(kNoJson, answer("JSON_MODIFY(" + json(depth) + ", '$.b', 1)"));
            }
            for (const int depth : {kDeepest + 1, kFar}) {
                EXPECT_EQ("Long 0", answer("ISJSON(" + json(depth) + ")")) << depth;
                for (const std::string& use :
                     {"COUNT(*) FROM OPENJSON(" + json(depth) + ")",
                      "JSON_QUERY(" + json(depth) + ")", "JSON_VALUE(" + json(depth) + ", '$.a')",
                      "JSON_MODIFY(" + json(depth) + ", '$.b', 1)"}) {
                    EXPECT_EQ(kNoJson, answer(use)) << depth;
                }
            }
        }
    });
}

TEST_F(NestedJson, IsReadAlongPathsOfAnyLength) {
    inThreadOf(kStackOfAThread, [] {
        const std::string json = "N'{\"a\":{\"a\":1}}'";
        for (const std::string step : {".a", "[0]", ".\"a\""}) {
            const std::string path = "'$" + repeated(kFar, step) + "'";
            EXPECT_EQ("Null", answer("JSON_VALUE(" + json + ", " + path + ")")) << step;
            EXPECT_EQ("String {\"a\":{\"a\":1}}",
                      answer("JSON_MODIFY(" + json + ", " + path + ", 2)"))
                << step;
        }
    });
}

TEST(NestedElements, AreRefusedInASavedRecordset) {
    inThreadOf(kStackOfAThread, [] {
        for (const int depth : {200, kFar}) {
            const auto stream = make<ado::Stream>();
            stream->setCharset(u"utf-8");
            stream->Open();
            stream->WriteText(String(nestedIn("<a>", depth, "</a>")));
            stream->setPosition(0);
            const auto records = make<ado::Recordset>();
            EXPECT_NE(0, test::raisedBy([&] {
                          records->Open(Variant(stream));
                          return 0;
                      }))
                << depth;
        }
    });
}

TEST(NestedCriteria, AreTakenTo50LevelsAndRefusedBeyond) {
    inThreadOf(kStackOfAThread, [] {
        const auto records = make<ado::Recordset>();
        records->Fields()->Append(u"A", ado::DataTypeEnum::adInteger);
        records->Open();
        const auto filtered = [&](int depth) {
            return test::raisedBy([&] {
                records->setFilter(
                    Variant(String(repeated(depth, "(") + "A = 1" + repeated(depth, ")"))));
                return 0;
            });
        };
        EXPECT_EQ(0, filtered(1));
        EXPECT_NE(0, filtered(51));
        EXPECT_NE(0, filtered(kFar));
        EXPECT_NE(0, test::raisedBy([&] {
                      records->setFilter(Variant(String("A = 1" + repeated(kFar, " AND (A = 1"))));
                      return 0;
                  }));
        EXPECT_EQ(0, filtered(2));
    });
}

TEST(NestedArrays, AreMadeTo500LevelsAndRefusedBeyond) {
    inThreadOf(kStackOfAThread, [] {
        Variant outer = Array::ofVariants({});
        int depth = 1;
        const std::int32_t error = test::raisedBy([&] {
            for (; depth < kFar; ++depth) {
                outer = Array::ofVariants({outer});
            }
            return 0;
        });
        EXPECT_EQ(errors::kOutOfStack, error);
        EXPECT_EQ(500, depth);
    });
}

// A chain of objects, each of which holds the next, ends one after the other.
TEST(NestedObjects, EndHoweverManyHoldOneAnother) {
    inThreadOf(kStackOfAThread, [] {
        auto outer = make<Collection>();
        for (int i = 0; i < kFar; ++i) {
            auto next = make<Collection>();
            next->Add(Variant(Ref<Object>(outer)));
            outer = next;
        }
        EXPECT_EQ(1, outer->Count());
    });
}

// A reader that looks for each end from the beginning would not come to the last.
TEST(NestedProperties, AreReadInATimeThatTheirLengthExplains) {
    inThreadOf(kStackOfAThread, [] {
        constexpr int kDeep = 20'000;
        const auto bag = make<CProprieta>();
        bag->Scrivi(u"", String(repeated(kDeep, "<A>") + repeated(kDeep, "</A>")));
        EXPECT_GE(bag->Count(), 0);
        static_cast<void>(bag->Leggi(u"A"));
        static_cast<void>(bag->Leggi(u"B"));
        static_cast<void>(test::raisedBy([&] {
            bag->Scrivi(u"A", u"x");
            return 0;
        }));
    });
}

}  // namespace
}  // namespace kap

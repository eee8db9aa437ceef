// JSON and XML, as the dialect reads and writes them.
#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/persist/xml_scanner.hpp"
#include "base/quoting.hpp"
#include "fuzz/reader_support.hpp"
#include "fuzz/reader_targets.hpp"

namespace kap::fuzz {
namespace {

constexpr std::size_t kLongest = 500;  // units of a text
constexpr std::size_t kLongestName = 128;

// Whether a query answers 1, and `otherwise` when it fails.
bool holds(const Ref<ado::Connection>& connection, const std::u16string& condition,
           bool otherwise = false) {
    bool answer = otherwise;
    ends([&] {
        answer = convert::toLong(answerOf(
                     connection, u"SELECT CASE WHEN " + condition + u" THEN 1 ELSE 0 END")) == 1;
    });
    return answer;
}

// The first line is a path, the rest is the text.
void json(std::u16string_view text) {
    static const Ref<ado::Connection> connection = freshDatabase();
    const std::size_t line = std::min(text.find(u'\n'), text.size());
    const std::u16string path = quoted(text.substr(0, std::min(line, kLongest)));
    const std::u16string document = quoted(text.substr(std::min(line + 1, text.size())));
    const bool valid = holds(connection, u"ISJSON(" + document + u") = 1");
    const bool opened =
        ends([&] { connection->Execute(u"SELECT * FROM OPENJSON(" + document + u")"); });
    require(valid == opened, "a text that is JSON and cannot be opened, or the other way round");
    const std::u16string arguments = document + u", " + path + u")";
    for (const std::u16string& query :
         {u"SELECT * FROM OPENJSON(" + arguments,
          u"SELECT * FROM OPENJSON(" + arguments +
              u" WITH (a int, b varchar(10) '$.c', d nvarchar(max) '$' AS JSON)",
          u"SELECT JSON_VALUE(" + arguments, u"SELECT JSON_QUERY(" + arguments}) {
        ends([&] { connection->Execute(query); });
    }
    const std::u16string changed = u"JSON_MODIFY(" + document + u", " + path + u", N'x')";
    require(holds(connection, changed + u" IS NULL OR ISJSON(" + changed + u") = 1", true),
            "JSON that is none any more");
    const std::u16string written = u"(SELECT " + document + u" AS a FOR JSON PATH)";
    require(holds(connection,
                  u"LEN(" + document + u") > 4000 OR CONVERT(varbinary(max), JSON_VALUE(" +
                      written + u", '$[0].a')) = CONVERT(varbinary(max), " + document + u")",
                  true),
            "a text that JSON changes");
}

// Control characters are written as references, as the server does, and no reader takes them.
bool isOfXml(std::u16string_view text) {
    return std::ranges::none_of(text, [](char16_t unit) {
        return (unit < u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r') || unit >= 0xFFFE;
    });
}

// Every element and attribute, up to the end.
bool isWellFormed(std::string_view xml) {
    ado::persist::XmlScanner scanner(xml);
    return ends([&] {
        while (scanner.next().kind != ado::persist::XmlTag::Kind::OfFile) {
        }
    });
}

// The first line names a column, the rest is its value. What is written can be read.
void xml(std::u16string_view text) {
    static const Ref<ado::Connection> connection = freshDatabase();
    const std::size_t line = std::min(text.find(u'\n'), text.size());
    const std::u16string name = enclosed(text.substr(0, std::min(line, kLongestName)), u'[', u']');
    const std::u16string value =
        quoted(text.substr(std::min(line + 1, text.size())).substr(0, kLongest));
    const std::u16string columns = value + u" AS " + name + u", 1 AS b, " + value + u" AS c";
    for (const std::u16string mode : {u"RAW", u"RAW, ELEMENTS", u"PATH", u"AUTO"}) {
        std::string written;
        const bool done = ends([&] {
            const Variant answer = answerOf(
                connection, u"SELECT (SELECT " + columns + u" FROM t FOR XML " + mode + u", ROOT)");
            written = answer.isNull() ? "" : convert::toString(answer).utf8();
        });
        require(!done || !isOfXml(text) || isWellFormed(written), "XML that cannot be read");
    }
    // As lists are joined.
    const std::u16string joined =
        u"(SELECT " + value + u" AS [text()] FOR XML PATH(''), TYPE).value('.', 'nvarchar(max)')";
    require(holds(connection,
                  u"CONVERT(varbinary(max), " + joined + u") = CONVERT(varbinary(max), " + value +
                      u") OR DATALENGTH(" + value + u") = 0",
                  true),
            "a text that XML changes");
}

constexpr std::array<Target, 2> kMarkupTargets = {{{"json", &json, 20}, {"xml", &xml, 20}}};

}  // namespace

std::span<const Target> markupTargets() {
    return kMarkupTargets;
}

}  // namespace kap::fuzz

#include "sqlscript/script_lines.hpp"

#include <algorithm>
#include <cstddef>

#include "base/quoting.hpp"

namespace kap::sqlscript {
namespace {

// The blanks around some lines are deliberate: programs compare the script with logs of theirs.
constexpr std::u16string_view kOpening =
    u" DECLARE @ERRORE_NUMERO int \r\n"
    u" DECLARE @ERRORE_DESC varchar(100) \r\n"
    u" SET NOCOUNT ON \r\n"
    u" BEGIN TRANSACTION \r\n";

constexpr std::u16string_view kClosing =
    u"\r\n"
    u"\r\n"
    u"COMMIT TRANSACTION\r\n"
    u"GOTO end_script\r\n"
    u"\r\n"
    u"on_error:\r\n"
    u"RAISERROR (@ERRORE_DESC,16,1)\r\n"
    u"ROLLBACK TRANSACTION\r\n"
    u"\r\n"
    u"end_script:\r\n"
    u" SET NOCOUNT OFF \r\n";

}  // namespace

void appendLine(std::u16string& script, std::initializer_list<std::u16string_view> pieces) {
    for (const std::u16string_view piece : pieces) {
        script += piece;
    }
    script += kLineEnd;
}

void appendCheck(std::u16string& script) {
    appendLine(script, {u"SET @ERRORE_NUMERO=@@error"});
    appendLine(script, {u"if (@ERRORE_NUMERO<>0) GOTO on_error"});
    appendLine(script, {});
}

std::u16string callOf(std::u16string_view body) {
    constexpr std::u16string_view kCall = u"sp_executesql N'";
    std::u16string call;
    const auto quotes = static_cast<std::size_t>(std::ranges::count(body, u'\''));
    call.reserve(kCall.size() + kOpening.size() + body.size() + quotes + kClosing.size() + 1);
    call += kCall;
    call += kOpening;
    appendDoubling(call, body, u'\'');
    call += kClosing;
    call += u'\'';
    return call;
}

}  // namespace kap::sqlscript

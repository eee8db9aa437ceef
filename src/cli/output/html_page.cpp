#include "cli/output/html_page.hpp"

namespace kap::cli {
namespace {

// Margin boxes number the printed pages.
constexpr std::string_view kStyles = R"css(
:root { color-scheme: light; --ink: #1d2733; --soft: #5d6b7a; --line: #d9dfe6; --paper: #fff; --band: #f4f6f9; }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 68rem; padding: 1.5rem; background: var(--paper); color: var(--ink);
       font: 15px/1.45 system-ui, "Segoe UI", "DejaVu Sans", sans-serif; }
h1 { font-size: 1.6rem; margin: 0 0 .25rem; }
h2 { font-size: 1.2rem; margin: 2.2rem 0 .3rem; padding-top: .8rem; border-top: 2px solid var(--ink); }
h3 { font-size: 1rem; margin: 1.2rem 0 .4rem; }
p { margin: .3rem 0; }
.soft { color: var(--soft); }
.wide { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; font-variant-numeric: tabular-nums; }
th, td { padding: .3rem .6rem; text-align: left; vertical-align: top; border-bottom: 1px solid var(--line); }
th { background: var(--band); font-weight: 600; }
td.n, th.n { text-align: right; white-space: nowrap; width: 1%; }
a { color: #1f5fa8; text-decoration: none; }
a:hover { text-decoration: underline; }
footer { margin-top: 2.5rem; padding-top: .6rem; border-top: 1px solid var(--line); color: var(--soft); font-size: .85rem; }
@media (max-width: 40rem) { body { padding: .8rem; font-size: 14px; } th, td { padding: .25rem .35rem; } }
@page { margin: 15mm 14mm 18mm; @bottom-right { content: counter(page) " / " counter(pages); font: 9pt sans-serif; color: #5d6b7a; } }
@media print {
  body { max-width: none; padding: 0; font-size: 10pt; -webkit-print-color-adjust: exact; print-color-adjust: exact; }
  h2 { break-before: page; border-top: 0; margin-top: 0; padding-top: 0; }
  h2, h3 { break-after: avoid; }
  tr, svg { break-inside: avoid; }
  thead { display: table-header-group; }
  a { color: inherit; }
}
)css";

}  // namespace

std::string html(std::string_view text) {
    std::string escaped;
    for (const char unit : text) {
        switch (unit) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += unit;
        }
    }
    return escaped;
}

std::string element(std::string_view tag, std::string_view text, std::string_view className) {
    std::string made = "<" + std::string(tag);
    if (!className.empty()) {
        made += " class=\"" + html(className) + "\"";
    }
    return made + ">" + html(text) + "</" + std::string(tag) + ">";
}

std::string htmlPageBegin(Language language, std::string_view title, std::string_view styles) {
    std::string page = "<!DOCTYPE html>\n<html lang=\"";
    page += language == Language::Italian ? "it" : "en";
    page +=
        "\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<title>" +
        html(title) + "</title>\n<style>";
    page += kStyles;
    page += styles;
    return page + "</style>\n</head>\n<body>\n";
}

std::string htmlPage(Language language, std::string_view title, std::string_view styles,
                     std::string_view body) {
    return htmlPageBegin(language, title, styles) + std::string(body) + std::string(kHtmlPageEnd);
}

}  // namespace kap::cli

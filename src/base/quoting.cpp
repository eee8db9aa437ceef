#include "base/quoting.hpp"

namespace kap {
namespace {

template <class Unit>
void append(std::basic_string<Unit>& text, std::basic_string_view<Unit> more, Unit sign) {
    for (std::size_t mark = 0; (mark = more.find(sign)) != more.npos;
         more.remove_prefix(mark + 1)) {
        text += more.substr(0, mark + 1);
        text += sign;
    }
    text += more;
}

template <class Unit>
std::basic_string<Unit> between(std::basic_string_view<Unit> text, Unit open, Unit close) {
    std::basic_string<Unit> made;
    made.reserve(text.size() + 2);
    made += open;
    append(made, text, close);
    made += close;
    return made;
}

}  // namespace

void appendDoubling(std::string& text, std::string_view more, char sign) {
    append(text, more, sign);
}

void appendDoubling(std::u16string& text, std::u16string_view more, char16_t sign) {
    append(text, more, sign);
}

std::string enclosed(std::string_view text, char open, char close) {
    return between(text, open, close);
}

std::u16string enclosed(std::u16string_view text, char16_t open, char16_t close) {
    return between(text, open, close);
}

}  // namespace kap

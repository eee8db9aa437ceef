#include <algorithm>
#include <string>
#include <vector>

#include "base/ascii.hpp"
#include "engine/sqlite/functions/function_support.hpp"

// Texts compared by how they sound, and names taken apart.
namespace kap::engine {

namespace {

constexpr std::size_t kCodeLength = 4;

bool isCapital(char c) {
    return c >= 'A' && c <= 'Z';
}

// The class of sounds that a letter belongs to; '0' for vowels, '-' for those that are not heard.
char soundOf(char letter) {
    static constexpr std::string_view kSounds = "01230120022455012623010202";
    if (letter == 'H' || letter == 'W') return '-';
    return kSounds[static_cast<std::size_t>(letter - 'A')];
}

// The first letter and the next three sounds. A sound counts once for letters in a row, also with a
// letter between them that is not heard.
std::string soundCode(std::string_view text) {
    const std::string upper = asciiUpper(text);
    if (upper.empty() || !isCapital(upper.front())) return "0000";
    std::string code(1, upper.front());
    char before = soundOf(upper.front());
    for (std::size_t i = 1; i < upper.size() && code.size() < kCodeLength; ++i) {
        if (!isCapital(upper[i])) break;
        const char sound = soundOf(upper[i]);
        if (sound == '-') continue;
        if (sound != '0' && sound != before) code += sound;
        before = sound;
    }
    code.resize(kCodeLength, '0');
    return code;
}

// kap_soundex(text)
Value soundex(const Arguments& arguments) {
    return soundCode(arguments.text(0));
}

// kap_difference(text, text): how many places of the codes are equal.
Value difference(const Arguments& arguments) {
    const std::string left = soundCode(arguments.text(0));
    const std::string right = soundCode(arguments.text(1));
    std::int64_t equal = 0;
    for (std::size_t i = 0; i < kCodeLength; ++i)
        equal += left[i] == right[i] ? 1 : 0;
    return equal;
}

// The parts of "server.[my database].owner.object", without their quotes; empty when it is no name.
std::vector<std::string> nameParts(std::string_view text) {
    std::vector<std::string> parts(1);
    char close = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (close != 0 && c == close) {
            const bool doubled = i + 1 < text.size() && text[i + 1] == close;
            if (doubled) parts.back() += text[++i];
            if (!doubled) close = 0;
        } else if (close != 0) {
            parts.back() += c;
        } else if ((c == '[' || c == '"') && parts.back().empty()) {
            close = c == '[' ? ']' : '"';
        } else if (c == '.') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    constexpr std::size_t kMostParts = 4;
    if (close != 0 || parts.size() > kMostParts || parts.back().empty()) return {};
    return parts;
}

// kap_parsename(name, part): parts are counted from the end.
Value parseName(const Arguments& arguments) {
    const std::vector<std::string> parts = nameParts(arguments.text(0));
    const std::int64_t wanted = arguments.integer(1);
    if (wanted < 1 || wanted > static_cast<std::int64_t>(parts.size())) return {};
    const std::string& part = parts[parts.size() - static_cast<std::size_t>(wanted)];
    if (part.empty()) return {};
    return part;
}

}  // namespace

void registerSoundFunctions(Registrar& registrar) {
    registrar.scalar("kap_soundex", 1, soundex);
    registrar.scalar("kap_difference", 2, difference);
    registrar.scalar("kap_parsename", 2, parseName);
}

}  // namespace kap::engine

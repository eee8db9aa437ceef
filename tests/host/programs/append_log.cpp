// Appends lines to a log beside other programs that do the same: COUNT lines of LENGTH times the
// letter.
//
//     append_log FILE LETTER LENGTH COUNT

#include <exception>
#include <iostream>
#include <string>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/host/services.hpp>

int main(int argc, char** argv) {
    using namespace kap;
    if (argc != 5) {
        return 2;
    }
    try {
        const auto length = static_cast<std::size_t>(plain::readInt(argv[3]).value_or(0));
        const Variant line = std::string(length, *argv[2]);
        for (int i = plain::readInt(argv[4]).value_or(0); i > 0; --i) {
            host::WLog(std::string(argv[1]), line);
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}

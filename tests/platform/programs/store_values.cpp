// Writes values beside other programs that do the same: PREFIX1 to PREFIXn, each holding its own
// name.
//
//     store_values profile FILE PREFIX COUNT
//     store_values registry KEY PREFIX COUNT

#include <exception>
#include <iostream>
#include <string>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/platform/profile_file.hpp>
#include <kaputil/platform/registry.hpp>

int main(int argc, char** argv) {
    using namespace kap;
    if (argc != 5) {
        return 2;
    }
    const std::string kind = argv[1];
    const String place = argv[2];
    const int count = plain::readInt(argv[4]).value_or(0);
    try {
        for (int i = 1; i <= count; ++i) {
            const String name = std::string(argv[3]) + plain::text(i);
            const bool written = kind == "profile"
                                     ? platform::writeProfile(u"Valori", name, name, place)
                                     : platform::registry::setValue(
                                           place, name, platform::registry::textValue(name));
            if (!written) {
                return 1;
            }
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}

// Takes definitive numbers of the counter FAT of 2025 as fast as it can, beside other programs that
// do the same. Every number is written to standard output on a line of its own as soon as it is
// taken; what was refused is a line "! message", after which it goes on.
//
//     take_numbers CONNECTION_STRING plain|reserving|old TIMES
//
// TIMES numbers are taken; with 0 it goes on until it is killed.

#include <unistd.h>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/numbering/document_numbers.hpp>

namespace {

using namespace kap;

// One line in one call, so that a process that is killed leaves whole lines.
void tell(const std::string& line) {
    const std::string text = line + "\n";
    if (write(STDOUT_FILENO, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("cannot write to standard output");
    }
}

Variant take(Variant& connection, const std::string& way, Ref<CErrore>& errore) {
    if (way == "old") {
        return numbering::Progressivi_OLD(u"FAI", u"D", u"S", 2025, 0, connection, u"°°°",
                                          u"vtx_TabDoc", errore);
    }
    const std::int16_t handling = way == "reserving" ? 1 : 0;
    return numbering::Progressivi(u"FAI", u"D", u"S", 2025, 0, connection, u"°°°", u"vtx_TabDoc",
                                  handling, errore);
}

void run(const std::string& connectionString, const std::string& way, int times) {
    Variant connection(connectionString);
    Ref<CErrore> errore;
    for (int taken = 0; times == 0 || taken < times;) {
        const Variant number = take(connection, way, errore);
        if (convert::toLong(errore->Numero()) == 0) {
            tell(convert::toString(number).utf8());
            ++taken;
        } else {
            tell("! " + convert::toString(errore->LeggiAttributo(u"ERR_MSG1")).utf8());
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 4) {
        std::cerr << "usage: take_numbers CONNECTION_STRING plain|reserving|old TIMES\n";
        return 2;
    }
    try {
        run(arguments[1], arguments[2], std::stoi(arguments[3]));
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
    return 0;
}

// A program that is killed at one of its calls of the file system.
#include <gtest/gtest.h>

#include <filesystem>

#include <kaputil/platform/profile_file.hpp>

#include "faults/killed_at.hpp"
#include "faults/ledger.hpp"
#include "faults/random_runs.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

using test::Ledger;

TEST(KilledProgram, LeavesWhatWasAcknowledgedAndNothingInPart) {
    test::withRandomSeeds([](std::uint32_t seed) {
        std::mt19937 random(seed);
        const test::TemporaryFolder folder;
        Ledger::create(test::open(folder.database("libri.db")));
        const auto acknowledged = test::killedAt(
            1 + static_cast<int>(random() % 150), folder.file(""), [&](auto acknowledge) {
                const auto connection = test::open(folder.database("libri.db"));
                for (int i = 0; i < 20; ++i) {
                    const int number = static_cast<int>(random() % 6) + 6 * i;
                    Ledger::step(connection, number);
                    acknowledge(number);
                }
            });
        EXPECT_EQ("", Ledger::fault(test::open(folder.database("libri.db")), acknowledged));
    });
}

// At whichever call a program dies that writes an INI file: the file is whole, the next program
// writes it, and takes away what was left.
TEST(KilledProgram, LeavesNoTemporaryFileInTheWay) {
    const test::TemporaryFolder folder;
    const String file(folder.file("p.ini"));
    for (int nth = 1; nth < 20; ++nth) {
        SCOPED_TRACE(nth);
        static_cast<void>(test::killedAt(nth, folder.file(""), [&](auto) {
            static_cast<void>(platform::writeProfile(u"A", u"x", u"ucciso", file));
        }));
        EXPECT_TRUE(platform::writeProfile(u"A", u"x", u"vivo", file));
        EXPECT_EQ(u"vivo", platform::readProfile(u"A", u"x", u"", 99, file).view());
        EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder.file("")), {}));
    }
}

}  // namespace
}  // namespace kap

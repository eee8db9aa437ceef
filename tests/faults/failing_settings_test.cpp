// Settings files, contacts and exports whose file functions fail: what is said to be written is.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <kaputil/automation/error.hpp>
#include <kaputil/host/cfile_ini.hpp>
#include <kaputil/host/cregistro.hpp>
#include <kaputil/host/text_export.hpp>
#include <kaputil/platform/message_box.hpp>
#include <kaputil/platform/profile_file.hpp>
#include <kaputil/platform/registry.hpp>

#include "faults/library/failing_calls.hpp"
#include "support/database.hpp"
#include "support/scoped_variable.hpp"
#include "support/shown.hpp"
#include "support/temporary_folder.hpp"
#include "support/text_files.hpp"

namespace kap {
namespace {

using faults::Call;

class FailingSettings : public testing::Test {
protected:
    FailingSettings() { platform::setMessageLog(log_.file("messaggi.log")); }
    ~FailingSettings() override { platform::setMessageLog(std::nullopt); }

    // Runs `write` with every call failing in turn, until none fails any more; it tells whether it
    // says that it has written. `check` is told what it said.
    template <class Write, class Check>
    void withEveryFailure(Write write, Check check) {
        constexpr int kBeyondAnyDoubt = 100;
        int nth = 1;
        for (bool failed = true; failed && nth < kBeyondAnyDoubt; ++nth) {
            SCOPED_TRACE("call " + std::to_string(nth));
            faults::start({folder_.file(""), {}, nth, nth % 2 == 0 ? EIO : ENOSPC});
            const bool said = write(nth);
            failed = faults::stop().failed;
            check(nth, said);
        }
        EXPECT_GT(nth, 4);
        EXPECT_LT(nth, kBeyondAnyDoubt);
    }

    [[nodiscard]] int filesInFolder() const {
        return static_cast<int>(
            std::distance(std::filesystem::directory_iterator(folder_.file("")), {}));
    }

    test::TemporaryFolder folder_;
    test::TemporaryFolder log_;
};

TEST_F(FailingSettings, AnIniFileHoldsWhatWasSaidToBeWritten) {
    const String file(folder_.file("p.ini"));
    const auto ini = make<CFileINI>();
    ASSERT_NE(0, ini->WriteIni(u"A", u"x", u"0", file));
    std::string last = "0";
    withEveryFailure(
        [&](int nth) { return ini->WriteIni(u"A", u"x", String(std::to_string(nth)), file) != 0; },
        [&](int nth, bool said) {
            const std::string now = ini->ReadIni(u"A", u"x", file).utf8();
            if (said) {
                EXPECT_EQ(std::to_string(nth), now);
            } else {
                EXPECT_TRUE(now == last || now == std::to_string(nth)) << now;
            }
            last = now;
        });
    EXPECT_EQ(1, filesInFolder());
}

TEST_F(FailingSettings, TheRegistryHoldsWhatWasSaidToBeWritten) {
    const test::ScopedVariable home("KAPUTIL_HOME", folder_.file(""));
    namespace registry = platform::registry;
    registry::createKey(u"HKCU\\Software");
    std::int32_t last = -1;
    withEveryFailure(
        [&](int nth) {
            try {
                return registry::setValue(u"HKCU\\Software", u"x", registry::numberValue(nth));
            } catch (const AutomationError&) {
                return false;
            }
        },
        [&](int nth, bool said) {
            const auto value = registry::value(u"HKCU\\Software", u"x");
            const std::int32_t now = value ? registry::numberOf(*value) : -1;
            EXPECT_TRUE(said ? now == nth : now == last || now == nth) << now;
            last = now;
        });
    EXPECT_EQ(1, filesInFolder());
}

// Its result is "Done" whatever happens: the user reads in the log that nothing was written.
TEST_F(FailingSettings, TheClassForTheRegistryTellsItInTheLog) {
    const test::ScopedVariable home("KAPUTIL_HOME", folder_.file(""));
    platform::registry::createKey(u"HKEY_CURRENT_USER\\Software");
    const auto registry = make<CRegistro>();
    const auto write = [&] {
        return test::shown(
            registry->Scrivi(u"HKEY_CURRENT_USER", u"testo", u"REG_SZ", u"x", u"Software"));
    };
    EXPECT_EQ("String Done", write());
    EXPECT_EQ("", test::contentOf(log_.file("messaggi.log")));
    faults::start({folder_.file(""), {Call::Write, Call::Sync}, 1, ENOSPC});
    EXPECT_EQ("String Done", write());
    EXPECT_TRUE(faults::stop().failed);
    EXPECT_NE(std::string::npos, test::contentOf(log_.file("messaggi.log")).find("CRegistro"));
}

TEST_F(FailingSettings, AnExportTellsThatItsSchemaWasNotWritten) {
    const Variant connection(test::openMemory());
    const auto exportRows = [&] {
        return host::EsportaTXT(u"SELECT 'Rossi' AS Nome", connection, u"E.TXT",
                                String(folder_.file("")));
    };
    for (const Call call : {Call::Write, Call::Sync, Call::Rename, Call::Lock}) {
        // The lock is the folder's own.
        faults::start({std::filesystem::path(folder_.file("E.TXT")).parent_path().string(),
                       {call},
                       1,
                       ENOSPC});
        EXPECT_THROW(exportRows(), AutomationError) << static_cast<int>(call);
        EXPECT_TRUE(faults::stop().failed) << static_cast<int>(call);
    }
    EXPECT_TRUE(exportRows());
    EXPECT_NE(std::string::npos, test::contentOf(folder_.file("E.TXT")).find("Rossi"));
}

TEST_F(FailingSettings, ADatabaseInAFolderThatMayNotBeWrittenIsOpenedToRead) {
    const std::string file = folder_.file("copia.db");
    test::open("Provider=KapLocal;Data Source=" + file)
        ->Execute(u"CREATE TABLE T (A int) INSERT INTO T VALUES (7)");
    std::filesystem::remove(file + "-wal");
    std::filesystem::remove(file + "-shm");
    faults::Fault fault{folder_.file(""), {Call::Open}, 1, EROFS, /*andAllAfter=*/true};
    fault.onlyCreating = true;
    faults::start(fault);
    const auto connection = test::open("Provider=KapLocal;Mode=Read;Data Source=" + file);
    EXPECT_EQ("Long 7", test::shown(test::valueOf(connection, u"SELECT A FROM T")));
    EXPECT_TRUE(faults::stop().failed);
}

}  // namespace
}  // namespace kap

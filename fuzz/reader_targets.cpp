#include "fuzz/reader_targets.hpp"

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/automation/array.hpp>

#include "base/unicode.hpp"
#include "cli/commands/config/settings_file.hpp"
#include "cli/output/usage_error.hpp"
#include "data/connection_string.hpp"
#include "drivers/text/schema.hpp"
#include "fuzz/reader_support.hpp"
#include "platform/mail/card.hpp"
#include "platform/profile_text.hpp"
#include "platform/registry/registration_text.hpp"

namespace kap::fuzz {
namespace {

// Scripts are read and translated, and what they would do is told instead of done.
void scripts(std::u16string_view text) {
    static const Ref<ado::Connection> connection = [] {
        auto opened = make<ado::Connection>();
        opened->Open(u"Provider=KapLocal;Data Source=:memory:");
        opened->Execute(kTables);
        opened->setCommandTimeout(5);
        return opened;
    }();
    const std::u16string upper = unicode::upper(text);
    for (const std::u16string_view done : {u"SHOWPLAN", u"BACKUP", u"WAITFOR"}) {
        if (upper.find(done) != std::u16string::npos) {
            return;
        }
    }
    connection->Execute(u"SET SHOWPLAN_TEXT ON");
    ends([&] { connection->Execute(text); });
    ends([&] { connection->Execute(u"SET SHOWPLAN_TEXT OFF"); });
}

// What a registration text says is said by the text of the tree that it made.
void registrations(std::u16string_view text) {
    namespace registry = platform::registry;
    registry::Tree tree;
    try {
        registry::applyText(bytesOf(text), tree);
    } catch (const registry::MalformedText&) {
        return;
    }
    const auto written = unicode::utf8(registry::textOf(tree));
    require(written.has_value(), "a registry that cannot be written");
    registry::Tree again;
    registry::applyText(*written, again);
    require(again.keys().size() == tree.keys().size(), "a registry that reads otherwise");
}

void profiles(std::u16string_view text) {
    platform::ProfileText profile(bytesOf(text));
    if (profile.put(u"A", u"chiave", u"valore")) {
        require(profile.value(u"a", u"CHIAVE") == u"valore", "a key that was put and is not there");
    }
    static_cast<void>(profile.bytes());
}

void cards(std::u16string_view text) {
    auto card = platform::mail::Card::read(bytesOf(text));
    if (!card) {
        return;
    }
    card->put(platform::mail::ContactField::Company, u"Ditta; Verdi, & C.");
    const auto again = platform::mail::Card::read(card->bytes());
    require(again && again->get(platform::mail::ContactField::Company) == u"Ditta; Verdi, & C.",
            "a card that loses what was put");
}

void connections(std::u16string_view text) {
    const std::string bytes = bytesOf(text);
    ends([&] { static_cast<void>(ado::ConnectionString::parse(bytes)); });
    ends([&] { static_cast<void>(ado::ConnectionString::shown(bytes)); });
}

void schemas(std::u16string_view text) {
    static_cast<void>(fileWith("Schema.ini", "[E.TXT]\n" + bytesOf(text)));
    ends([&] { static_cast<void>(ado::text_files::readSchema(folder(), u"E.TXT")); });
}

// What a file of settings says is said by the file that is written of it.
void settings(std::u16string_view text) {
    const auto given = unicode::utf8(text);
    if (!given) {
        return;  // files are known to be UTF-8 before they come here
    }
    std::vector<cli::FileSetting> read;
    try {
        read = cli::readSettings(*given, "prova");
    } catch (const cli::UsageError&) {
        return;
    }
    std::ostringstream written;
    cli::writeSettings(written, read);
    const auto again = cli::readSettings(written.str(), "prova");
    require(again.size() == read.size(), "settings that read otherwise");
    for (std::size_t i = 0; i < read.size(); ++i) {
        require(again[i].path.text() == read[i].path.text() && again[i].value == read[i].value &&
                    again[i].flag == read[i].flag && again[i].note == read[i].note,
                "a setting that reads otherwise");
    }
}

std::string soundDatabase() {
    const std::filesystem::path file = folder() / "intero.db";
    {
        const auto connection = make<ado::Connection>();
        connection->Open(String("Provider=KapLocal;Data Source=" + file.string()));
        connection->Execute(kTables);
    }
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// A file in which the text says what to damage: a place in two units, a byte in the third.
void databases(std::u16string_view text) {
    static const std::string sound = soundDatabase();
    constexpr std::size_t kUnits = 3;
    std::string damaged = sound;
    for (std::size_t i = 0; i + kUnits <= text.size() && i < 60; i += kUnits) {
        const std::size_t place = text[i] * std::size_t{251} + text[i + 1];
        damaged[place % damaged.size()] = static_cast<char>(text[i + 2]);
    }
    const std::filesystem::path file = fileWith("guasto.db", damaged);
    for (const char* beside : {"guasto.db-wal", "guasto.db-shm", "guasto.db-journal"}) {
        std::filesystem::remove(folder() / beside);
    }
    ends([&] {
        const auto connection = make<ado::Connection>();
        connection->Open(String("Provider=KapLocal;Lock Timeout=0;Data Source=" + file.string()));
        connection->setCommandTimeout(5);
        for (const char16_t* script :
             {u"SELECT t.*, u.b FROM t JOIN u ON u.a = t.a", u"SELECT * FROM sysobjects",
              u"UPDATE t SET b = 'due'", u"INSERT INTO u VALUES (1, 2)", u"DBCC CHECKDB"}) {
            ends([&] { connection->Execute(script); });
        }
    });
}

Ref<ado::Recordset> savedIn(const std::string& content) {
    const auto stream = make<ado::Stream>();
    stream->setType(ado::StreamTypeEnum::adTypeBinary);
    stream->Open();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(content.data());
    stream->Write(Array::ofBytes({bytes, bytes + content.size()}));
    stream->setPosition(0);
    auto records = make<ado::Recordset>();
    records->Open(Variant(stream), Variant::missing(), ado::CursorTypeEnum::adOpenStatic,
                  ado::LockTypeEnum::adLockBatchOptimistic);
    return records;
}

std::string savedText(ado::Recordset& records) {
    const auto stream = make<ado::Stream>();
    stream->setCharset(u"utf-8");
    stream->Open();
    records.Save(Variant(stream), ado::PersistFormatEnum::adPersistXML);
    stream->setPosition(0);
    return stream->ReadText().utf8();
}

// What a saved recordset says is said by the one that is saved of it, and every value can be read.
void recordsets(std::u16string_view text) {
    Ref<ado::Recordset> records;
    if (!ends([&] { records = savedIn(bytesOf(text)); })) {
        return;
    }
    for (; !records->Eof(); records->MoveNext()) {
        for (std::int32_t i = 0; i < records->Fields()->Count(); ++i) {
            static_cast<void>(records->Fields()->Item(i)->Value());
        }
    }
    std::string written;
    // Characters that XML cannot hold are read from no file, but from a text that is not UTF-8.
    if (ends([&] { written = savedText(*records); })) {
        require(savedText(*savedIn(written)) == written, "a recordset that reads otherwise");
    }
}

constexpr std::array<Target, 9> kReaderTargets = {{{"scripts", &scripts, 10},
                                                   {"registrations", &registrations},
                                                   {"profiles", &profiles},
                                                   {"cards", &cards},
                                                   {"connections", &connections},
                                                   {"schemas", &schemas, 10},
                                                   {"settings", &settings},
                                                   {"recordsets", &recordsets, 4},
                                                   {"databases", &databases, 40}}};

}  // namespace

std::span<const Target> readerTargets() {
    return kReaderTargets;
}

}  // namespace kap::fuzz

#include "cli/demo/demo_host.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/catalogue/create_object.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/host/cemail.hpp>

#include "cli/temporary_folder.hpp"

namespace kap::cli {
namespace {

// Makes the library keep the user's things in a folder for as long as it lives.
class UserFolder {
public:
    explicit UserFolder(const std::filesystem::path& folder) {
        if (const char* before = std::getenv(kVariable)) {
            before_ = before;
        }
        set(folder.string());
    }
    ~UserFolder() { set(before_); }
    UserFolder(const UserFolder&) = delete;
    UserFolder& operator=(const UserFolder&) = delete;

private:
    static constexpr const char* kVariable = "KAPUTIL_HOME";

    static void set(const std::optional<std::string>& value) {
#ifdef _WIN32
        _putenv_s(kVariable, value ? value->c_str() : "");
#else
        if (value) {
            setenv(kVariable, value->c_str(), 1);
        } else {
            unsetenv(kVariable);
        }
#endif
    }

    std::optional<std::string> before_;
};

// A line of a file, counted from 1, without its end.
std::string lineOf(const std::filesystem::path& file, int number) {
    std::ifstream in(file, std::ios::binary);
    std::string line;
    for (int i = 0; i < number && std::getline(in, line); ++i) {
    }
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

class HostStory {
public:
    HostStory(DemoReport& report, std::string user, const String& connectionString)
        : report_(report), user_(std::move(user)), connectionString_(connectionString) {}

    void tell() {
        report_.chapter("Files for others",
                        "The currencies for another program, a line in a log, a customer among "
                        "the contacts of the mail program.",
                        "");
        exportCurrencies();
        writeLog();
        if (hasMailClient()) {
            keepContact();
        }
    }

private:
    [[nodiscard]] Step stepOf(const char* member, NamedTexts arguments) const {
        Step step;
        step.user = user_;
        step.member = member;
        step.arguments = std::move(arguments);
        return step;
    }

    // Where there is one in the system, the library uses it and brings none of its own.
    static bool hasMailClient() {
        try {
            return createObject(u"Outlook.Application") != nullptr;
        } catch (const AutomationError&) {
            return false;
        }
    }

    void exportCurrencies() {
        Step step = stepOf("EsportaTXT", {{"sNomeTxt", "VALUTE.TXT"}});
        Variant connection = connectionString_;
        const bool done = functions_->EsportaTXT(
            u"SELECT Codice, Descrizione, Dec_Imp FROM vtx_TabVal ORDER BY Codice", connection,
            u"VALUTE.TXT", String(folder_.path().string()));
        const std::string column = lineOf(folder_.path() / "SCHEMA.INI", 7);
        const std::string first = lineOf(folder_.path() / "VALUTE.TXT", 1);
        step.result = done;
        step.values = {{"SCHEMA.INI", column}, {"VALUTE.TXT", first}};
        step.expected = done && column == "col1=Codice Char Width 3" && first.size() == 45;
        report_.add(step);
    }

    void writeLog() {
        const std::filesystem::path file = folder_.path() / "vertex.log";
        Step step = stepOf("WLog", {{"sLog_Messaggio", "Valute esportate"}});
        functions_->WLog(String(file.string()), u"Valute esportate");
        step.values = {{"vertex.log", lineOf(file, 1)}};
        step.expected = lineOf(file, 1) == "Valute esportate";
        report_.add(step);
    }

    void keepContact() {
        const auto contact = make<CEMail>();
        contact->setEMail(u"info@rossi.example");
        contact->setCodAna(u"1001");
        contact->setRagioneSociale(u"Ferramenta Rossi");
        Step step = stepOf("Update", {{"EMail", "info@rossi.example"},
                                      {"CodAna", "1001"},
                                      {"RagioneSociale", "Ferramenta Rossi"}});
        const bool kept = contact->Update().as<bool>();
        const std::string shown = convert::toString(contact->VisualizzaCome()).utf8();
        step.result = kept;
        step.values = {{"VisualizzaCome", shown}};
        step.expected =
            kept && shown == "1001 - Ferramenta Rossi" && convert::toLong(contact->Count()) == 1;
        report_.add(step);
    }

    DemoReport& report_;
    std::string user_;
    String connectionString_;
    TemporaryFolder folder_;
    UserFolder userFolder_{folder_.path()};
    Ref<StdFunctions> functions_ = make<StdFunctions>();
};

}  // namespace

void tellOfTheHost(DemoReport& report, const std::string& user, const String& connectionString) {
    HostStory(report, user, connectionString).tell();
}

}  // namespace kap::cli

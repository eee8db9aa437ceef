#include "cli/demo/demo_configuration.hpp"

#include <functional>
#include <utility>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>
#include <kaputil/config/cfg_stampa.hpp>

namespace kap::cli {
namespace {

constexpr const char16_t* kOwnPrint = u"Urgente";

// A program as one user runs it: it declares what can be configured and loads what the user's group
// has set. Each member does one thing of the library and gives back the step to show.
class Program {
public:
    Program(std::string user, String group, const String& connectionString)
        : user_(std::move(user)), group_(std::move(group)) {
        const auto connection = make<ado::Connection>();
        connection->Open(connectionString);
        root_->setGruppo(group_);
        root_->setActiveConnection(connection);
        const auto modules = root_->Add(u"Vendite")->Procedure()->Add(u"Documenti")->Moduli();
        const auto heading = modules->Add(u"Testata")->Campi();
        heading->Add(u"TipoProposto")->setValoreDefault(u"FAI");
        const auto discount = heading->Add(u"ScontoMassimo");
        discount->setValoreDefault(u"10");
        discount->setValoriConsentiti(u"10|15|20|25");
        modules->Add(u"Righe")->Campi()->Add(u"Passo")->setValoreDefault(u"5");
        const auto invoice = modules->Add(u"Stampe")->Campi()->Add(u"Fattura");
        make<CFG_Stampa>()->InitDefault(invoice);
    }

    Step load() {
        Step step = stepOf("CaricaCfgPersonalizzati", {{"Gruppo", group_.utf8()}});
        root_->CaricaCfgPersonalizzati();
        for (const char16_t* name : {u"ScontoMassimo", u"TipoProposto"}) {
            const auto one = field(u"Testata", name);
            step.values.emplace_back(one->Nome().utf8(),
                                     (one->Valore() + u" di " + one->Gruppo()).utf8());
        }
        return step;
    }

    Step assignDiscount(const String& value) {
        Step step = stepOf("Valore", {{"ScontoMassimo", value.utf8()}});
        step.values = step.arguments;
        trapping(step, [&] { field(u"Testata", u"ScontoMassimo")->setValore(value); });
        return step;
    }

    // Makes the print layout and saves it.
    Step addPrint() {
        Step step = stepOf("CFG_Stampa", {{"Campo", String(kOwnPrint).utf8()}});
        const auto added = prints()->Add(kOwnPrint);
        added->setValore(u"<ADD_RUNTIME></ADD_RUNTIME>");
        const auto print = make<CFG_Stampa>();
        print->Init(added);
        print->setTitolo(u"Consegna urgente");
        print->setCopie(u"2");
        added->Update();
        step.values = {{"Valore", added->Valore().utf8()}};
        return step;
    }

    // Loads and looks for the print layout.
    Step findPrint() {
        Step step = stepOf("CFG_Stampa", {{"Campo", String(kOwnPrint).utf8()}});
        root_->CaricaCfgPersonalizzati();
        trapping(step, [&] {
            const auto print = make<CFG_Stampa>();
            print->Init(prints()->Item(kOwnPrint));
            step.result = print->AddRunTime();
            step.values = {{"Titolo", print->Titolo().utf8()}, {"Copie", print->Copie().utf8()}};
        });
        return step;
    }

    // Deletes the print layout's row, and the field that was made for it.
    Step removePrint() {
        Step step = stepOf("ResetDefault", {{"ResetTabella", "True"}});
        prints()->Item(kOwnPrint)->ResetDefault(true);
        prints()->Delete(kOwnPrint);
        root_->CaricaCfgPersonalizzati();
        step.result = prints()->Collezione()->contains(kOwnPrint);
        return step;
    }

private:
    [[nodiscard]] Step stepOf(const char* member, NamedTexts arguments) const {
        Step step;
        step.user = user_;
        step.member = member;
        step.arguments = std::move(arguments);
        return step;
    }

    // An error becomes the step's message.
    static void trapping(Step& step, const std::function<void()>& action) {
        try {
            action();
        } catch (const AutomationError& error) {
            step.message = error.what();
        }
    }

    [[nodiscard]] Ref<CFG_Campi> fields(const char16_t* module) const {
        return root_->Item(u"Vendite")
            ->Procedure()
            ->Item(u"Documenti")
            ->Moduli()
            ->Item(module)
            ->Campi();
    }
    [[nodiscard]] Ref<CFG_Campi> prints() const { return fields(u"Stampe"); }
    [[nodiscard]] Ref<CFG_Campo> field(const char16_t* module, const char16_t* name) const {
        return fields(module)->Item(name);
    }

    std::string user_;
    String group_;
    Ref<CFG_Applicazioni> root_ = make<CFG_Applicazioni>();
};

class ConfigurationChapters {
public:
    ConfigurationChapters(DemoReport& report, const String& connectionString)
        : report_(report),
          anna_("Anna", u"UFFICIO", connectionString),
          bruno_("Bruno", u"BANCO", connectionString) {}

    void tell() {
        report_.chapter("The settings of a group",
                        "The program's defaults, the company's, and what each group changed; a "
                        "value off the list is refused.",
                        "");
        expect(anna_.load(), {"25 di UFFICIO", "FAI di DEFAULT"});
        expect(bruno_.load(), {"15 di DEFAULT", "DDT di BANCO"});
        expect(anna_.assignDiscount(u"30"), {"30"},
               "Valore 30 non consentito su CFG ScontoMassimo");

        report_.chapter("A print layout of one's own",
                        "Anna adds a layout at run time and saves it: from now on it is loaded for "
                        "her group, and for no other.",
                        "");
        expect(anna_.addPrint(), {"<ADD_RUNTIME></ADD_RUNTIME><TITOLO>Consegna urgente</TITOLO>"
                                  "<COPIE>2</COPIE>"});
        Step found = anna_.findPrint();
        const bool addedAtRunTime = found.result == true;
        expect(std::move(found), {"Consegna urgente", "2"}, "", addedAtRunTime);
        expect(bruno_.findPrint(), {},
               "CFG   BANCO\\Vendite\\Documenti\\Stampe\\Urgente  non  trovato");
        Step removed = anna_.removePrint();
        const bool gone = removed.result == false;
        expect(std::move(removed), {}, "", gone);
    }

private:
    void expect(Step step, const std::vector<std::string>& values, const std::string& message = {},
                bool andAlso = true) {
        step.expected = andAlso && step.message == message && step.values.size() == values.size();
        for (std::size_t i = 0; step.expected && i < values.size(); ++i) {
            step.expected = step.values[i].second == values[i];
        }
        report_.add(step);
    }

    DemoReport& report_;
    Program anna_;
    Program bruno_;
};

}  // namespace

void tellOfConfiguration(DemoReport& report, const String& connectionString) {
    ConfigurationChapters(report, connectionString).tell();
}

}  // namespace kap::cli

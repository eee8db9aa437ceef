// Declares what can be configured, lets a group change it, and loads it as another program would.
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/config/cfg_applicazione.hpp>
#include <kaputil/config/cfg_applicazioni.hpp>
#include <kaputil/config/cfg_campo.hpp>
#include <kaputil/config/cfg_modulo.hpp>
#include <kaputil/config/cfg_procedura.hpp>

#include <iostream>

// The tree of a program: names, defaults and what is allowed. The group decides whose rows it
// loads.
kap::Ref<kap::CFG_Applicazioni> declared(const kap::Ref<kap::ado::Connection>& connection) {
    auto root = kap::make<kap::CFG_Applicazioni>();
    root->setGruppo(u"UFFICIO");
    root->setActiveConnection(connection);
    const auto prints =
        root->Add(u"Vendite")->Procedure()->Add(u"Ordini")->Moduli()->Add(u"Stampa");
    const auto copies = prints->Campi()->Add(u"Copie");
    copies->setValoreDefault(u"1");
    copies->setValoriConsentiti(u"1|2|3");
    return root;
}

kap::Ref<kap::CFG_Campo> copiesIn(const kap::Ref<kap::CFG_Applicazioni>& root) {
    const auto procedure = root->Item(u"Vendite")->Procedure()->Item(u"Ordini");
    return procedure->Moduli()->Item(u"Stampa")->Campi()->Item(u"Copie");
}

int main() {
    const auto connection = kap::make<kap::ado::Connection>();
    connection->Open(u"Provider=KapLocal;Data Source=:memory:");
    connection->Execute(
        u"CREATE TABLE KAP_CFG (Gruppo varchar(30), Applicazione varchar(30), Procedura "
        u"varchar(30), Modulo varchar(30), Campo varchar(30), Valore varchar(2000), "
        u"Flag varchar(10))");

    // A user of the office changes the number of copies; a value off the list is refused.
    const auto copies = copiesIn(declared(connection));
    try {
        copies->setValore(u"9");
    } catch (const kap::AutomationError& error) {
        std::cout << error.what() << '\n';
    }
    copies->setValore(u"3");
    copies->Update();

    // The next program of the group finds it.
    const auto root = declared(connection);
    root->CaricaCfgPersonalizzati();
    const auto found = copiesIn(root);
    std::cout << found->Path().utf8() << " = " << found->Valore().utf8() << " ("
              << found->Gruppo().utf8() << ")\n";
    return found->Personalizzato() ? 0 : 1;
}

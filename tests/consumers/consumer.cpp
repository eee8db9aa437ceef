// What programs do with the library: data, objects by name, errors, and objects of their own.
#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/catalogue/create_object.hpp>
#include <kaputil/catalogue/std_functions.hpp>
#include <kaputil/catalogue/version.hpp>
#include <kaputil/core/iclassi.hpp>

#include <iostream>

namespace {

class Document final : public kap::IClassi {};

int errorOf(const char16_t* name) {
    try {
        static_cast<void>(kap::createObject(name));
    } catch (const kap::AutomationError& error) {
        return error.number();
    }
    return 0;
}

}  // namespace

int main() {
    const auto connection = kap::make<kap::ado::Connection>();
    connection->Open(u"Provider=KapLocal;Data Source=:memory:");
    connection->Execute(
        u"CREATE TABLE Clienti (Codice int PRIMARY KEY, Nome varchar(40)) "
        u"INSERT INTO Clienti VALUES (12, 'Ferramenta Rossi')");
    kap::Variant session = connection;
    kap::Variant record;
    const auto functions = kap::make<kap::StdFunctions>();
    functions->DB_Read(session, u"SELECT * FROM Clienti", record);
    std::cout << record.as<kap::String>().utf8() << '\n';

    const kap::Ref<kap::Object> byName = kap::createObject(u"KapUtil.CProprieta");
    const auto own = kap::make<Document>();
    std::cout << byName->className().utf8() << ' ' << own->className().utf8() << ' '
              << errorOf(u"KapUtil.Nessuno") << ' ' << KAPUTIL_VERSION << '\n';
    return dynamic_cast<kap::CProprieta*>(byName.get()) != nullptr ? 0 : 1;
}

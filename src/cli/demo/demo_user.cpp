#include "cli/demo/demo_user.hpp"

#include <utility>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "cli/output/value_text.hpp"

namespace kap::cli {
namespace {

std::string textOf(const Variant& value) {
    return value.isNull() ? std::string() : convert::toString(value).utf8();
}

}  // namespace

DemoUser::DemoUser(std::string name, const String& connectionString)
    : name_(std::move(name)), functions_(make<StdFunctions>()), form_(make<CProprieta>()) {
    const auto connection = make<ado::Connection>();
    connection->Open(connectionString);
    connection_ = connection;
}

Step DemoUser::stepOf(const char* member, const std::string& query) const {
    Step step;
    step.user = name_;
    step.member = member;
    step.arguments = {{"sSQL", query}};
    return step;
}

NamedTexts DemoUser::valuesOf(const CProprieta& properties,
                              std::initializer_list<const char*> names) const {
    NamedTexts values;
    for (const char* name : names) {
        values.emplace_back(name, textOf(properties.Leggi(name)));
    }
    return values;
}

std::string DemoUser::value(const char* name) const {
    return textOf(form_->Leggi(name));
}

std::string DemoUser::messageOfErrore() {
    return textOf(functions_->Errore()->LeggiAttributo(u"ERR_MSG1"));
}

Step DemoUser::read(const std::string& query, std::initializer_list<const char*> shown) {
    Step step = stepOf("DB_Read", query);
    Variant record;
    step.result = functions_->DB_Read(connection_, query, record);
    form_->Scrivi(u"", record);
    step.values = valuesOf(*form_, shown);
    return step;
}

Step DemoUser::change(const std::vector<std::pair<const char*, Variant>>& values) {
    Step step;
    step.user = name_;
    step.member = "Scrivi";
    for (const auto& [name, value] : values) {
        form_->Scrivi(name, value);
        step.values.emplace_back(name, textOf(form_->Leggi(name)));
    }
    step.arguments = step.values;
    return step;
}

Step DemoUser::save(const std::string& query) {
    Step step = stepOf("DB_Update", query);
    step.result = functions_->DB_Update(connection_, query, form_->Leggi());
    step.message = messageOfErrore();
    return step;
}

Step DemoUser::remove(const std::string& query) {
    Step step = stepOf("DB_Delete", query);
    Variant record = form_->Leggi();
    step.result = functions_->DB_Delete(connection_, query, record);
    form_->Scrivi(u"", record);
    step.message = messageOfErrore();
    return step;
}

Step DemoUser::look(const std::string& query, const std::string& fields) {
    Step step = stepOf("kapLeggiRecord", query);
    step.arguments.emplace_back("sNomeCampi", fields);
    const Variant found = functions_->kapLeggiRecord(connection_, query, fields);
    const auto& properties = dynamic_cast<const CProprieta&>(*found.as<Ref<Object>>());
    for (std::int16_t i = 1; i <= properties.Count(); ++i) {
        const String name = properties.NomeProprieta(i);
        step.values.emplace_back(name.utf8(), textOf(properties.Leggi(name)));
    }
    return step;
}

Step DemoUser::nextLine(const std::string& query, std::int16_t stepWidth) {
    Step step = stepOf("Riga_Prog", query);
    step.arguments.emplace_back("nPasso", plain::text(stepWidth));
    step.arguments.emplace_back("nInizio", plain::text(stepWidth));
    String sql = query;
    const Variant line = functions_->Riga_Prog(connection_, sql, stepWidth, stepWidth);
    step.result = convert::toLong(line);
    return step;
}

Step DemoUser::callWith(const char* member, std::vector<std::pair<const char*, Variant>>& arguments,
                        Variant* connection) {
    Step step;
    step.user = name_;
    step.member = member;
    std::vector<Arguments::Named> named;
    for (auto& [name, value] : arguments) {
        step.arguments.emplace_back(name, textOf(value));
        named.push_back({name, &value});
    }
    if (connection != nullptr) {
        named.push_back({u"Connessione", connection});
    }
    Arguments all;
    all.named = named;
    step.result = jsonValue(functions_->invoke(String(member).view(), InvokeKind::Method, all));
    for (const auto& [name, value] : arguments) {
        step.values.emplace_back(name, textOf(value));
    }
    return step;
}

Step DemoUser::call(const char* member, std::vector<std::pair<const char*, Variant>> arguments) {
    return callWith(member, arguments, nullptr);
}

Step DemoUser::callConnected(const char* member,
                             std::vector<std::pair<const char*, Variant>> arguments) {
    return callWith(member, arguments, &connection_);
}

}  // namespace kap::cli

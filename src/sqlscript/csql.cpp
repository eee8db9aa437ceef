#include <kaputil/sqlscript/csql.hpp>

#include <new>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "ado/connection_carrier.hpp"
#include "automation/class_builder.hpp"
#include "sqlscript/held.hpp"
#include "sqlscript/script_lines.hpp"

namespace kap {
namespace {

using sqlscript::held;

// Gives the messages of a failed run to the error object: the server's error, and behind it what
// the script raised for the statement.
void addMessages(CErrore& error, const ado::Connection& connection) {
    const auto reported = connection.Errors();
    for (std::int32_t i = 0; i < reported->Count(); ++i) {
        error.AddMessaggio(reported->Item(i)->Description());
    }
}

// Ends the transaction that stays open when the server gives up a script before its own end.
void rollBackWhatIsOpen(ado::Command& command) {
    command.setCommandText(u"if (@@TRANCOUNT>0) ROLLBACK TRANSACTION");
    try {
        static_cast<void>(command.Execute());
    } catch (const AutomationError&) {
        // Deliberate: what clients are to read is why the script failed. A connection that cannot
        // run this is lost, and its transaction with it.
    } catch (const std::bad_alloc&) {
        // The same, for as long as there is no memory to tell it.
    }
}

}  // namespace

CSQL::CSQL() : parameters_(make<CProprieta>()), error_(make<CErrore>()) {}

CSQL::~CSQL() {
    if (!closesConnection_) {
        return;
    }
    try {
        if (connection_->State() == ado::ObjectStateEnum::adStateOpen) {
            connection_->Close();
        }
    } catch (...) {
        // Nobody is left to tell; a connection of the client's own may raise anything.
    }
}

const ClassDescription& CSQL::classDescription() {
    static const ClassDescription description =
        ClassBuilder<CSQL>(u"CSQL", u"4ac5a4f4-d431-4aa4-8211-93d6a4754c2f",
                           u"913252bc-c034-4f8e-8135-2bef7b1c2cf5")
            .field<&CSQL::Parametri, &CSQL::setParametri>(u"Parametri")
            .field<&CSQL::SQLString, &CSQL::setSQLString>(u"SQLString")
            .field<&CSQL::Errore, &CSQL::setErrore>(u"Errore")
            .property<&CSQL::ConnectionString, &CSQL::setConnectionString>(u"ConnectionString")
            .property<&CSQL::ActiveConnection, &CSQL::setActiveConnection>(u"ActiveConnection")
            .property<&CSQL::SQL_Execute>(u"SQL_Execute")
            .method<&CSQL::Execute>(u"Execute")
            .method<&CSQL::Command>(u"Command",
                                    {u"CommandText", Parameter(u"MessaggioErrore").otherwise(u"")})
            .method<&CSQL::AddTmp>(u"AddTmp")
            .method<&CSQL::Clear>(u"Clear")
            .build();
    return description;
}

String CSQL::ConnectionString() {
    return ActiveConnection()->ConnectionString();
}

void CSQL::setConnectionString(const String& value) {
    const auto connection = ActiveConnection();
    // Deliberate: a connection that the client gave is reopened, too, and belongs to this object
    // from now on.
    if (connection->State() == ado::ObjectStateEnum::adStateOpen) {
        connection->Close();
    }
    connection->setConnectionString(value);
    connection->Open(u"", u"", u"", -1);
    closesConnection_ = true;
}

Ref<ado::Connection> CSQL::ActiveConnection() {
    if (!connection_) {
        connection_ = make<ado::Connection>();
    }
    return connection_;
}

void CSQL::setActiveConnection(const Ref<ado::Connection>& value) {
    connection_ = value;
    closesConnection_ = false;
}

String CSQL::SQL_Execute() const {
    return sqlscript::callOf(script_);
}

bool CSQL::Execute() {
    held(error_).Clear();
    const auto connection = ActiveConnection();
    const auto command = make<ado::Command>();
    command->setActiveConnection(Variant(connection));
    command->setCommandType(ado::CommandTypeEnum::adCmdText);
    command->setCommandText(SQL_Execute());
    command->setCommandTimeout(0);
    try {
        static_cast<void>(command->Execute(Variant::missing(), Variant::missing(), -1));
    } catch (const AutomationError&) {
        error_->setNumero(1);
        addMessages(*error_, *connection);
        rollBackWhatIsOpen(*command);
    }
    return !failed();
}

bool CSQL::failed() const {
    return convert::leadingNumber(convert::toString(error_->Numero())) > 0;
}

String CSQL::Command(const String& commandText, const String& messaggioErrore) {
    constexpr std::u16string_view kDefaultMessage = u"KAP: Errore Esecuzione Command";
    held(error_).Clear();
    std::u16string block;
    // Quotes in the message are deliberately not doubled: callers write it as it stands in SQL.
    sqlscript::appendLine(
        block, {u"SET @ERRORE_DESC='",
                messaggioErrore.empty() ? kDefaultMessage : messaggioErrore.view(), u"'"});
    sqlscript::appendLine(block, {commandText});
    sqlscript::appendCheck(block);
    script_ += block;
    return block;
}

void CSQL::Clear() {
    script_ = {};
    held(error_).Clear();
    held(parameters_).Scrivi(u"", u"");
}

}  // namespace kap

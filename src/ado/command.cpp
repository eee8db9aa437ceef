#include <kaputil/ado/command.hpp>

#include <chrono>
#include <memory>
#include <utility>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/later_execution.hpp"
#include "ado/parameter_cell.hpp"
#include "ado/request_builder.hpp"
#include "ado/results.hpp"
#include "automation/class_builder.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

bool goesIn(ParameterDirectionEnum direction) {
    return direction != ParameterDirectionEnum::adParamOutput &&
           direction != ParameterDirectionEnum::adParamReturnValue;
}

bool comesBack(ParameterDirectionEnum direction) {
    return direction == ParameterDirectionEnum::adParamOutput ||
           direction == ParameterDirectionEnum::adParamInputOutput ||
           direction == ParameterDirectionEnum::adParamReturnValue;
}

// The values given with a call: one, or an array of them.
std::vector<Variant> valuesGiven(const Variant& given) {
    if (given.isMissing() || given.isEmpty()) {
        return {};
    }
    if (!given.isArray() || given.as<Array>().elementType() == VarType::Byte) {
        return {given};
    }
    std::vector<Variant> values;
    const Array& array = given.as<Array>();
    for (std::int32_t i = array.lowerBound(); i <= array.upperBound(); ++i) {
        values.push_back(array.at(i));
    }
    return values;
}

}  // namespace

Command::Command() : parameters_(make<ado::Parameters>()) {
    parameters_->command_ = this;
}

Command::~Command() {
    awaits(nullptr);
    parameters_->command_ = nullptr;
}

const ClassDescription& Command::classDescription() {
    const auto missing = [](const char16_t* name) {
        return kap::Parameter(name).otherwise(Variant::missing());
    };
    static const ClassDescription description =
        ClassBuilder<Command>(u"Command", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b13",
                              u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b23")
            .property<&Command::ActiveConnection, &Command::setActiveConnection>(
                u"ActiveConnection")
            .alsoSet()
            .property<&Command::CommandText, &Command::setCommandText>(u"CommandText")
            .property<&Command::CommandTimeout, &Command::setCommandTimeout>(u"CommandTimeout")
            .property<&Command::CommandType, &Command::setCommandType>(u"CommandType")
            .property<&Command::Name, &Command::setName>(u"Name")
            .property<&Command::NamedParameters, &Command::setNamedParameters>(u"NamedParameters")
            .property<&Command::Parameters>(u"Parameters")
            .property<&Command::Prepared, &Command::setPrepared>(u"Prepared")
            .property<&Command::State>(u"State")
            .method<&Command::Cancel>(u"Cancel")
            .method<&Command::CreateParameter>(
                u"CreateParameter",
                {kap::Parameter(u"Name").otherwise(u""), kap::Parameter(u"Type").otherwise(0),
                 kap::Parameter(u"Direction").otherwise(1), kap::Parameter(u"Size").otherwise(0),
                 missing(u"Value")})
            .method<&Command::Execute>(u"Execute",
                                       {missing(u"RecordsAffected"), missing(u"Parameters"),
                                        kap::Parameter(u"Options").otherwise(-1)})
            .property<&Command::CommandStream, &Command::setCommandStream>(u"CommandStream")
            .alsoSet()
            .property<&Command::Dialect, &Command::setDialect>(u"Dialect")
            .property<&Command::Properties>(u"Properties")
            .build(u"CommandText");
    return description;
}

Variant Command::ActiveConnection() const {
    return connection_ ? connection_->clientsObject() : Variant(Ref<Object>());
}

void Command::setActiveConnection(const Variant& value) {
    if (State() == ObjectStateEnum::adStateExecuting) {
        fail::stillExecuting();
    }
    connection_ = connectionOf(value);
}

void Command::setCommandType(CommandTypeEnum value) {
    switch (value) {
        case CommandTypeEnum::adCmdUnspecified:
        case CommandTypeEnum::adCmdText:
        case CommandTypeEnum::adCmdTable:
        case CommandTypeEnum::adCmdStoredProc:
        case CommandTypeEnum::adCmdUnknown:
        case CommandTypeEnum::adCmdTableDirect:
            type_ = value;
            return;
        case CommandTypeEnum::adCmdFile:  // that is for Recordset.Open
            break;
    }
    fail::invalidArgument();
}

void Command::setCommandTimeout(std::int32_t seconds) {
    timeout_ = checkedSeconds(seconds);
}

Ref<Parameter> Command::CreateParameter(const String& name, DataTypeEnum type,
                                        ParameterDirectionEnum direction, std::int32_t size,
                                        const Variant& value) const {
    auto parameter = make<Parameter>();
    parameter->setName(name);
    if (type != DataTypeEnum::adEmpty) {
        parameter->setType(type);
    }
    parameter->setDirection(direction);
    parameter->setSize(size);
    if (!value.isMissing()) {
        parameter->setValue(value);
    }
    return parameter;
}

Ref<Recordset> Command::Execute(ByRef<Variant> recordsAffected, const Variant& parameters,
                                std::int32_t options) {
    if (connection_ && connection_->runsLater(options)) {
        *recordsAffected = std::int32_t{-1};
        return executeLater(parameters, options);
    }
    if (!connection_) {
        fail::invalidConnection();
    }
    Execution execution{text_, CursorTypeEnum::adOpenForwardOnly, LockTypeEnum::adLockReadOnly,
                        options, Ref<Command>(this)};
    executing(connection_, execution, [&] {
        const auto request = std::make_shared<Request>(
            this->request(parameters, execution.source(), execution.options));
        const bool noRecords = wantsNoRecords(execution.options);
        auto records = noRecords ? make<Recordset>() : recordsetFor(connection_);
        if (!noRecords) {
            comeAsNeeded(*request, records->isReadOnce(), execution.options);
        }
        Reply reply;
        send(*request, reply);
        execution.rowsAffected = rowsWritten(reply.results);
        if (!noRecords) {
            answer(*records, request, std::move(reply));
            records->executed_ = Ref<Command>(this);
        }
        execution.recordset = std::move(records);
    });
    *recordsAffected = execution.rowsAffected;
    return execution.recordset;
}

// Parameters that come back have their new values when it has ended.
Ref<Recordset> Command::executeLater(const Variant& given, std::int32_t options) {
    const auto later = std::make_shared<LaterExecution>(text_, options);
    const bool noRecords = wantsNoRecords(options);
    auto records = noRecords ? make<Recordset>() : recordsetFor(connection_);
    later->command = this;
    connection_->runLater(
        later,
        [&](const LaterExecution& wanted) {
            later->recordset = noRecords ? nullptr : records.get();
            Request request =
                this->request(given, wanted.execution.source(), wanted.execution.options);
            if (!noRecords) {
                comeAsNeeded(request, records->isReadOnce(), wanted.execution.options);
            }
            return request;
        },
        [noRecords, connection = connection_.get()](LaterExecution& ran) {
            if (ran.execution.command) {
                ran.execution.command->takeBack(*ran.request);
            }
            takeRecords(ran, Ref<Connection>(connection), noRecords);
            if (ran.execution.recordset) {
                ran.execution.recordset->executed_ = ran.execution.command;
            }
        });
    awaits(later);
    if (!noRecords) {
        records->awaits(later);
    }
    return records;
}

void Command::awaits(std::shared_ptr<LaterExecution> later) {
    if (awaited_ != nullptr) {
        awaited_->command = nullptr;
    }
    awaited_ = std::move(later);
}

ObjectStateEnum Command::State() const {
    if (connection_) {
        connection_->settle();
    }
    return awaited_ != nullptr ? ObjectStateEnum::adStateExecuting : ObjectStateEnum::adStateClosed;
}

Request Command::requestOf(const Execution& execution) const {
    return request(Variant::missing(), execution.source(), execution.options);
}

void Command::Cancel() const {
    if (connection_) {
        connection_->Cancel();
    }
}

Reply Command::run(const Execution& execution, bool readOnce,
                   std::shared_ptr<const Request>& sent) {
    const auto request = std::make_shared<Request>(
        this->request(Variant::missing(), execution.source(), execution.options));
    comeAsNeeded(*request, readOnce, execution.options);
    Reply reply;
    send(*request, reply);
    sent = request;
    return reply;
}

void Command::send(Request& request, Reply& reply) {
    if (!connection_) {
        fail::invalidConnection();
    }
    connection_->run(request, reply);
    takeBack(request);
}

Request Command::request(const Variant& given, const String& text, std::int32_t options) const {
    Request made = requestFor(text, saysKind(options) ? options : static_cast<std::int32_t>(type_));
    made.timeout = std::chrono::seconds(timeout_);
    const std::vector<Variant> values = valuesGiven(given);
    if (parameters_->Count() == 0) {
        for (const Variant& value : values) {
            made.parameters.push_back(toRequest(value));
        }
        return made;
    }
    std::size_t next = 0;
    for (std::int32_t i = 0; i < parameters_->Count(); ++i) {
        const Ref<Parameter> parameter = parameters_->Item(i);
        if (goesIn(parameter->Direction()) && next < values.size()) {
            const Variant& value = values[next++];
            if (!value.isEmpty() && !value.isMissing()) {
                parameter->setValue(value);
            }
        }
        made.parameters.push_back(toRequest(*parameter, namedParameters_));
    }
    if (next < values.size()) {
        fail::invalidArgument();
    }
    return made;
}

// Parameters that the database has written get their new values.
void Command::takeBack(const Request& request) {
    const auto count = static_cast<std::size_t>(parameters_->Count());
    for (std::size_t i = 0; i < count && i < request.parameters.size(); ++i) {
        const Ref<Parameter> parameter = parameters_->Item(static_cast<std::int32_t>(i));
        if (comesBack(parameter->Direction())) {
            parameter->value_ = fromRequest(request.parameters[i]);
        }
    }
}

}  // namespace kap::ado

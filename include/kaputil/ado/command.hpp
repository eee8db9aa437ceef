#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/parameter.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

struct Execution;
struct LaterExecution;
struct Reply;
struct Request;

// A text to run again and again, with parameters and a time limit of its own.
//
//     auto command = kap::make<kap::ado::Command>();
//     command->setActiveConnection(connection);
//     command->setCommandText(u"UPDATE Clienti SET Fido = ? WHERE Codice = ?");
//     command->Execute(Variant(), Array::ofVariants({kap::Currency{1'000'0000}, 12}));
class KAPUTIL_EXPORT Command final : public DescribedObject {
public:
    Command();
    ~Command() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The connection object, or an unset one. Assigning a connection string opens a connection of
    // its own; raises 3709 for a connection that is not open, 3001 for anything else.
    [[nodiscard]] Variant ActiveConnection() const;
    void setActiveConnection(const Variant& value);
    [[nodiscard]] String CommandText() const { return text_; }
    void setCommandText(const String& value);
    // adCmdText, adCmdTable, adCmdStoredProc; adCmdUnknown, the default, is run as a text.
    [[nodiscard]] CommandTypeEnum CommandType() const { return type_; }
    void setCommandType(CommandTypeEnum value);
    // Seconds, 30 by default; 0: no limit. Running longer ends in the timeout error (-2147217871).
    [[nodiscard]] std::int32_t CommandTimeout() const { return timeout_; }
    void setCommandTimeout(std::int32_t seconds);
    // Whether the text is worth preparing. Every text is, so this is kept for who asks.
    [[nodiscard]] bool Prepared() const { return prepared_; }
    void setPrepared(bool value) { prepared_ = value; }
    [[nodiscard]] String Name() const { return name_; }
    void setName(const String& value) { name_ = value; }
    // Whether a procedure's parameters are known by their names and not by their places.
    [[nodiscard]] bool NamedParameters() const { return namedParameters_; }
    void setNamedParameters(bool value) { namedParameters_ = value; }
    // Closed, or adStateExecuting while it runs in the background.
    [[nodiscard]] ObjectStateEnum State() const;
    // That of the connection, which ends what is run in the background or by another thread.
    void Cancel() const;

    // How the text is read: there is the one dialect, which is every driver's default. Raises 3001
    // for what is no identity in braces.
    [[nodiscard]] String Dialect() const { return dialect_; }
    void setDialect(const String& value);
    // A Stream that holds the text, an unset object unless assigned. Raises 3001 for anything else.
    [[nodiscard]] Variant CommandStream() const { return stream_; }
    void setCommandStream(const Variant& value);
    // "Command Time Out" and "Maximum Rows".
    [[nodiscard]] Ref<ado::Properties> Properties();

    [[nodiscard]] Ref<ado::Parameters> Parameters() const { return parameters_; }
    // A parameter that does not belong to a command yet. Raises 3001 for a type, direction or size
    // that does not exist, and what Parameter.Value raises.
    [[nodiscard]] Ref<Parameter> CreateParameter(
        const String& name = u"", DataTypeEnum type = DataTypeEnum::adEmpty,
        ParameterDirectionEnum direction = ParameterDirectionEnum::adParamInput,
        std::int32_t size = 0, const Variant& value = Variant::missing()) const;

    // Runs the command. The result is the first rows, forward only and read only, or a closed
    // recordset; `recordsAffected` receives the number of rows that the statements wrote, as a
    // Long. `parameters` is a value or an array of values for the input parameters in their order;
    // what is Empty or left out keeps the parameter's own value. A command without parameters takes
    // their types from the values. Parameters that come back have their new values afterwards.
    Ref<Recordset> Execute(ByRef<Variant> recordsAffected = Variant::missing(),
                           const Variant& parameters = Variant::missing(),
                           std::int32_t options = -1);

    // For a recordset that opens the command: runs it as it stands. `sent` receives what was sent.
    // C++ only.
    [[nodiscard]] Reply run(const Execution& execution, bool readOnce,
                            std::shared_ptr<const Request>& sent);
    [[nodiscard]] const Ref<Connection>& connection() const { return connection_; }

private:
    friend class Parameters;
    [[nodiscard]] std::vector<Ref<Parameter>> parametersTold() const;
    [[nodiscard]] Request request(const Variant& given, const String& text,
                                  std::int32_t options) const;
    void send(Request& request, Reply& reply);
    void takeBack(const Request& request);
    friend class Connection;
    friend class Recordset;
    void awaits(std::shared_ptr<LaterExecution> later);
    Ref<Recordset> executeLater(const Variant& given, std::int32_t options);
    [[nodiscard]] Request requestOf(const Execution& execution) const;

    std::shared_ptr<LaterExecution> awaited_;  // what it runs in the background
    Ref<Connection> connection_;
    Ref<ado::Parameters> parameters_;
    String text_;
    Variant stream_ = Ref<Object>();
    String dialect_ = u"{C8B521FB-5CF3-11CE-ADE5-00AA0044773D}";
    String name_;
    CommandTypeEnum type_ = CommandTypeEnum::adCmdUnknown;
    std::int32_t timeout_ = 30;
    bool prepared_ = false;
    bool namedParameters_ = false;
};

}  // namespace kap::ado

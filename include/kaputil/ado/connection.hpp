#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <kaputil/ado/enumerations.hpp>
#include <kaputil/ado/error.hpp>
#include <kaputil/frame/by_ref.hpp>
#include <kaputil/frame/class_description.hpp>

namespace kap::ado {

class DriverError;
class Recordset;
class Session;
struct Result;

// One batch of a script file: what is sent at once.
struct ScriptBatch {
    String text;
    std::int32_t firstLine = 1;  // the line of the file on which the text begins
    std::int32_t count = 1;      // how many times it is run
};

// An open session with a database.
//
//     auto connection = kap::make<kap::ado::Connection>();
//     connection->Open(u"Provider=KapLocal;Data Source=azienda.db");
//     connection->Execute(u"UPDATE Clienti SET Localita = 'Bari' WHERE Codice = 12");
//
// The connection string is a list of `key=value` pairs separated by ';'. `Provider=KapLocal` is the
// embedded one-file database; its keys are
//
//     Data Source    the file, made when it is missing, or :memory: or :memory:NAME for a database
//                    that lives as long as this process has it open
//     Mode           ReadWrite (default) or Read
//     Lock Timeout   seconds to wait for another program's lock, 30 by default
//     Synchronous    Full (default: committed is on disk), Normal, Off
class Connection final : public DescribedObject {
public:
    Connection();
    ~Connection() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The string given to Open, or to be used by it. Raises 3705 when assigned while open.
    [[nodiscard]] String ConnectionString() const { return connectionString_; }
    void setConnectionString(const String& value);

    // Opens the database. Every argument may be left out: the string then is the property's.
    // Raises 3705 when it is open already, 3706 for an unknown provider, and the driver's errors.
    void Open(const String& connectionString = {}, const String& userId = {},
              const String& password = {}, std::int32_t options = -1);
    // Raises 3704 when it is not open. An open transaction is rolled back.
    void Close();
    [[nodiscard]] ObjectStateEnum State() const;

    // Runs a script. The result is the first statement's rows, or a closed recordset when it has
    // none; `recordsAffected` receives the number of rows that the statements wrote, as a Long.
    Ref<Recordset> Execute(const String& commandText,
                           ByRef<Variant> recordsAffected = Variant::missing(),
                           std::int32_t options = -1);

    // Runs a script and appends every statement's answer in order: its rows, or a closed recordset
    // that tells how many rows it wrote. When a statement fails, the answers of those before it are
    // there. C++ only.
    void executeAll(const String& script, std::vector<Ref<Recordset>>& answers);

    // Cuts the text of a script file at its GO lines, each of which may name a count ("GO 5").
    // Raises -2147217900 for a count that is not a whole number. C++ only.
    [[nodiscard]] std::vector<ScriptBatch> batchesOf(const String& script);

    // Transactions; the result of BeginTrans is the new nesting level.
    std::int32_t BeginTrans();
    void CommitTrans();
    void RollbackTrans();

    [[nodiscard]] Ref<ado::Errors> Errors() const { return errors_; }

    // Where the cursors of recordsets that Execute makes live: adUseServer by default.
    [[nodiscard]] CursorLocationEnum CursorLocation() const { return cursorLocation_; }
    void setCursorLocation(CursorLocationEnum value);

    // For the recordsets on this connection: the session, alive for as long as the connection is
    // open. Raises 3709 when it is not.
    [[nodiscard]] std::shared_ptr<Session> session() const;
    // Runs `work`; the errors of a driver go into Errors before they are raised.
    void reporting(const std::function<void()>& work);

private:
    void report(const DriverError& error);
    [[nodiscard]] Ref<Recordset> answer(Result result);

    String connectionString_;
    std::shared_ptr<Session> session_;
    Ref<ado::Errors> errors_;
    CursorLocationEnum cursorLocation_ = CursorLocationEnum::adUseServer;
};

}  // namespace kap::ado

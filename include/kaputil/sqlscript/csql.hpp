#pragma once

#include <utility>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/automation/variant.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/core/cerrore.hpp>
#include <kaputil/core/cproprieta.hpp>

namespace kap {

// Statements that are collected, sent to the database at once, and all happen or none.
//
//     auto sql = kap::make<kap::CSQL>();
//     sql->setActiveConnection(connection);
//     sql->Command(u"UPDATE Conti SET Saldo = Saldo - 50 WHERE Codice = 1", u"Addebito fallito");
//     sql->Command(u"UPDATE Conti SET Saldo = Saldo + 50 WHERE Codice = 2", u"Accredito fallito");
//     if (!sql->Execute()) {
//         show(sql->Errore()->MsgToString());   // the server's error, then the statement's message
//     }
//
// Every statement is followed by a test of the server's error number. The first that fails leads to
// the end of the script, which raises the statement's own message and rolls everything back.
//
// A fresh object has no connection: give it one with `ActiveConnection`, which stays the client's,
// or a connection string with `ConnectionString`; what that opens is closed when the object ends.
class KAPUTIL_EXPORT CSQL final : public DescribedObject {
public:
    CSQL();
    ~CSQL() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The parameters of `AddTmp`.
    [[nodiscard]] Ref<CProprieta> Parametri() const { return parameters_; }
    void setParametri(const Ref<CProprieta>& value) { parameters_ = value; }
    // What was collected so far. It may be assigned; running it does not empty it.
    [[nodiscard]] String SQLString() const { return script_; }
    void setSQLString(const String& value) { script_ = value; }
    // The outcome of the last call.
    [[nodiscard]] Ref<CErrore> Errore() const { return error_; }
    void setErrore(const Ref<CErrore>& value) { error_ = value; }

    // The connection string. Assigning closes the connection if it is open, also one that the
    // client gave, and opens that very connection with the new string; the object closes it when it
    // ends. Raises the database's errors; the connection is then closed.
    [[nodiscard]] String ConnectionString();
    void setConnectionString(const String& value);
    // The connection, which is shared; a new one that is not open when none was given. What was
    // assigned is never closed by this object, unless `ConnectionString` is assigned after it.
    [[nodiscard]] Ref<ado::Connection> ActiveConnection();
    void setActiveConnection(const Ref<ado::Connection>& value);

    // The whole script as it is sent to the server.
    [[nodiscard]] String SQL_Execute() const;

    // Sends the script in one call. False when it failed: nothing has happened then, the number in
    // `Errore` is 1, and its messages are those of the server in their order, last the message of
    // the failing statement. The object can be used again. Raises 3709 when the connection is not
    // open.
    bool Execute();

    // Appends a statement, which is not looked at, and gives back what was appended. The message is
    // raised when the statement fails, cut to 100 characters. It must hold no single quote, which
    // would end it: quotes are not doubled.
    String Command(const String& commandText, const String& messaggioErrore = u"");

    // Appends the copying of rows from one table into another without naming columns, and gives
    // back what was appended. `Parametri` says what to do:
    //
    //     FROM, TO         the tables; a name that begins with '#' is one of the connection's own
    //     WHERE            which rows, 1=1 when it is blank
    //     DELETE_FROM      SI: the rows are deleted in the source
    //     MSG_ERRORE       the message when it fails
    //     SELECT_OPTIONS   words behind SELECT, such as DISTINCT
    //     JOIN1 to JOIN50  join clauses; the first blank one ends them
    //     TABLE.COLUMN     the expression for a column of the destination
    //
    // A column of the destination gets its expression, or else the source's column of the same
    // name; one that has neither is left out, and AGGID always. WHERE and DELETE_FROM are written
    // into `Parametri` when they were blank. With a table missing, or no column to copy, nothing is
    // appended, the result is empty and `Errore` says why. Raises the database's errors when a
    // table's columns cannot be read.
    String AddTmp();

    // Forgets the statements, parameters and messages. The connection is kept.
    void Clear();

private:
    // The columns of a table, one a row, with the fields TABLE_NAME and COLUMN_NAME: those of a
    // permanent table through a connection of their own, those of a temporary table through the
    // connection that made it and alone sees it.
    [[nodiscard]] static Ref<ado::Recordset> ColonneTabella(const Ref<ado::Connection>& connessione,
                                                            const String& sTabella);
    // The columns to write, each with its expression.
    [[nodiscard]] std::vector<std::pair<String, String>> columnMap();
    void refuse(const char16_t* message) const;
    [[nodiscard]] bool failed() const;

    Ref<CProprieta> parameters_;
    String script_;
    Ref<CErrore> error_;
    Ref<ado::Connection> connection_;  // unset until it is needed
    bool closesConnection_ = false;
};

}  // namespace kap

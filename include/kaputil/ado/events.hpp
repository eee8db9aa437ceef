#pragma once

#include <cstdint>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/error.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

// The events of connections and recordsets. A sink has members of these names and arguments; it
// need not have all of them, nor derive from these classes, whose members do nothing:
//
//     class Watch final : public kap::ado::RecordsetEvents {
//         void WillMove(EventReasonEnum reason, ByRef<EventStatusEnum> adStatus,
//                       const Ref<Recordset>& recordset) override { ... }
//     };
//     const std::int32_t connection = recordset->connect(kap::make<Watch>());
//
// The Will... events come before something is done. A sink that sets adStatus to adStatusCancel
// keeps it from being done, unless adStatus was adStatusCantDeny: nobody else is asked, the
// ...Complete event tells the sinks with adStatusErrorsOccurred, and the caller gets -2147217842
// (3712 from Open and Execute of a connection and what runs a command). Any sink may set adStatus
// to adStatusUnwantedEvent: it is not told of that event again.
//
// What was done in the background (adAsyncConnect, adAsyncExecute, adAsyncFetch) is told on the
// client's own thread, when it next asks the object for anything, its State, say.
//
// In the ...Complete events adStatus is adStatusOK, or adStatusErrorsOccurred with the error that
// the caller gets in pError, which is unset otherwise.
namespace kap::ado {

class Command;

class KAPUTIL_EXPORT ConnectionEvents : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // A script has printed something, or the database has warned: the first such message. The
    // connection's Errors has all of them.
    virtual void InfoMessage(const Ref<Error>& pError, ByRef<EventStatusEnum> adStatus,
                             const Ref<Connection>& pConnection);
    virtual void BeginTransComplete(std::int32_t transactionLevel, const Ref<Error>& pError,
                                    ByRef<EventStatusEnum> adStatus,
                                    const Ref<Connection>& pConnection);
    virtual void CommitTransComplete(const Ref<Error>& pError, ByRef<EventStatusEnum> adStatus,
                                     const Ref<Connection>& pConnection);
    virtual void RollbackTransComplete(const Ref<Error>& pError, ByRef<EventStatusEnum> adStatus,
                                       const Ref<Connection>& pConnection);
    // A script, a table or a procedure is about to be run: by Execute of the connection, by a
    // command or by a recordset that is opened, which are unset otherwise. What is left in the
    // arguments passed by reference is what is done.
    virtual void WillExecute(ByRef<String> source, ByRef<CursorTypeEnum> cursorType,
                             ByRef<LockTypeEnum> lockType, ByRef<std::int32_t> options,
                             ByRef<EventStatusEnum> adStatus, const Ref<Command>& pCommand,
                             const Ref<Recordset>& pRecordset, const Ref<Connection>& pConnection);
    // It has been run, and wrote so many rows (-1: nothing counts them); pRecordset has the rows.
    virtual void ExecuteComplete(std::int32_t recordsAffected, const Ref<Error>& pError,
                                 ByRef<EventStatusEnum> adStatus, const Ref<Command>& pCommand,
                                 const Ref<Recordset>& pRecordset,
                                 const Ref<Connection>& pConnection);
    // The connection is about to be opened with what is left in the arguments.
    virtual void WillConnect(ByRef<String> connectionString, ByRef<String> userId,
                             ByRef<String> password, ByRef<std::int32_t> options,
                             ByRef<EventStatusEnum> adStatus, const Ref<Connection>& pConnection);
    // adStatus is adStatusCancel when a sink did not let it be opened.
    virtual void ConnectComplete(const Ref<Error>& pError, ByRef<EventStatusEnum> adStatus,
                                 const Ref<Connection>& pConnection);
    virtual void Disconnect(ByRef<EventStatusEnum> adStatus, const Ref<Connection>& pConnection);
};

class KAPUTIL_EXPORT RecordsetEvents : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Fields of the current record (an array of cFields of them) are about to be assigned.
    virtual void WillChangeField(std::int32_t cFields, const Variant& fields,
                                 ByRef<EventStatusEnum> adStatus, const Ref<Recordset>& pRecordset);
    virtual void FieldChangeComplete(std::int32_t cFields, const Variant& fields,
                                     const Ref<Error>& pError, ByRef<EventStatusEnum> adStatus,
                                     const Ref<Recordset>& pRecordset);
    // So many records are about to be added, written or deleted, or their changes forgotten; or one
    // gets its first change (adRsnFirstChange).
    virtual void WillChangeRecord(EventReasonEnum adReason, std::int32_t cRecords,
                                  ByRef<EventStatusEnum> adStatus,
                                  const Ref<Recordset>& pRecordset);
    virtual void RecordChangeComplete(EventReasonEnum adReason, std::int32_t cRecords,
                                      const Ref<Error>& pError, ByRef<EventStatusEnum> adStatus,
                                      const Ref<Recordset>& pRecordset);
    // The recordset is about to be queried again (adRsnRequery), read again (adRsnResynch) or
    // closed (adRsnClose, which cannot be denied). Opening asks only the connection's sinks; those
    // of the recordset are told when it is open, of its records and of the first one
    // (adRsnRequery).
    virtual void WillChangeRecordset(EventReasonEnum adReason, ByRef<EventStatusEnum> adStatus,
                                     const Ref<Recordset>& pRecordset);
    virtual void RecordsetChangeComplete(EventReasonEnum adReason, const Ref<Error>& pError,
                                         ByRef<EventStatusEnum> adStatus,
                                         const Ref<Recordset>& pRecordset);
    // Another record is about to become the current one.
    virtual void WillMove(EventReasonEnum adReason, ByRef<EventStatusEnum> adStatus,
                          const Ref<Recordset>& pRecordset);
    virtual void MoveComplete(EventReasonEnum adReason, const Ref<Error>& pError,
                              ByRef<EventStatusEnum> adStatus, const Ref<Recordset>& pRecordset);
    // A movement has gone past the last record. A sink may add records, say so in fMoreData and
    // move on to them.
    virtual void EndOfRecordset(ByRef<bool> fMoreData, ByRef<EventStatusEnum> adStatus,
                                const Ref<Recordset>& pRecordset);
    // Of rows that are fetched in the background (adAsyncFetch) so many have come. How many there
    // are going to be is not known before they are all here: maxProgress is as many.
    virtual void FetchProgress(std::int32_t progress, std::int32_t maxProgress,
                               ByRef<EventStatusEnum> adStatus, const Ref<Recordset>& pRecordset);
    // They are all here, or the others do not come.
    virtual void FetchComplete(const Ref<Error>& pError, ByRef<EventStatusEnum> adStatus,
                               const Ref<Recordset>& pRecordset);
};

}  // namespace kap::ado

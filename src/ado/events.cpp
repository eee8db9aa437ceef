// The interfaces of events: their description, and members that do nothing, for sinks that want
// only some of them.
#include <kaputil/ado/events.hpp>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/recordset.hpp>

#include "automation/class_builder.hpp"

namespace kap::ado {

// Interfaces have no class of their own: the identity that stands for one is the interface's.
const ClassDescription& ConnectionEvents::classDescription() {
    static const ClassDescription description =
        ClassBuilder<ConnectionEvents>(u"ConnectionEvents", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b31",
                                       u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b31")
            .instancing(Instancing::NotCreatable)
            .method<&ConnectionEvents::InfoMessage>(u"InfoMessage",
                                                    {u"pError", u"adStatus", u"pConnection"})
            .method<&ConnectionEvents::BeginTransComplete>(
                u"BeginTransComplete",
                {u"TransactionLevel", u"pError", u"adStatus", u"pConnection"})
            .method<&ConnectionEvents::RollbackTransComplete>(
                u"RollbackTransComplete", {u"pError", u"adStatus", u"pConnection"})
            .method<&ConnectionEvents::CommitTransComplete>(
                u"CommitTransComplete", {u"pError", u"adStatus", u"pConnection"})
            .method<&ConnectionEvents::WillExecute>(
                u"WillExecute", {u"Source", u"CursorType", u"LockType", u"Options", u"adStatus",
                                 u"pCommand", u"pRecordset", u"pConnection"})
            .method<&ConnectionEvents::ExecuteComplete>(
                u"ExecuteComplete", {u"RecordsAffected", u"pError", u"adStatus", u"pCommand",
                                     u"pRecordset", u"pConnection"})
            .method<&ConnectionEvents::WillConnect>(
                u"WillConnect", {u"ConnectionString", u"UserID", u"Password", u"Options",
                                 u"adStatus", u"pConnection"})
            .method<&ConnectionEvents::ConnectComplete>(u"ConnectComplete",
                                                        {u"pError", u"adStatus", u"pConnection"})
            .method<&ConnectionEvents::Disconnect>(u"Disconnect", {u"adStatus", u"pConnection"})
            .build();
    return description;
}

const ClassDescription& RecordsetEvents::classDescription() {
    static const ClassDescription description =
        ClassBuilder<RecordsetEvents>(u"RecordsetEvents", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b32",
                                      u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b32")
            .instancing(Instancing::NotCreatable)
            .method<&RecordsetEvents::WillChangeField>(
                u"WillChangeField", {u"cFields", u"Fields", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::FieldChangeComplete>(
                u"FieldChangeComplete",
                {u"cFields", u"Fields", u"pError", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::WillChangeRecord>(
                u"WillChangeRecord", {u"adReason", u"cRecords", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::RecordChangeComplete>(
                u"RecordChangeComplete",
                {u"adReason", u"cRecords", u"pError", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::WillChangeRecordset>(
                u"WillChangeRecordset", {u"adReason", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::RecordsetChangeComplete>(
                u"RecordsetChangeComplete", {u"adReason", u"pError", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::WillMove>(u"WillMove",
                                                {u"adReason", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::MoveComplete>(
                u"MoveComplete", {u"adReason", u"pError", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::EndOfRecordset>(u"EndOfRecordset",
                                                      {u"fMoreData", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::FetchProgress>(
                u"FetchProgress", {u"Progress", u"MaxProgress", u"adStatus", u"pRecordset"})
            .method<&RecordsetEvents::FetchComplete>(u"FetchComplete",
                                                     {u"pError", u"adStatus", u"pRecordset"})
            .build();
    return description;
}

void ConnectionEvents::InfoMessage(const Ref<Error>& /*pError*/,
                                   ByRef<EventStatusEnum> /*adStatus*/,
                                   const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::BeginTransComplete(std::int32_t /*TransactionLevel*/,
                                          const Ref<Error>& /*pError*/,
                                          ByRef<EventStatusEnum> /*adStatus*/,
                                          const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::CommitTransComplete(const Ref<Error>& /*pError*/,
                                           ByRef<EventStatusEnum> /*adStatus*/,
                                           const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::RollbackTransComplete(const Ref<Error>& /*pError*/,
                                             ByRef<EventStatusEnum> /*adStatus*/,
                                             const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::WillExecute(ByRef<String> /*Source*/, ByRef<CursorTypeEnum> /*CursorType*/,
                                   ByRef<LockTypeEnum> /*LockType*/,
                                   ByRef<std::int32_t> /*Options*/,
                                   ByRef<EventStatusEnum> /*adStatus*/,
                                   const Ref<Command>& /*pCommand*/,
                                   const Ref<Recordset>& /*pRecordset*/,
                                   const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::ExecuteComplete(std::int32_t /*RecordsAffected*/,
                                       const Ref<Error>& /*pError*/,
                                       ByRef<EventStatusEnum> /*adStatus*/,
                                       const Ref<Command>& /*pCommand*/,
                                       const Ref<Recordset>& /*pRecordset*/,
                                       const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::WillConnect(ByRef<String> /*ConnectionString*/, ByRef<String> /*UserID*/,
                                   ByRef<String> /*Password*/, ByRef<std::int32_t> /*Options*/,
                                   ByRef<EventStatusEnum> /*adStatus*/,
                                   const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::ConnectComplete(const Ref<Error>& /*pError*/,
                                       ByRef<EventStatusEnum> /*adStatus*/,
                                       const Ref<Connection>& /*pConnection*/) {}

void ConnectionEvents::Disconnect(ByRef<EventStatusEnum> /*adStatus*/,
                                  const Ref<Connection>& /*pConnection*/) {}

void RecordsetEvents::WillChangeField(std::int32_t /*cFields*/, const Variant& /*Fields*/,
                                      ByRef<EventStatusEnum> /*adStatus*/,
                                      const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::FieldChangeComplete(std::int32_t /*cFields*/, const Variant& /*Fields*/,
                                          const Ref<Error>& /*pError*/,
                                          ByRef<EventStatusEnum> /*adStatus*/,
                                          const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::WillChangeRecord(EventReasonEnum /*adReason*/, std::int32_t /*cRecords*/,
                                       ByRef<EventStatusEnum> /*adStatus*/,
                                       const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::RecordChangeComplete(EventReasonEnum /*adReason*/, std::int32_t /*cRecords*/,
                                           const Ref<Error>& /*pError*/,
                                           ByRef<EventStatusEnum> /*adStatus*/,
                                           const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::WillChangeRecordset(EventReasonEnum /*adReason*/,
                                          ByRef<EventStatusEnum> /*adStatus*/,
                                          const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::RecordsetChangeComplete(EventReasonEnum /*adReason*/,
                                              const Ref<Error>& /*pError*/,
                                              ByRef<EventStatusEnum> /*adStatus*/,
                                              const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::WillMove(EventReasonEnum /*adReason*/, ByRef<EventStatusEnum> /*adStatus*/,
                               const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::MoveComplete(EventReasonEnum /*adReason*/, const Ref<Error>& /*pError*/,
                                   ByRef<EventStatusEnum> /*adStatus*/,
                                   const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::EndOfRecordset(ByRef<bool> /*fMoreData*/, ByRef<EventStatusEnum> /*adStatus*/,
                                     const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::FetchProgress(std::int32_t /*Progress*/, std::int32_t /*MaxProgress*/,
                                    ByRef<EventStatusEnum> /*adStatus*/,
                                    const Ref<Recordset>& /*pRecordset*/) {}

void RecordsetEvents::FetchComplete(const Ref<Error>& /*pError*/,
                                    ByRef<EventStatusEnum> /*adStatus*/,
                                    const Ref<Recordset>& /*pRecordset*/) {}

}  // namespace kap::ado

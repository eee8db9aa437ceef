#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include <kaputil/ado/events.hpp>

#include "ado/recordset_fixture.hpp"

// Sinks that note what they are told.
namespace kap::ado::events_test {

inline std::string statusText(EventStatusEnum status) {
    switch (status) {
        case EventStatusEnum::adStatusOK:
            return "";
        case EventStatusEnum::adStatusErrorsOccurred:
            return " failed";
        case EventStatusEnum::adStatusCantDeny:
            return " cannot be denied";
        case EventStatusEnum::adStatusCancel:
            return " cancelled";
        case EventStatusEnum::adStatusUnwantedEvent:
            break;
    }
    return " ?";
}

inline std::string text(std::int32_t number) {
    return std::to_string(number);
}

// What sinks were told, one line an event, and how one of them answers.
struct Told {
    std::vector<std::string> lines;
    std::string answered;  // the beginning of the line that gets `answer`
    EventStatusEnum answer = EventStatusEnum::adStatusOK;

    void add(const std::string& line, ByRef<EventStatusEnum> status, const Ref<Error>& error = {}) {
        lines.push_back(line + statusText(*status) +
                        (error ? " " + text(error->Number()) : std::string()));
        if (!answered.empty() && line.starts_with(answered)) {
            *status = answer;
        }
    }
    std::vector<std::string> taken() { return std::exchange(lines, {}); }
};

class RecordsetSink final : public RecordsetEvents {
public:
    explicit RecordsetSink(Told& told) : told_(told) {}

    void WillChangeField(std::int32_t count, const Variant& fields, ByRef<EventStatusEnum> status,
                         const Ref<Recordset>& /*recordset*/) override {
        told_.add("will assign " + text(count) + " " + nameOf(fields), status);
    }
    void FieldChangeComplete(std::int32_t count, const Variant& fields, const Ref<Error>& error,
                             ByRef<EventStatusEnum> status,
                             const Ref<Recordset>& /*recordset*/) override {
        told_.add("assigned " + text(count) + " " + nameOf(fields), status, error);
    }
    void WillChangeRecord(EventReasonEnum reason, std::int32_t count, ByRef<EventStatusEnum> status,
                          const Ref<Recordset>& /*recordset*/) override {
        told_.add("will change " + of(reason) + " x" + text(count), status);
    }
    void RecordChangeComplete(EventReasonEnum reason, std::int32_t count, const Ref<Error>& error,
                              ByRef<EventStatusEnum> status,
                              const Ref<Recordset>& /*recordset*/) override {
        told_.add("changed " + of(reason) + " x" + text(count), status, error);
    }
    void WillChangeRecordset(EventReasonEnum reason, ByRef<EventStatusEnum> status,
                             const Ref<Recordset>& /*recordset*/) override {
        told_.add("will change all " + of(reason), status);
    }
    void RecordsetChangeComplete(EventReasonEnum reason, const Ref<Error>& error,
                                 ByRef<EventStatusEnum> status,
                                 const Ref<Recordset>& /*recordset*/) override {
        told_.add("changed all " + of(reason), status, error);
    }
    void WillMove(EventReasonEnum reason, ByRef<EventStatusEnum> status,
                  const Ref<Recordset>& /*recordset*/) override {
        told_.add("will move " + of(reason), status);
    }
    void MoveComplete(EventReasonEnum reason, const Ref<Error>& error,
                      ByRef<EventStatusEnum> status, const Ref<Recordset>& recordset) override {
        const bool onRecord = recordset->State() == ObjectStateEnum::adStateOpen &&
                              !recordset->Eof() && !recordset->Bof();
        told_.add("moved " + of(reason) +
                      (onRecord ? " to " + text(recordset->AbsolutePosition()) : std::string()),
                  status, error);
    }
    void EndOfRecordset(ByRef<bool> moreData, ByRef<EventStatusEnum> status,
                        const Ref<Recordset>& /*recordset*/) override {
        told_.add(std::string("end") + (*moreData ? " with more" : ""), status);
    }
    void FetchComplete(const Ref<Error>& error, ByRef<EventStatusEnum> status,
                       const Ref<Recordset>& /*recordset*/) override {
        told_.add("all fetched", status, error);
    }

private:
    static std::string of(EventReasonEnum reason) {
        static const std::array<const char*, 16> kNames = {
            "",           "AddNew",   "Delete",       "Update",  "UndoUpdate", "UndoAddNew",
            "UndoDelete", "Requery",  "Resynch",      "Close",   "Move",       "FirstChange",
            "MoveFirst",  "MoveNext", "MovePrevious", "MoveLast"};
        return kNames.at(static_cast<std::size_t>(reason));
    }
    static std::string nameOf(const Variant& fields) {
        const auto& array = fields.as<Array>();
        return dynamic_cast<Field&>(*array.at(array.lowerBound()).as<Ref<Object>>()).Name().utf8();
    }

    Told& told_;
};

class ConnectionSink final : public ConnectionEvents {
public:
    explicit ConnectionSink(Told& told) : told_(told) {}

    void InfoMessage(const Ref<Error>& error, ByRef<EventStatusEnum> status,
                     const Ref<Connection>& /*connection*/) override {
        told_.add("says " + error->Description().utf8(), status);
    }
    void BeginTransComplete(std::int32_t level, const Ref<Error>& error,
                            ByRef<EventStatusEnum> status,
                            const Ref<Connection>& /*connection*/) override {
        told_.add("begun " + text(level), status, error);
    }
    void CommitTransComplete(const Ref<Error>& error, ByRef<EventStatusEnum> status,
                             const Ref<Connection>& /*connection*/) override {
        told_.add("committed", status, error);
    }
    void RollbackTransComplete(const Ref<Error>& error, ByRef<EventStatusEnum> status,
                               const Ref<Connection>& /*connection*/) override {
        told_.add("undone", status, error);
    }
    void WillExecute(ByRef<String> source, ByRef<CursorTypeEnum> /*cursorType*/,
                     ByRef<LockTypeEnum> /*lockType*/, ByRef<std::int32_t> /*options*/,
                     ByRef<EventStatusEnum> status, const Ref<Command>& command,
                     const Ref<Recordset>& recordset,
                     const Ref<Connection>& /*connection*/) override {
        told_.add("will run " + source->utf8() + (command ? " of a command" : "") +
                      (recordset ? " for a recordset" : ""),
                  status);
        if (!replacement.empty()) {
            *source = replacement;
        }
    }
    void ExecuteComplete(std::int32_t rows, const Ref<Error>& error, ByRef<EventStatusEnum> status,
                         const Ref<Command>& /*command*/, const Ref<Recordset>& recordset,
                         const Ref<Connection>& /*connection*/) override {
        told_.add("run " + text(rows) + (recordset ? " with a recordset" : ""), status, error);
    }
    void WillConnect(ByRef<String> connectionString, ByRef<String> userId,
                     ByRef<String> /*password*/, ByRef<std::int32_t> /*options*/,
                     ByRef<EventStatusEnum> status, const Ref<Connection>& connection) override {
        told_.add("will open " + connectionString->utf8() + " as " + userId->utf8(), status);
        if (!replacement.empty()) {
            *connectionString = replacement;
        }
        EXPECT_EQ(connection->State(), ObjectStateEnum::adStateClosed);
    }
    void ConnectComplete(const Ref<Error>& error, ByRef<EventStatusEnum> status,
                         const Ref<Connection>& /*connection*/) override {
        told_.add("opened", status, error);
    }
    void Disconnect(ByRef<EventStatusEnum> status, const Ref<Connection>& connection) override {
        told_.add("closed", status);
        EXPECT_EQ(connection->State(), ObjectStateEnum::adStateClosed);
    }

    String replacement;

private:
    Told& told_;
};

using Lines = std::vector<std::string>;

class EventsTest : public RecordsetTest {
protected:
    Ref<Recordset> watched() {
        auto rows = all();
        rows->connect(make<RecordsetSink>(told_));
        return rows;
    }

    std::int32_t watchConnection() {
        sink_ = make<ConnectionSink>(told_);
        return connection_->connect(sink_);
    }

    template <class Action>
    std::int32_t failureOf(Action action) {
        return test::raisedBy([&] {
            action();
            return 0;
        });
    }

    Told told_;
    Ref<ConnectionSink> sink_;
};

}  // namespace kap::ado::events_test

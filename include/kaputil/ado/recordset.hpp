#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/enumerations.hpp>
#include <kaputil/ado/field.hpp>
#include <kaputil/frame/class_description.hpp>

namespace kap::ado {

class RowCursor;

// The rows of a query, one of them current, that can be read, changed and written back.
//
// The rows are fetched whole when the recordset is opened. Changes of fields are pending until
// Update writes them (moving to another record does so too); the database row is located by its
// key and by what it held when it was read, and if another user changed it meanwhile Update raises
// -2147217864 and writes nothing. With a server cursor on a table that has a row-version column the
// version must be the same too.
//
// Setting ActiveConnection to an unset object disconnects the recordset: it keeps its rows, and
// changes stay in it.
class Recordset final : public DescribedObject {
public:
    Recordset();
    ~Recordset() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // Opens `source` (a query in the dialect, or a table's name with adCmdTable in `options`) on a
    // connection object or a connection string. What is left out is taken from the properties.
    // Raises 3705 when it is open already, 3709 without an open connection, 3001 for an option that
    // does not exist, and the database's errors.
    void Open(const Variant& source = Variant::missing(),
              const Variant& activeConnection = Variant::missing(),
              CursorTypeEnum cursorType = CursorTypeEnum::adOpenUnspecified,
              LockTypeEnum lockType = LockTypeEnum::adLockUnspecified, std::int32_t options = -1);
    // Raises 3704 when it is closed, 3219 while a record is being edited.
    void Close();
    // Runs the same query again.
    void Requery(std::int32_t options = -1);
    [[nodiscard]] ObjectStateEnum State() const;

    // The connection object, or an unset one.
    [[nodiscard]] Variant ActiveConnection() const;
    void setActiveConnection(const Variant& value);
    [[nodiscard]] Variant Source() const { return source_; }
    void setSource(const Variant& value);
    [[nodiscard]] CursorTypeEnum CursorType() const { return cursorType_; }
    void setCursorType(CursorTypeEnum value);
    [[nodiscard]] LockTypeEnum LockType() const { return lockType_; }
    void setLockType(LockTypeEnum value);
    [[nodiscard]] CursorLocationEnum CursorLocation() const { return cursorLocation_; }
    void setCursorLocation(CursorLocationEnum value);

    [[nodiscard]] bool Bof() const;  // late-bound BOF
    [[nodiscard]] bool Eof() const;  // late-bound EOF
    [[nodiscard]] std::int32_t RecordCount() const;
    // The current record's position from 1, or a value of PositionEnum.
    [[nodiscard]] std::int32_t AbsolutePosition() const;
    [[nodiscard]] EditModeEnum EditMode() const;

    // Movements save a pending change first. They raise 3021 when they need a record and there is
    // none.
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    void Move(std::int32_t numRecords, const Variant& start = Variant::missing());

    [[nodiscard]] Ref<ado::Fields> Fields() const;

    // Begins a new record; with names and values (texts, or arrays of the same length) writes it at
    // once.
    void AddNew(const Variant& fieldList = Variant::missing(),
                const Variant& values = Variant::missing());
    // Writes the pending record, after assigning the fields given.
    void Update(const Variant& fields = Variant::missing(),
                const Variant& values = Variant::missing());
    void CancelUpdate();
    // Deletes the current record from the database. It stays current, unreadable, until the next
    // movement.
    void Delete(AffectEnum affectRecords = AffectEnum::adAffectCurrent);
    // Reads the current record again (adAffectCurrent) or every record (the default).
    void Resync(AffectEnum affectRecords = AffectEnum::adAffectAll,
                ResyncEnum resyncValues = ResyncEnum::adResyncAllValues);

    // Makes the Nulls of one field read as 0 or empty text in every record. No record becomes
    // pending: the database keeps its Nulls until a field is assigned.
    void replaceNulls(std::size_t field);

    // The rows that the statement wrote, when it was one that writes.
    [[nodiscard]] std::optional<std::int64_t> rowsAffected() const { return rowsAffected_; }

    // The bytes that the rows take in memory.
    [[nodiscard]] std::size_t rowMemory() const;

private:
    friend class Connection;
    void adopt(std::shared_ptr<RowCursor> cursor, Ref<Connection> connection);
    [[nodiscard]] RowCursor& opened() const;
    void requireOpen() const;
    void requireClosed() const;
    [[nodiscard]] String commandText(std::int32_t options) const;
    void run(const String& text);
    void assignAll(const Variant& names, const Variant& values);
    void savePending();
    void save();

    std::shared_ptr<RowCursor> cursor_;  // unset: closed
    Ref<Connection> connection_;
    Ref<ado::Fields> fields_;
    Variant source_ = u"";
    CursorTypeEnum cursorType_ = CursorTypeEnum::adOpenForwardOnly;
    LockTypeEnum lockType_ = LockTypeEnum::adLockReadOnly;
    CursorLocationEnum cursorLocation_ = CursorLocationEnum::adUseServer;
    std::int32_t options_ = -1;
    std::optional<std::int64_t> rowsAffected_;
};

}  // namespace kap::ado

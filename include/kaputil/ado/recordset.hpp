#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/field.hpp>
#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/class_description.hpp>
#include <kaputil/automation/event_source.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

class Command;
class FieldNotices;
struct Execution;
struct LaterExecution;
struct Reply;
struct Request;
class ResultSource;
class RowCursor;
class RowTable;

// The rows of a query, one of them current, that can be read, changed and written back.
//
// Changes of fields are pending until Update writes them (moving to another record does so too);
// the database row is located by its key and by what it held when it was read, and if another user
// changed it meanwhile Update raises -2147217864 and writes nothing. With a server cursor on a
// table that has a row-version column the version must be the same too.
//
// With adLockBatchOptimistic, Update keeps the change in the recordset until UpdateBatch writes all
// that wait. Setting ActiveConnection to an unset object disconnects the recordset: it keeps its
// rows, and changes stay in it; a batch recordset can be connected again and written then.
//
// A recordset with a server cursor that only goes forward (the default, and what Execute gives)
// does not go back, does not count its records (RecordCount is -1) and has no bookmarks. When it is
// read-only, too, it has the first record as soon as the database gives it, and keeps a window of
// records, however many there are; MoveFirst, Filter and Save run the query again once the first
// record has left the window. Every other kind takes all of its records in and does all that. A
// client cursor is always static; a dynamic one becomes a keyset.
//
// A recordset can also be made by hand: see Fields.
//
// Its events are those of RecordsetEvents, in <kaputil/ado/events.hpp>.
class KAPUTIL_EXPORT Recordset final : public DescribedObject, public EventSource {
public:
    Recordset();
    ~Recordset() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] const ClassDescription& events() const override;

    // --- Opening

    // Opens `source` (a query in the dialect; the name of a file that a recordset was saved to,
    // with adCmdFile in `options`, Provider=MSPersist or no connection; a Stream that holds one; a
    // table's or procedure's name with adCmdTable or adCmdStoredProc in `options`; or a Command) on
    // a connection object or a connection string. What is left out is taken from the properties. A
    // script's first rows are shown; what follows is for NextRecordset. A recordset without source
    // to which fields were appended opens empty. Raises 3705 when it is open already, 3709 without
    // an open connection, 3002 and 3003 for a file that is none, 3001 for an option that does not
    // exist and for a connection beside a Command, which has its own, and the database's errors.
    void Open(const Variant& source = Variant::missing(),
              const Variant& activeConnection = Variant::missing(),
              CursorTypeEnum cursorType = CursorTypeEnum::adOpenUnspecified,
              LockTypeEnum lockType = LockTypeEnum::adLockUnspecified, std::int32_t options = -1);
    // Raises 3704 when it is closed, 3219 while a record is being edited. Changes that wait for
    // UpdateBatch are lost.
    void Close();
    // Writes the records that are shown, and what waits for UpdateBatch of them, to a file or into
    // a Stream, from which a recordset is opened again, also by other programs. Without a
    // destination it is the file that was saved last. The current record is the first one
    // afterwards. Raises 3251 for adPersistADTG, the binary form, which is the default and is not
    // written; 58 for a file that is there already, unless it is saved there again; 3001 without a
    // destination.
    void Save(const Variant& destination = Variant::missing(),
              PersistFormatEnum persistFormat = PersistFormatEnum::adPersistADTG);
    // Runs the same query again; filter and order are forgotten. Raises 3219 while a record is
    // being edited.
    void Requery(std::int32_t options = -1);
    // The next answer of the script: its rows, or a closed recordset for a statement that wrote
    // rows, which `recordsAffected` then tells (a Long); unset when there is none left.
    Ref<Recordset> NextRecordset(ByRef<Variant> recordsAffected = Variant::missing());
    // Another recordset on the same records, with a position, filter and order of its own, on the
    // first record; their bookmarks are the same, and what one changes the other sees. With
    // adLockReadOnly it cannot change them. Raises 3251 for a cursor that only goes forward.
    [[nodiscard]] Ref<Recordset> Clone(LockTypeEnum lockType = LockTypeEnum::adLockUnspecified);
    // That of the connection, which ends what another thread runs.
    void Cancel() const;
    [[nodiscard]] ObjectStateEnum State() const;

    // The connection object, or an unset one.
    [[nodiscard]] Variant ActiveConnection() const;
    void setActiveConnection(const Variant& value);
    // The Command that was opened, or an unset object.
    [[nodiscard]] Variant ActiveCommand() const;
    // The text of the query.
    [[nodiscard]] Variant Source() const;
    void setSource(const Variant& value);
    [[nodiscard]] CursorTypeEnum CursorType() const { return cursorType_; }
    void setCursorType(CursorTypeEnum value);
    [[nodiscard]] LockTypeEnum LockType() const { return lockType_; }
    void setLockType(LockTypeEnum value);
    [[nodiscard]] CursorLocationEnum CursorLocation() const { return cursorLocation_; }
    void setCursorLocation(CursorLocationEnum value);
    // The most records to fetch; 0, the default, is no limit. Raises 3705 when assigned while open.
    [[nodiscard]] std::int32_t MaxRecords() const { return maxRecords_; }
    void setMaxRecords(std::int32_t value);
    // How many records a client keeps at hand and which ones are sent back. Every record is at hand
    // and only changes are ever written, so these are kept for who asks, and change nothing.
    [[nodiscard]] std::int32_t CacheSize() const { return cacheSize_; }
    void setCacheSize(std::int32_t value);
    [[nodiscard]] MarshalOptionsEnum MarshalOptions() const { return marshalOptions_; }
    void setMarshalOptions(MarshalOptionsEnum value);
    // Whether a change shows in a parent's records at once: kept for who asks, there are none.
    [[nodiscard]] bool StayInSync() const { return stayInSync_; }
    void setStayInSync(bool value) { stayInSync_ = value; }
    // Records come from queries and files, not from another object: both are empty, and assigning
    // raises 3251.
    [[nodiscard]] Variant DataSource() const { return Ref<Object>(); }
    void setDataSource(const Variant& value);
    [[nodiscard]] String DataMember() const { return {}; }
    void setDataMember(const String& value);
    // No driver opens a table by an index: Index is empty, and assigning it and Seek raise 3251.
    [[nodiscard]] String Index() const { return {}; }
    void setIndex(const String& value);
    void Seek(const Variant& keyValues, SeekEnum seekOption = SeekEnum::adSeekFirstEQ);
    // "Update Criteria", "Update Resync", "Unique Table", "Fetch Backwards" and others that
    // providers have.
    [[nodiscard]] Ref<ado::Properties> Properties();
    // Whether the recordset can do something.
    [[nodiscard]] bool Supports(CursorOptionEnum option) const;

    // --- Position

    [[nodiscard]] bool Bof() const;  // late-bound BOF
    [[nodiscard]] bool Eof() const;  // late-bound EOF
    // The records that the filter shows; -1 for a cursor that only goes forward.
    [[nodiscard]] std::int32_t RecordCount() const;
    // The current record's position from 1, or a value of PositionEnum. Assigning moves there and
    // raises 3001 outside the records.
    [[nodiscard]] std::int32_t AbsolutePosition() const;
    void setAbsolutePosition(std::int32_t value);
    // The same in pages of PageSize records (10 by default). Assigning moves to the first record of
    // the page.
    [[nodiscard]] std::int32_t AbsolutePage() const;
    void setAbsolutePage(std::int32_t value);
    [[nodiscard]] std::int32_t PageSize() const { return pageSize_; }
    void setPageSize(std::int32_t value);
    [[nodiscard]] std::int32_t PageCount() const;
    // A value that stands for the current record, in this recordset and its clones. Assigning moves
    // there and raises -2147217906 when the record is not shown.
    [[nodiscard]] Variant Bookmark() const;
    void setBookmark(const Variant& value);
    // How the records of two bookmarks stand to each other.
    [[nodiscard]] CompareEnum CompareBookmarks(const Variant& bookmark1,
                                               const Variant& bookmark2) const;

    // Movements save a pending change first. They raise 3021 when they need a record and there is
    // none, -2147217884 when a cursor that only goes forward would have to go back.
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    // By a number of records, from the current one, from the first or last (a Long of
    // BookmarkEnum), or from a bookmark.
    void Move(std::int32_t numRecords, const Variant& start = Variant::missing());

    // Moves to the next record that meets `criteria`, one comparison `name op value` with op one of
    // = <> < > <= >= LIKE; to EOF (searching backward, to BOF) when there is none. The search
    // begins at the current record or at `start`, after passing over `skipRecords`. Raises 3021
    // without a current record, 3001 for criteria that cannot be read, 3265 for an unknown column.
    void Find(const String& criteria, std::int32_t skipRecords = 0,
              SearchDirectionEnum searchDirection = SearchDirectionEnum::adSearchForward,
              const Variant& start = Variant::missing());
    // Which records are shown: comparisons joined by AND and OR, with parentheses; an array of
    // bookmarks; a value of FilterGroupEnum; empty text or 0 for all. Assigning moves to the first
    // of them. A record that a change takes out of the filter stays current until the next
    // movement.
    //
    // In criteria a text stands in single quotes, a quote in it doubled; a date between # as
    // year-month-day or month/day/year; Null is only equal (=) or not (<>). Texts are compared
    // without regard to case; in LIKE, `*` and `%` stand for any characters.
    [[nodiscard]] Variant Filter() const { return filter_; }
    void setFilter(const Variant& value);
    // The order of the records: column names with commas between, each followed by ASC or DESC if
    // wanted; empty text for the query's own. Assigning moves to the first record. Null comes first
    // in ascending order. A record that is changed keeps its place until Sort is assigned again.
    [[nodiscard]] String Sort() const { return sort_; }
    void setSort(const String& value);

    // --- Reading

    [[nodiscard]] Ref<ado::Fields> Fields() const { return fields_; }
    // The value of a field, as Fields(index).Value.
    [[nodiscard]] Variant Collect(const Variant& index) const;
    void setCollect(const Variant& index, const Variant& value);
    // The values of records from the current one (or `start`) on, as an array with the fields in
    // the first dimension and the records in the second, both from 0; moves behind them. `rows` -1
    // is all; `fields` names or numbers one field, or several in an array. Raises 3021 at EOF.
    [[nodiscard]] Variant GetRows(std::int32_t rows = -1, const Variant& start = Variant::missing(),
                                  const Variant& fields = Variant::missing());
    // The same as a text, the values as the user writes them.
    [[nodiscard]] String GetString(StringFormatEnum stringFormat = StringFormatEnum::adClipString,
                                   std::int32_t numRows = -1, const String& columnDelimiter = u"\t",
                                   const String& rowDelimiter = u"\r",
                                   const String& nullExpr = u"");

    // --- Writing

    [[nodiscard]] EditModeEnum EditMode() const;
    // Bits of RecordStatusEnum: whether the record waits for UpdateBatch, and why that failed.
    [[nodiscard]] std::int32_t Status() const;
    // Begins a new record; with names and values (texts, or arrays of the same length) writes it at
    // once.
    void AddNew(const Variant& fieldList = Variant::missing(),
                const Variant& values = Variant::missing());
    // Writes the pending record, after assigning the fields given.
    void Update(const Variant& fields = Variant::missing(),
                const Variant& values = Variant::missing());
    void CancelUpdate();
    // Deletes the current record (the default), those that the filter shows (adAffectGroup), or all
    // that are shown. A deleted record stays current, unreadable, until the next movement.
    void Delete(AffectEnum affectRecords = AffectEnum::adAffectCurrent);
    // Writes the changes that wait: of the current record, of those that the filter shows
    // (adAffectGroup), or all. Every one is tried; what fails keeps waiting with its Status, each
    // failure is in the connection's Errors, and the first one is raised. Raises 3251 unless
    // LockType is adLockBatchOptimistic, 3709 when disconnected.
    void UpdateBatch(AffectEnum affectRecords = AffectEnum::adAffectAll);
    // Forgets the changes that wait.
    void CancelBatch(AffectEnum affectRecords = AffectEnum::adAffectAll);
    // Reads the current record again (adAffectCurrent), those that the filter shows, or all (the
    // default). adResyncAllValues forgets their changes; adResyncUnderlyingValues keeps them and
    // only takes note of what the database holds, which the next update then expects to find.
    // Raises -2147217885 for a record that is gone from the database.
    void Resync(AffectEnum affectRecords = AffectEnum::adAffectAll,
                ResyncEnum resyncValues = ResyncEnum::adResyncAllValues);

    // Makes the Nulls of one field read as 0 or empty text in every record. No record becomes
    // pending: the database keeps its Nulls until a field is assigned.
    void replaceNulls(std::size_t field);

    // The rows that the statement wrote, when it was one that writes.
    [[nodiscard]] std::optional<std::int64_t> rowsAffected() const { return rowsAffected_; }

    // The bytes that the rows take in memory.
    [[nodiscard]] std::size_t rowMemory() const;

    // Whether its records are read once, from the first to the last: a server cursor that only goes
    // forward and is read-only.
    [[nodiscard]] bool isReadOnce() const;
    // Takes all records into memory. C++ only.
    void fetchAll();
    // Whether records are still to come from the database, and doing what may fetch them: what
    // fails then stands among the connection's errors, too. For the library's own movements.
    [[nodiscard]] bool fetches() const;
    void reportingFetch(const std::function<void()>& work);
    // Takes the rows that have come in the background, and tells the sinks of them. C++ only.
    void takeReady() const;

    // For the library's own readers of many rows: the rows and the way through them. Raises 3704
    // when the recordset is closed.
    [[nodiscard]] RowCursor& rows() const { return opened(); }

private:
    friend class Connection;
    friend class Command;
    friend Ref<Recordset> recordsetFor(const Ref<Connection>& connection);
    friend void answer(Recordset& recordset, std::shared_ptr<const Request> request, Reply reply);
    void adopt(Result result, Ref<Connection> connection);
    void show(std::shared_ptr<RowCursor> cursor);
    void take(Reply reply);
    void takeAnswers(std::vector<Result> results);
    void awaits(std::shared_ptr<LaterExecution> later);
    void openLater(std::int32_t options);
    [[nodiscard]] bool isExecuting() const;
    void fetchGradually(RowTable& table);
    [[nodiscard]] std::optional<Result> nextAnswer();
    void forget();
    void closeWithConnection();
    void attach(Ref<Connection> connection);
    void join();
    void leave() noexcept;
    void observed() override;
    [[nodiscard]] RowCursor& opened() const;
    void requireOpen() const;
    void requireClosed() const;
    void requireScrolling() const;
    void requireBatch() const;
    void requireSortable() const;
    [[nodiscard]] bool opensSaved(std::int32_t options) const;
    void openSaved();
    void chooseCriteria();
    void openTable(std::shared_ptr<RowTable> table);
    void arrangeAsChosen(const Variant& filter, const String& sort);
    void openMadeByHand();
    void run(std::int32_t options);
    void runAgain();
    [[nodiscard]] Reply answersOf(const Execution& execution);
    void assignAll(const Variant& names, const Variant& values);
    void savePending();
    void save();
    void saveNow();
    void deleteNow(AffectEnum affectRecords);
    void deleteThrough(Session* session, AffectEnum affectRecords);
    void raisingAll(const std::function<std::vector<DriverError>(Session&)>& work);
    void resyncNow(AffectEnum affectRecords, ResyncEnum resyncValues);
    [[nodiscard]] std::size_t affectedCount(AffectEnum which) const;
    [[nodiscard]] std::size_t waitingCount(AffectEnum which) const;
    void moveTo(const Variant& start);
    void rearrange();
    [[nodiscard]] std::size_t rowOfBookmark(const Variant& bookmark) const;
    [[nodiscard]] std::vector<std::size_t> affectedRows(AffectEnum which) const;
    [[nodiscard]] std::vector<std::size_t> fieldsWanted(const Variant& fields) const;
    [[nodiscard]] Variant takeRows(std::int32_t rows, const Variant& start, const Variant& fields);
    [[nodiscard]] String takeString(std::int32_t numRows, const String& columnDelimiter,
                                    const String& rowDelimiter, const String& nullExpr);
    [[nodiscard]] std::size_t rowsWanted(std::int32_t rows) const;

    std::shared_ptr<RowCursor> cursor_;  // unset: closed
    std::shared_ptr<RowCursor> draft_;   // of the columns appended while closed
    Ref<Connection> connection_;
    Ref<Command> command_;
    Ref<ado::Fields> fields_;
    Variant source_ = u"";
    CursorTypeEnum cursorType_ = CursorTypeEnum::adOpenForwardOnly;
    LockTypeEnum lockType_ = LockTypeEnum::adLockReadOnly;
    CursorLocationEnum cursorLocation_ = CursorLocationEnum::adUseServer;
    MarshalOptionsEnum marshalOptions_ = MarshalOptionsEnum::adMarshalAll;
    std::int32_t options_ = -1;
    std::int32_t maxRecords_ = 0;
    std::int32_t cacheSize_ = 1;
    std::int32_t pageSize_ = 10;
    bool stayInSync_ = true;
    String savedIn_;  // the file that it was saved to
    // How the cursor writes; "Resync Command" decides nothing and is kept for who asks.
    String uniqueTable_;
    String resyncCommand_;
    std::int32_t updateResync_ = static_cast<std::int32_t>(UpdateResyncEnum::adResyncAutoIncrement);
    std::int32_t updateCriteria_ = static_cast<std::int32_t>(UpdateCriteriaEnum::adCriteriaUpdCols);
    Variant filter_ = u"";
    String sort_;
    std::optional<std::int64_t> rowsAffected_;
    std::vector<Result> following_;               // the script's other answers
    std::shared_ptr<ResultSource> more_;          // and those that it has still to give
    Ref<Command> executed_;                       // of which Execute has made it
    std::shared_ptr<LaterExecution> awaited_;     // what is run for it in the background
    mutable bool fetchesOn_ = false;              // rows that come in the background
    std::shared_ptr<const Request> request_;      // what the records came of, to be sent again
    std::size_t answerNumber_ = 0;                // among its answers with records
    std::shared_ptr<FieldNotices> fieldNotices_;  // since there was a sink
};

}  // namespace kap::ado

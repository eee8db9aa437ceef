#include <kaputil/ado/recordset.hpp>

#include <utility>

#include <kaputil/frame/array.hpp>
#include <kaputil/frame/convert.hpp>

#include "ado/driver.hpp"
#include "ado/failures.hpp"
#include "ado/row_cursor.hpp"

namespace kap::ado {
namespace {

// Names and values come as one of each, or as two arrays of the same length.
std::vector<Variant> elementsOf(const Variant& value) {
    if (!value.isArray()) {
        return {value};
    }
    std::vector<Variant> all;
    const Array& array = value.as<Array>();
    for (std::int32_t i = array.lowerBound(); i <= array.upperBound(); ++i) {
        all.push_back(array.at(i));
    }
    return all;
}

std::string bracketed(const String& table) {
    std::string name;
    for (const char unit : table.utf8()) {
        name += unit == ']' ? "]]" : std::string(1, unit);
    }
    return name;
}

}  // namespace

Recordset::Recordset() = default;

Recordset::~Recordset() = default;

RowCursor& Recordset::opened() const {
    requireOpen();
    return *cursor_;
}

void Recordset::requireOpen() const {
    if (cursor_ == nullptr) {
        fail::objectClosed();
    }
}

void Recordset::requireClosed() const {
    if (cursor_ != nullptr) {
        fail::objectOpen();
    }
}

void Recordset::Open(const Variant& source, const Variant& activeConnection,
                     CursorTypeEnum cursorType, LockTypeEnum lockType, std::int32_t options) {
    requireClosed();
    if (!source.isMissing()) {
        setSource(source);
    }
    if (!activeConnection.isMissing()) {
        setActiveConnection(activeConnection);
    }
    if (cursorType != CursorTypeEnum::adOpenUnspecified) {
        setCursorType(cursorType);
    }
    if (lockType != LockTypeEnum::adLockUnspecified) {
        setLockType(lockType);
    }
    options_ = options;
    run(commandText(options));
}

String Recordset::commandText(std::int32_t options) const {
    String text = convert::toString(source_);
    switch (options) {
        case static_cast<std::int32_t>(CommandTypeEnum::adCmdUnspecified):
        case static_cast<std::int32_t>(CommandTypeEnum::adCmdText):
        case static_cast<std::int32_t>(CommandTypeEnum::adCmdUnknown):
            return text;
        case static_cast<std::int32_t>(CommandTypeEnum::adCmdTable):
        case static_cast<std::int32_t>(CommandTypeEnum::adCmdTableDirect):
            return "SELECT * FROM [" + bracketed(text) + "]";
        default:
            fail::invalidArgument();
    }
}

void Recordset::run(const String& text) {
    if (!connection_) {
        fail::invalidConnection();
    }
    if (lockType_ == LockTypeEnum::adLockBatchOptimistic) {
        fail::invalidArgument(u"Batch updating (adLockBatchOptimistic) is not available.");
    }
    std::vector<Result> results;
    connection_->reporting([&] { results = connection_->session()->execute(text.utf8()); });
    for (Result& result : results) {
        if (!result.columns.empty()) {
            const bool readOnly = lockType_ == LockTypeEnum::adLockReadOnly;
            adopt(std::make_shared<RowCursor>(std::move(result),
                                              RowCursor::Options{cursorLocation_, readOnly}),
                  connection_);
            return;
        }
    }
}

void Recordset::adopt(std::shared_ptr<RowCursor> cursor, Ref<Connection> connection) {
    cursor_ = std::move(cursor);
    connection_ = std::move(connection);
    fields_ = make<ado::Fields>(cursor_);
    if (cursorLocation_ == CursorLocationEnum::adUseClient) {
        cursorType_ = CursorTypeEnum::adOpenStatic;  // a client cursor is nothing else
    }
}

void Recordset::Close() {
    if (opened().editMode() != EditModeEnum::adEditNone) {
        fail::illegalOperation();
    }
    cursor_.reset();
    fields_ = {};
}

void Recordset::Requery(std::int32_t options) {
    if (opened().editMode() != EditModeEnum::adEditNone) {
        fail::illegalOperation();
    }
    run(commandText(options == -1 ? options_ : options));
}

ObjectStateEnum Recordset::State() const {
    return cursor_ == nullptr ? ObjectStateEnum::adStateClosed : ObjectStateEnum::adStateOpen;
}

Variant Recordset::ActiveConnection() const {
    return Variant(connection_);
}

void Recordset::setActiveConnection(const Variant& value) {
    if (value.isObject()) {
        const Ref<Object>& object = value.as<Ref<Object>>();
        auto* connection = dynamic_cast<Connection*>(object.get());
        if (object && connection == nullptr) {
            fail::invalidArgument();
        }
        if (connection != nullptr && connection->State() == ObjectStateEnum::adStateClosed) {
            fail::invalidConnection();
        }
        connection_ = Ref<Connection>(connection);
        return;
    }
    if (value.isNull() || value.isEmpty()) {
        connection_ = {};
        return;
    }
    auto opened = make<Connection>();
    opened->Open(convert::toString(value));
    connection_ = std::move(opened);
}

void Recordset::setSource(const Variant& value) {
    requireClosed();
    source_ = value;
}

void Recordset::setCursorType(CursorTypeEnum value) {
    requireClosed();
    if (value < CursorTypeEnum::adOpenForwardOnly || value > CursorTypeEnum::adOpenStatic) {
        fail::invalidArgument();
    }
    cursorType_ = value;
}

void Recordset::setLockType(LockTypeEnum value) {
    requireClosed();
    if (value < LockTypeEnum::adLockReadOnly || value > LockTypeEnum::adLockBatchOptimistic) {
        fail::invalidArgument();
    }
    lockType_ = value;
}

void Recordset::setCursorLocation(CursorLocationEnum value) {
    requireClosed();
    if (value != CursorLocationEnum::adUseServer && value != CursorLocationEnum::adUseClient) {
        fail::invalidArgument();
    }
    cursorLocation_ = value;
}

bool Recordset::Bof() const {
    return opened().bof();
}

bool Recordset::Eof() const {
    return opened().eof();
}

std::int32_t Recordset::RecordCount() const {
    return static_cast<std::int32_t>(opened().recordCount());
}

std::int32_t Recordset::AbsolutePosition() const {
    return opened().absolutePosition();
}

EditModeEnum Recordset::EditMode() const {
    return opened().editMode();
}

void Recordset::MoveFirst() {
    savePending();
    cursor_->moveFirst();
}

void Recordset::MoveLast() {
    savePending();
    cursor_->moveLast();
}

void Recordset::MoveNext() {
    savePending();
    cursor_->move(1);
}

void Recordset::MovePrevious() {
    savePending();
    cursor_->move(-1);
}

void Recordset::Move(std::int32_t numRecords, const Variant& start) {
    savePending();
    if (!start.isMissing()) {
        switch (static_cast<BookmarkEnum>(convert::toLong(start))) {
            case BookmarkEnum::adBookmarkCurrent:
                break;
            case BookmarkEnum::adBookmarkFirst:
                cursor_->moveFirst();
                break;
            case BookmarkEnum::adBookmarkLast:
                cursor_->moveLast();
                break;
            default:
                fail::invalidArgument();
        }
    }
    cursor_->move(numRecords);
}

Ref<ado::Fields> Recordset::Fields() const {
    return fields_ ? fields_ : make<ado::Fields>(nullptr);
}

void Recordset::AddNew(const Variant& fieldList, const Variant& values) {
    savePending();
    cursor_->beginNew();
    if (!fieldList.isMissing()) {
        assignAll(fieldList, values);
        save();
    }
}

void Recordset::Update(const Variant& fields, const Variant& values) {
    requireOpen();
    if (!fields.isMissing()) {
        assignAll(fields, values);
    }
    save();
}

void Recordset::assignAll(const Variant& names, const Variant& values) {
    const std::vector<Variant> columns = elementsOf(names);
    const std::vector<Variant> given = elementsOf(values);
    if (columns.size() != given.size()) {
        fail::invalidArgument();
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        fields_->Item(columns[i])->setValue(given[i]);
    }
}

// Leaving a record saves what was changed in it.
void Recordset::savePending() {
    if (opened().editMode() != EditModeEnum::adEditNone) {
        save();
    }
}

void Recordset::save() {
    if (!connection_) {
        cursor_->save(nullptr);
        return;
    }
    connection_->reporting([&] { cursor_->save(connection_->session().get()); });
}

void Recordset::CancelUpdate() {
    opened().cancel();
}

void Recordset::Delete(AffectEnum affectRecords) {
    requireOpen();
    if (affectRecords != AffectEnum::adAffectCurrent) {
        fail::invalidArgument();
    }
    if (!connection_) {
        cursor_->remove(nullptr);
        return;
    }
    connection_->reporting([&] { cursor_->remove(connection_->session().get()); });
}

void Recordset::Resync(AffectEnum affectRecords, ResyncEnum resyncValues) {
    requireOpen();
    if (resyncValues != ResyncEnum::adResyncAllValues) {
        fail::invalidArgument();
    }
    if (!connection_) {
        fail::invalidConnection();
    }
    connection_->reporting([&] {
        const auto session = connection_->session();
        if (affectRecords == AffectEnum::adAffectCurrent) {
            cursor_->reload(*session);
        } else if (affectRecords == AffectEnum::adAffectAll) {
            cursor_->reloadAll(*session);
        } else {
            fail::invalidArgument();
        }
    });
}

void Recordset::replaceNulls(std::size_t field) {
    if (field >= opened().columns().size()) {
        fail::itemNotFound();
    }
    cursor_->replaceNulls(field);
}

std::size_t Recordset::rowMemory() const {
    return opened().memory();
}

}  // namespace kap::ado

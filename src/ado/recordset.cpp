#include <kaputil/ado/recordset.hpp>

#include <algorithm>
#include <chrono>
#include <utility>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/events.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/connection_notices.hpp"
#include "ado/later_execution.hpp"
#include "ado/recordset_notices.hpp"
#include "ado/request_builder.hpp"
#include "ado/results.hpp"
#include "ado/row_cursor.hpp"
#include "ado/saved_source.hpp"
#include "data/driver.hpp"
#include "data/failures.hpp"

namespace kap::ado {
namespace {

// What a recordset is disconnected with.
bool isNothing(const Variant& connection) {
    return connection.isNull() || connection.isEmpty() ||
           (connection.isObject() && !connection.as<Ref<Object>>());
}

}  // namespace

Recordset::Recordset() : fields_(make<ado::Fields>()) {
    forget();
}

Recordset::~Recordset() {
    awaits(nullptr);
    leave();
    if (fieldNotices_ != nullptr) {
        fieldNotices_->forget();
    }
}

const ClassDescription& Recordset::events() const {
    return RecordsetEvents::classDescription();
}

void Recordset::observed() {
    if (fieldNotices_ == nullptr) {
        fieldNotices_ = std::make_shared<FieldNotices>(*this);
    }
    if (cursor_ != nullptr) {
        cursor_->setObserver(fieldNotices_);
    }
}

RowCursor& Recordset::opened() const {
    requireOpen();
    return *cursor_;
}

void Recordset::requireOpen() const {
    if (cursor_ == nullptr && isExecuting()) {
        fail::stillExecuting();
    }
    if (cursor_ == nullptr) {
        fail::objectClosed();
    }
}

void Recordset::requireClosed() const {
    if (isExecuting()) {
        fail::stillExecuting();
    }
    if (cursor_ != nullptr) {
        fail::objectOpen();
    }
}

// Closed, and ready for columns to be appended.
void Recordset::forget() {
    leave();
    if (cursor_ != nullptr) {
        cursor_->setObserver({});
        if (cursor_->table().isReadOnce()) {
            cursor_->table().abandonRest();  // fields that the client still has keep the cursor
        }
    }
    cursor_.reset();
    request_.reset();
    executed_ = {};
    more_.reset();
    draft_ = std::make_shared<RowCursor>(RowTable::madeByHand(), RowCursor::Options{});
    fields_->show(draft_, /*open=*/false);
    filter_ = u"";
    sort_ = {};
}

void Recordset::Open(const Variant& source, const Variant& activeConnection,
                     CursorTypeEnum cursorType, LockTypeEnum lockType, std::int32_t options) {
    requireClosed();
    if (!source.isMissing()) {
        setSource(source);
    }
    if (!activeConnection.isMissing()) {
        if (!isPersistProvider(activeConnection)) {
            setActiveConnection(activeConnection);
        }
    }
    if (cursorType != CursorTypeEnum::adOpenUnspecified) {
        setCursorType(cursorType);
    }
    if (lockType != LockTypeEnum::adLockUnspecified) {
        setLockType(lockType);
    }
    options_ = options;
    if (draft_->columns().empty() && asksNotToWait(options) && !opensSaved(options)) {
        openLater(options);
        return;
    }
    const auto open = [&] {
        const Variant filter = filter_;
        const String sort = sort_;
        if (draft_->columns().empty()) {
            if (opensSaved(options)) {
                openSaved();
            } else {
                run(options);
            }
        } else {
            openMadeByHand();
        }
        if (cursor_ != nullptr) {
            arrangeAsChosen(filter, sort);
        }
    };
    if (isObserved()) {
        RecordsetNotices(*this).afterOpening(open);
    } else {
        open();
    }
}

// What was chosen while the recordset was closed.
void Recordset::arrangeAsChosen(const Variant& filter, const String& sort) {
    const bool all = filter.isString() && filter.as<String>().empty();
    if (all && sort.empty()) {
        return;
    }
    filter_ = filter;
    sort_ = sort;
    try {
        rearrange();
    } catch (const AutomationError&) {
        forget();
        throw;
    }
}

// There is no database that could hold such records: they can always be changed.
void Recordset::openMadeByHand() {
    cursorLocation_ = CursorLocationEnum::adUseClient;
    if (lockType_ == LockTypeEnum::adLockReadOnly) {
        lockType_ = LockTypeEnum::adLockOptimistic;
    }
    draft_->setBatch(lockType_ == LockTypeEnum::adLockBatchOptimistic);
    cursorType_ = CursorTypeEnum::adOpenStatic;
    draft_->table().endDraft();
    fields_->open_ = true;
    cursor_ = draft_;
    cursor_->setObserver(fieldNotices_);
}

void Recordset::run(std::int32_t options) {
    const Ref<Connection> connection = command_ ? command_->connection() : connection_;
    if (!connection) {
        fail::invalidConnection();
    }
    const String source = command_ ? command_->CommandText() : convert::toString(source_);
    Execution execution{source, cursorType_, lockType_, options, command_, Ref<Recordset>(this)};
    executing(connection, execution, [&] {
        if (cursor_ == nullptr) {
            setCursorType(execution.cursorType);
            setLockType(execution.lockType);
        }
        Reply reply = answersOf(execution);
        execution.rowsAffected = rowsWritten(reply.results);
        take(std::move(reply));
    });
}

Reply Recordset::answersOf(const Execution& execution) {
    if (command_) {
        return command_->run(execution, isReadOnce(), request_);
    }
    const auto request =
        std::make_shared<Request>(requestFor(execution.source(), execution.options));
    request->timeout = std::chrono::seconds(connection_->CommandTimeout());
    comeAsNeeded(*request, isReadOnce(), execution.options);
    Reply reply;
    connection_->run(*request, reply);
    request_ = request;
    return reply;
}

void Recordset::Cancel() const {
    if (connection_) {
        connection_->Cancel();
    }
}

bool Recordset::isReadOnce() const {
    return cursorType_ == CursorTypeEnum::adOpenForwardOnly &&
           lockType_ == LockTypeEnum::adLockReadOnly &&
           cursorLocation_ == CursorLocationEnum::adUseServer;
}

void Recordset::fetchAll() {
    requireOpen();
    if (fetches()) {
        reportingFetch([this] { cursor_->table().fetchAll(); });
    }
}

void Recordset::adopt(Result result, Ref<Connection> connection) {
    attach(std::move(connection));
    if (cursorLocation_ == CursorLocationEnum::adUseClient) {
        cursorType_ = CursorTypeEnum::adOpenStatic;  // a client cursor is nothing else
    } else if (cursorType_ == CursorTypeEnum::adOpenDynamic) {
        cursorType_ = CursorTypeEnum::adOpenKeyset;
    }
    auto table = std::make_shared<RowTable>(std::move(result));
    fetchGradually(*table);
    table->limit(static_cast<std::size_t>(maxRecords_));
    RowCursor::Options options;
    options.location = cursorLocation_;
    options.readOnly = lockType_ == LockTypeEnum::adLockReadOnly;
    options.batch = lockType_ == LockTypeEnum::adLockBatchOptimistic;
    options.forwardOnly = cursorType_ == CursorTypeEnum::adOpenForwardOnly;
    if (isReadOnce()) {
        table->readOnce();
    }
    show(std::make_shared<RowCursor>(std::move(table), options));
}

void Recordset::show(std::shared_ptr<RowCursor> cursor) {
    if (cursor_ != nullptr) {
        cursor_->setObserver({});
    }
    cursor_ = std::move(cursor);
    cursor_->setObserver(fieldNotices_);
    fields_->show(cursor_, /*open=*/true);
    chooseCriteria();
    join();
    filter_ = u"";
    sort_ = {};
}

void Recordset::Close() {
    if (opened().editMode() != EditModeEnum::adEditNone) {
        fail::illegalOperation();
    }
    changingAll(*this, EventReasonEnum::adRsnClose, [&] {
        requireOpen();
        following_.clear();
        forget();
    });
}

void Recordset::closeWithConnection() {
    changingAll(*this, EventReasonEnum::adRsnClose, [&] {
        following_.clear();
        forget();
    });
}

// Of an open recordset its connection knows, which closes it when it is closed itself.
void Recordset::attach(Ref<Connection> connection) {
    leave();
    connection_ = std::move(connection);
    fields_->connected_ = static_cast<bool>(connection_);
    if (cursor_ != nullptr) {
        join();
    }
}

void Recordset::join() {
    if (connection_) {
        connection_->recordsets_.insert(this);
    }
}

void Recordset::leave() noexcept {
    if (connection_) {
        connection_->recordsets_.erase(this);
    }
}

void Recordset::Requery(std::int32_t options) {
    if (opened().editMode() != EditModeEnum::adEditNone) {
        fail::illegalOperation();
    }
    const auto query = [&] {
        requireOpen();
        if (cursor_->table().isReadOnce()) {
            cursor_->table().abandonRest();  // else it were read to make way for the request
        }
        more_.reset();
        try {
            const bool told = command_ || !source_.isString() || !source_.as<String>().empty();
            if (told || request_ == nullptr || !connection_) {
                run(saysKind(options) || options_ == -1 ? options : options_);
            } else {  // what Execute sent
                Request request = *request_;
                Reply reply;
                connection_->run(request, reply);
                take(std::move(reply));
            }
        } catch (...) {
            if (cursor_ != nullptr && cursor_->table().isReadOnce()) {
                forget();
            }
            throw;
        }
    };
    changingAll(*this, EventReasonEnum::adRsnRequery,
                [&] { moving(*this, EventReasonEnum::adRsnRequery, query); });
}

Ref<Recordset> Recordset::Clone(LockTypeEnum lockType) {
    savePending();
    requireScrolling();
    if (lockType != LockTypeEnum::adLockUnspecified && lockType != LockTypeEnum::adLockReadOnly) {
        fail::invalidArgument();
    }
    auto clone = make<Recordset>();
    clone->connection_ = connection_;
    clone->source_ = source_;
    clone->cursorType_ = cursorType_;
    clone->cursorLocation_ = cursorLocation_;
    clone->uniqueTable_ = uniqueTable_;
    clone->updateResync_ = updateResync_;
    clone->updateCriteria_ = updateCriteria_;
    clone->lockType_ = lockType == LockTypeEnum::adLockUnspecified ? lockType_ : lockType;
    RowCursor::Options options = cursor_->options();
    options.readOnly = clone->lockType_ == LockTypeEnum::adLockReadOnly;
    clone->show(std::make_shared<RowCursor>(cursor_->sharedTable(), options));
    return clone;
}

ObjectStateEnum Recordset::State() const {
    if (isExecuting()) {
        return ObjectStateEnum::adStateExecuting;
    }
    if (cursor_ == nullptr) {
        return ObjectStateEnum::adStateClosed;
    }
    if (fetchesOn_) {
        takeReady();
    }
    constexpr auto kOpen = static_cast<std::int32_t>(ObjectStateEnum::adStateOpen);
    constexpr auto kFetching = static_cast<std::int32_t>(ObjectStateEnum::adStateFetching);
    return static_cast<ObjectStateEnum>(kOpen | (fetchesOn_ ? kFetching : 0));
}

Variant Recordset::ActiveConnection() const {
    return connection_ ? connection_->clientsObject() : Variant(Ref<Object>());
}

void Recordset::setActiveConnection(const Variant& value) {
    if (isExecuting()) {
        fail::stillExecuting();
    }
    const bool disconnects = isNothing(value);
    if (command_ && cursor_ == nullptr && !disconnects) {
        fail::connectionOfCommand();
    }
    if (cursor_ != nullptr && connection_ && !disconnects) {
        fail::objectOpen();
    }
    Ref<Connection> connection = connectionOf(value);
    if (cursor_ != nullptr) {
        fetchAll();  // nobody else can, once it is disconnected
    }
    attach(std::move(connection));
}

Variant Recordset::ActiveCommand() const {
    return Variant(command_ ? command_ : executed_);
}

// Of what Execute gave the text that was sent.
Variant Recordset::Source() const {
    if (command_) {
        return command_->CommandText();
    }
    const bool told = !source_.isString() || !source_.as<String>().empty();
    return told || request_ == nullptr ? source_ : Variant(String(request_->text));
}

void Recordset::setSource(const Variant& value) {
    requireClosed();
    command_ = {};
    if (value.isObject()) {
        if (auto* command = dynamic_cast<Command*>(value.as<Ref<Object>>().get())) {
            command_ = Ref<Command>(command);
            connection_ = command_->connection();
            return;
        }
    }
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

void Recordset::setMaxRecords(std::int32_t value) {
    requireClosed();
    if (value < 0) {
        fail::invalidArgument();
    }
    maxRecords_ = value;
}

void Recordset::setCacheSize(std::int32_t value) {
    if (value < 1) {
        fail::invalidArgument();
    }
    cacheSize_ = value;
}

void Recordset::setMarshalOptions(MarshalOptionsEnum value) {
    if (value != MarshalOptionsEnum::adMarshalAll &&
        value != MarshalOptionsEnum::adMarshalModifiedOnly) {
        fail::invalidArgument();
    }
    marshalOptions_ = value;
}

bool Recordset::Supports(CursorOptionEnum option) const {
    const RowCursor::Options& options = opened().options();
    switch (option) {
        case CursorOptionEnum::adFind:
            return true;
        case CursorOptionEnum::adHoldRecords:
        case CursorOptionEnum::adMovePrevious:
        case CursorOptionEnum::adBookmark:
        case CursorOptionEnum::adApproxPosition:
            return !options.forwardOnly;
        case CursorOptionEnum::adAddNew:
        case CursorOptionEnum::adDelete:
        case CursorOptionEnum::adUpdate:
            return !options.readOnly;
        case CursorOptionEnum::adUpdateBatch:
            return options.batch;
        case CursorOptionEnum::adResync:
            return static_cast<bool>(connection_);
        default:  // notifications, indexes and seeking
            return false;
    }
}

std::size_t Recordset::rowMemory() const {
    return opened().table().memory();
}

}  // namespace kap::ado

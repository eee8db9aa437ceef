// Records in files and streams.
#include <utility>
#include <vector>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/argument_value.hpp"
#include "ado/persist/saved_rows.hpp"
#include "ado/recordset_notices.hpp"
#include "ado/row_cursor.hpp"
#include "ado/saved_source.hpp"
#include "data/failures.hpp"
#include "platform/output_file.hpp"
#include "platform/paths.hpp"
#include "platform/whole_file.hpp"

namespace kap::ado {
namespace {

// The records that are shown, and those deleted ones that the database still has.
std::vector<std::size_t> rowsToSave(RowCursor& cursor) {
    std::vector<std::size_t> rows = cursor.rowsShown();
    for (const auto& [row, waiting] : cursor.table().pending()) {
        if (waiting.kind == PendingRow::Kind::Deleted) {
            rows.push_back(row);
        }
    }
    return rows;
}

void writeFile(const String& name, const std::string& content, bool again) {
    const auto file = platform::locate(name.view());
    if (again) {
        platform::replaceFile(file, content, platform::FileAccess::Shared);
    } else {
        platform::OutputFile(file, platform::OutputFile::Begin::New).write(content);
    }
}

}  // namespace

void Recordset::Save(const Variant& destination, PersistFormatEnum persistFormat) {
    savePending();
    if (persistFormat == PersistFormatEnum::adPersistADTG) {
        fail::binaryForm();
    }
    if (persistFormat != PersistFormatEnum::adPersistXML) {
        fail::invalidArgument();
    }
    if (cursor_->hasPassedRows()) {
        runAgain();
    }
    fetchAll();
    const std::string content = persist::writtenRows(cursor_->table(), rowsToSave(*cursor_));
    if (isStream(destination)) {
        static_cast<Stream&>(*destination.as<Ref<Object>>()).assign(content);
    } else {
        const Variant plain = argumentValue(destination);
        const bool given = plain.isString() && !plain.as<String>().empty();
        if (!given && (savedIn_.empty() || !(plain.isMissing() || plain.isEmpty()))) {
            fail::invalidArgument();
        }
        const String name = given ? plain.as<String>() : savedIn_;
        writeFile(name, content, !given || name == savedIn_);
        savedIn_ = name;
    }
    if (!cursor_->options().forwardOnly && cursor_->count() > 0) {
        moving(*this, EventReasonEnum::adRsnMoveFirst, [&] { opened().moveFirst(); });
    }
}

bool Recordset::opensSaved(std::int32_t options) const {
    if (command_) {
        return false;
    }
    constexpr auto kFile = static_cast<std::int32_t>(CommandTypeEnum::adCmdFile);
    const bool saysFile = options >= 0 && (options & kFile) != 0;
    return isStream(source_) || saysFile || (!connection_ && isFile(source_));
}

void Recordset::openSaved() {
    openTable(persist::readRows(savedContent(source_)));
}

void Recordset::openTable(std::shared_ptr<RowTable> table) {
    attach({});
    cursorLocation_ = CursorLocationEnum::adUseClient;
    cursorType_ = CursorTypeEnum::adOpenStatic;
    RowCursor::Options options;
    options.location = cursorLocation_;
    options.readOnly = lockType_ == LockTypeEnum::adLockReadOnly;
    options.batch = lockType_ == LockTypeEnum::adLockBatchOptimistic;
    show(std::make_shared<RowCursor>(std::move(table), options));
}

Variant Recordset::Collect(const Variant& index) const {
    requireOpen();
    return fields_->Item(index)->Value();
}

void Recordset::setCollect(const Variant& index, const Variant& value) {
    requireOpen();
    fields_->Item(index)->setValue(value);
}

void Recordset::setIndex(const String& /*value*/) {
    fail::notAvailable(
        u"Current provider does not open tables by an index: use Find, Filter or a query.");
}

void Recordset::Seek(const Variant& /*keyValues*/, SeekEnum /*seekOption*/) {
    requireOpen();
    fail::notAvailable(
        u"Current provider does not search by an index: use Find, Filter or a query.");
}

void Recordset::setDataSource(const Variant& value) {
    if (!value.isObject() || value.as<Ref<Object>>()) {
        fail::notAvailable(u"A recordset's records come from a query or a file.");
    }
}

void Recordset::setDataMember(const String& value) {
    if (!value.empty()) {
        fail::notAvailable(u"A recordset's records come from a query or a file.");
    }
}

}  // namespace kap::ado

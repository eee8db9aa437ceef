#include <kaputil/host/text_export.hpp>

#include <optional>

#include <kaputil/ado/connection.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/db/recordsets.hpp>
#include <kaputil/platform/creatable_objects.hpp>
#include <kaputil/platform/message_box.hpp>
#include <kaputil/platform/profile_file.hpp>

#include "ado/row_cursor.hpp"
#include "automation/late_bound.hpp"
#include "db/passing_rows.hpp"
#include "drivers/text/text_driver.hpp"
#include "drivers/text/text_session.hpp"

namespace kap::host {
namespace {

using ado::DataTypeEnum;
using platform::MessageSeverity;

// The type word of the schema for a field; nullopt for a type that has none.
std::optional<String> typeWord(const ado::Field& field) {
    constexpr std::int32_t kLongestChar = 255;
    switch (field.Type()) {
        case DataTypeEnum::adVarChar:
        case DataTypeEnum::adChar:
            if (field.DefinedSize() <= kLongestChar) {
                return u"Char";
            }
            // Deliberately with the size right behind: the programs that read the schema expect it.
            return u"LongChar" + convert::toString(field.DefinedSize());
        case DataTypeEnum::adSmallInt:
            return u"Short";
        case DataTypeEnum::adInteger:
            return u"Integer";
        case DataTypeEnum::adSingle:
            return u"Single";
        case DataTypeEnum::adDouble:
            return u"Float";
        case DataTypeEnum::adCurrency:
            return u"Currency";
        case DataTypeEnum::adUnsignedTinyInt:
            return u"Byte";
        case DataTypeEnum::adDBTimeStamp:
            return u"Date";
        default:
            return std::nullopt;
    }
}

std::int32_t widthOf(const ado::Field& field) {
    constexpr std::int32_t kRoomInDates = 2;
    return field.DefinedSize() + (field.Type() == DataTypeEnum::adDBTimeStamp ? kRoomInDates : 0);
}

// Writes the section of the file; false, after a message, when a field cannot be described.
bool writeSchema(const ado::Recordset& source, const String& file, const String& folder) {
    const auto write = [&](const String& key, const String& value) {
        platform::changeProfile(file, key, value, folder + u"SCHEMA.INI");
    };
    write(u"ColNameHeader", u"False");
    write(u"Format", u"FixedLength");
    write(u"MaxScanRows", u"25");
    write(u"CharacterSet", u"OEM");
    write(u"CurrencyDigits", u"3");
    String word;
    const auto fields = source.Fields();
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        const auto field = fields->Item(i);
        const auto known = typeWord(*field);
        word = known.value_or(word);
        // Deliberately also after the message, with the word of the field before.
        const auto writeLine = [&] {
            write(u"col" + convert::toString(i + 1),
                  field->Name() + u" " + word + u" Width " + convert::toString(widthOf(*field)));
        };
        if (!known) {
            const auto code = static_cast<std::int32_t>(field->Type());
            platform::showMessage(
                platform::defaultMessageTitle(), MessageSeverity::Error,
                u"Tipo non Previsto " + convert::toString(code) + u" Nel campo " + field->Name());
            writeLine();
            return false;
        }
        writeLine();
    }
    return true;
}

bool hasSchema(const Variant& files, const String& folder) {
    const String schema = folder + u"Schema.ini";
    if (convert::toBoolean(late::call(files, u"fileexists", {schema}))) {
        return true;
    }
    platform::showMessage(u"Esportazione File di Testo", MessageSeverity::Warning,
                          u"Impossibile Trovare il File " + schema);
    return false;
}

Ref<ado::Connection> openFolder(const String& folder) {
    ado::text_files::TextDriver::offer();
    auto connection = make<ado::Connection>();
    connection->Open(u"Driver={Microsoft Text Driver (*.txt; *.csv)};Dbq=" + folder +
                     u";Extension=txt;Persist Security Info=False; "
                     u"CollatingOrder=dbSortGeneral");
    return connection;
}

// Deliberately, Null is written like the euro sign: it does not differ from it.
ado::text_files::CopiedRows copiedRows(ado::Recordset& source, const ExportProgress& progress) {
    ado::text_files::CopiedRows copied;
    const ado::RowTable& rows = source.rows().table();
    copied.result = &rows.result();
    copied.replaced = "€";
    copied.instead = "EUR";
    copied.next = [&source, &rows] {
        if (!source.Eof()) {
            source.Move(static_cast<std::int32_t>(rows.size()));
        }
        return !source.Eof();
    };
    if (progress) {
        copied.progress = [&rows, &progress](std::int64_t done) {
            const std::size_t all = rows.complete() ? rows.passedRows() + rows.size() : 0;
            progress(done, static_cast<std::int64_t>(all));
        };
    }
    return copied;
}

}  // namespace

bool EsportaTXT(ByRef<String> stringaSql, ByRef<Variant> connessione, ByRef<String> sNomeTxt,
                ByRef<String> sPathTxt, ByRef<bool> lRicreoSchemaIni,
                const ExportProgress& progress) {
    db::ControllaConnessione(connessione);
    if (!sPathTxt->view().ends_with(u'\\')) {
        *sPathTxt += u"\\";
    }
    const Variant files = platform::createObject(u"Scripting.FileSystemObject");
    late::call(files, u"CreateTextFile", {*sPathTxt + *sNomeTxt});
    const auto folder = openFolder(*sPathTxt);
    const auto source = db::openPassingRows(*stringaSql, connessione);

    const bool described = *lRicreoSchemaIni ? writeSchema(*source, *sNomeTxt, *sPathTxt)
                                             : hasSchema(files, *sPathTxt);
    if (!described) {
        return false;
    }
    const auto destination = make<ado::Recordset>();
    destination->setCursorLocation(ado::CursorLocationEnum::adUseClient);
    destination->Open(u"SELECT * FROM " + *sNomeTxt + u" WHERE 1=0", Variant(folder),
                      ado::CursorTypeEnum::adOpenKeyset, ado::LockTypeEnum::adLockOptimistic);
    // Not record by record: an export would take several times as long, for the same lines.
    dynamic_cast<ado::text_files::TextSession&>(*folder->session())
        .copy(*sNomeTxt, copiedRows(*source, progress));
    return true;
}

}  // namespace kap::host

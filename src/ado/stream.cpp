#include <kaputil/ado/stream.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

#include <kaputil/automation/array.hpp>
#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "ado/argument_value.hpp"
#include "ado/charset.hpp"
#include "automation/class_builder.hpp"
#include "data/failures.hpp"
#include "platform/output_file.hpp"
#include "platform/paths.hpp"
#include "platform/whole_file.hpp"

namespace kap::ado {
namespace {

constexpr std::int32_t kAll = -1;
constexpr std::int32_t kLine = -2;

std::u16string_view separatorOf(LineSeparatorEnum separator) {
    switch (separator) {
        case LineSeparatorEnum::adCR:
            return u"\r";
        case LineSeparatorEnum::adLF:
            return u"\n";
        case LineSeparatorEnum::adCRLF:
            break;
    }
    return u"\r\n";
}

TextCharset charsetOf(const String& name) {
    const auto found = charsetNamed(name.view());
    if (!found) {
        fail::invalidArgument(u"The character set '" + name + u"' is not known.");
    }
    return *found;
}

ClassBuilder<Stream>&& streamProperties(ClassBuilder<Stream>&& builder) {
    return std::move(builder)
        .property<&Stream::Charset, &Stream::setCharset>(u"Charset")
        .property<&Stream::EOS>(u"EOS")
        .property<&Stream::LineSeparator, &Stream::setLineSeparator>(u"LineSeparator")
        .property<&Stream::Mode, &Stream::setMode>(u"Mode")
        .property<&Stream::Position, &Stream::setPosition>(u"Position")
        .property<&Stream::Size>(u"Size")
        .property<&Stream::State>(u"State")
        .property<&Stream::Type, &Stream::setType>(u"Type");
}

ClassBuilder<Stream>&& streamMethods(ClassBuilder<Stream>&& builder) {
    using kap::Parameter;
    return std::move(builder)
        .method<&Stream::Cancel>(u"Cancel")
        .method<&Stream::Close>(u"Close")
        .method<&Stream::CopyTo>(u"CopyTo",
                                 {u"DestStream", Parameter(u"CharNumber").otherwise(kAll)})
        .method<&Stream::Flush>(u"Flush")
        .method<&Stream::LoadFromFile>(u"LoadFromFile", {u"FileName"})
        .method<&Stream::Open>(
            u"Open", {Parameter(u"Source").otherwise(Variant::missing()),
                      Parameter(u"Mode").otherwise(0), Parameter(u"Options").otherwise(-1),
                      Parameter(u"UserName").otherwise(u""), Parameter(u"Password").otherwise(u"")})
        .method<&Stream::Read>(u"Read", {Parameter(u"NumBytes").otherwise(kAll)})
        .method<&Stream::ReadText>(u"ReadText", {Parameter(u"NumChars").otherwise(kAll)})
        .method<&Stream::SaveToFile>(u"SaveToFile",
                                     {u"FileName", Parameter(u"Options").otherwise(1)})
        .method<&Stream::SetEOS>(u"SetEOS")
        .method<&Stream::SkipLine>(u"SkipLine")
        .method<&Stream::Write>(u"Write", {u"Buffer"})
        .method<&Stream::WriteText>(u"WriteText", {u"Data", Parameter(u"Options").otherwise(0)});
}

}  // namespace

Stream::Stream() = default;

Stream::~Stream() = default;

const ClassDescription& Stream::classDescription() {
    static const ClassDescription description =
        streamMethods(streamProperties(
                          ClassBuilder<Stream>(u"Stream", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b51",
                                               u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b41")))
            .build();
    return description;
}

// --- How it is opened

void Stream::requireOpen() const {
    if (!open_) {
        fail::objectClosed();
    }
}

void Stream::requireStart() const {
    if (open_ && position_ != 0) {
        fail::illegalOperation();
    }
}

void Stream::requireType(StreamTypeEnum type) const {
    requireOpen();
    if (type_ != type) {
        fail::illegalOperation();
    }
}

void Stream::requireWritable() const {
    if (mode_ == ConnectModeEnum::adModeRead) {
        fail::illegalOperation();
    }
}

void Stream::setCharset(const String& value) {
    requireStart();
    static_cast<void>(charsetOf(value));
    charset_ = value;
}

void Stream::setLineSeparator(LineSeparatorEnum value) {
    if (value != LineSeparatorEnum::adCRLF && value != LineSeparatorEnum::adCR &&
        value != LineSeparatorEnum::adLF) {
        fail::invalidArgument();
    }
    separator_ = value;
}

void Stream::setMode(ConnectModeEnum value) {
    if (open_) {
        fail::objectOpen();
    }
    if (value < ConnectModeEnum::adModeUnknown || value > ConnectModeEnum::adModeShareDenyNone) {
        fail::invalidArgument();
    }
    mode_ = value;
}

void Stream::setType(StreamTypeEnum value) {
    if (value != StreamTypeEnum::adTypeBinary && value != StreamTypeEnum::adTypeText) {
        fail::invalidArgument();
    }
    requireStart();
    type_ = value;
}

ObjectStateEnum Stream::State() const {
    return open_ ? ObjectStateEnum::adStateOpen : ObjectStateEnum::adStateClosed;
}

void Stream::Open(const Variant& source, ConnectModeEnum mode, std::int32_t /*options*/,
                  const String& /*userName*/, const String& /*password*/) {
    if (open_) {
        fail::objectOpen();
    }
    const Variant plain = argumentValue(source);
    const bool empty = plain.isMissing() || plain.isEmpty() || plain.isNull() ||
                       (plain.isString() && plain.as<String>().empty());
    if (!empty) {
        fail::notAvailable(
            u"A stream is not opened on a record or an address: open it empty and use "
            u"LoadFromFile.");
    }
    if (mode != ConnectModeEnum::adModeUnknown) {
        setMode(mode);
    }
    bytes_.clear();
    position_ = 0;
    open_ = true;
}

void Stream::Close() {
    requireOpen();
    open_ = false;
    bytes_ = {};
    position_ = 0;
}

void Stream::Flush() {
    requireOpen();
}

// --- Where it stands

bool Stream::EOS() const {
    requireOpen();
    return position_ >= bytes_.size();
}

std::int32_t Stream::Position() const {
    requireOpen();
    return static_cast<std::int32_t>(position_);
}

void Stream::setPosition(std::int32_t value) {
    requireOpen();
    if (value < 0) {
        fail::invalidArgument();
    }
    const auto position = static_cast<std::size_t>(value);
    if (position > bytes_.size()) {
        requireWritable();
        bytes_.resize(position);
    }
    position_ = position;
}

std::int32_t Stream::Size() const {
    requireOpen();
    return static_cast<std::int32_t>(bytes_.size());
}

void Stream::SetEOS() {
    requireOpen();
    requireWritable();
    bytes_.resize(position_);
}

const std::string& Stream::bytes() const {
    requireOpen();
    return bytes_;
}

void Stream::assign(std::string bytes) {
    requireOpen();
    requireWritable();
    bytes_ = std::move(bytes);
    position_ = 0;
}

// --- Bytes

Variant Stream::Read(std::int32_t numBytes) {
    requireType(StreamTypeEnum::adTypeBinary);
    if (numBytes < kAll) {
        fail::invalidArgument();
    }
    if (EOS()) {
        return Variant::null();
    }
    const std::size_t left = bytes_.size() - position_;
    const std::size_t count =
        numBytes == kAll ? left : std::min(left, static_cast<std::size_t>(numBytes));
    const auto from = bytes_.begin() + static_cast<std::ptrdiff_t>(position_);
    position_ += count;
    return Array::ofBytes({from, from + static_cast<std::ptrdiff_t>(count)});
}

void Stream::Write(const Variant& buffer) {
    requireType(StreamTypeEnum::adTypeBinary);
    const Variant plain = argumentValue(buffer);
    if (!plain.isArray() || plain.as<Array>().elementType() != VarType::Byte) {
        fail::invalidArgument();
    }
    const std::vector<std::uint8_t>& given = plain.as<Array>().bytes();
    put({reinterpret_cast<const char*>(given.data()), given.size()});
}

void Stream::put(std::string_view bytes) {
    requireWritable();
    const std::size_t over = std::min(bytes.size(), bytes_.size() - position_);
    bytes_.replace(position_, over, bytes);
    position_ += bytes.size();
}

// --- Text

// The mark belongs to the encoding, not to the text.
void Stream::skipMark() {
    const std::string_view mark = markOf(charsetOf(charset_));
    if (position_ == 0 && !mark.empty() && bytes_.starts_with(mark)) {
        position_ = mark.size();
    }
}

std::size_t Stream::endOfCharacters(std::int32_t count) const {
    if (count == kAll) {
        return bytes_.size();
    }
    const TextCharset charset = charsetOf(charset_);
    std::size_t end = position_;
    for (std::int32_t i = 0; i < count && end < bytes_.size(); ++i) {
        end += characterLength(charset, bytes_, end);
    }
    return end;
}

String Stream::takeText(std::size_t end) {
    const std::string_view part = std::string_view(bytes_).substr(position_, end - position_);
    position_ = end;
    return decodeText(charsetOf(charset_), part);
}

String Stream::takeLine() {
    const TextCharset charset = charsetOf(charset_);
    const std::string separator = encodeText(charset, separatorOf(separator_));
    const std::size_t unit =
        charset == TextCharset::Utf16 || charset == TextCharset::Utf16Big ? 2 : 1;
    std::size_t found = bytes_.find(separator, position_);
    // Half of one unit and half of the next one are none.
    while (found != std::string::npos && (found - position_) % unit != 0) {
        found = bytes_.find(separator, found + 1);
    }
    if (found == std::string::npos) {
        return takeText(bytes_.size());
    }
    String line = takeText(found);
    position_ = found + separator.size();
    return line;
}

String Stream::ReadText(std::int32_t numChars) {
    requireType(StreamTypeEnum::adTypeText);
    if (numChars < kLine) {
        fail::invalidArgument();
    }
    skipMark();
    return numChars == kLine ? takeLine() : takeText(endOfCharacters(numChars));
}

void Stream::SkipLine() {
    requireType(StreamTypeEnum::adTypeText);
    skipMark();
    static_cast<void>(takeLine());
}

void Stream::WriteText(const String& data, StreamWriteEnum options) {
    requireType(StreamTypeEnum::adTypeText);
    if (options != StreamWriteEnum::adWriteChar && options != StreamWriteEnum::adWriteLine) {
        fail::invalidArgument();
    }
    const TextCharset charset = charsetOf(charset_);
    if (bytes_.empty()) {
        put(markOf(charset));
    } else {
        skipMark();
    }
    std::u16string text(data.view());
    if (options == StreamWriteEnum::adWriteLine) {
        text += separatorOf(separator_);
    }
    put(encodeText(charset, text));
}

void Stream::CopyTo(const Ref<Stream>& destination, std::int32_t charNumber) {
    requireOpen();
    if (!destination || charNumber < kAll) {
        fail::invalidArgument();
    }
    destination->requireOpen();
    if (destination.get() == this) {
        fail::illegalOperation();
    }
    if (type_ == StreamTypeEnum::adTypeBinary) {
        destination->requireType(StreamTypeEnum::adTypeBinary);
        const Variant bytes = Read(charNumber);
        if (!bytes.isNull()) {
            destination->Write(bytes);
        }
    } else if (destination->type_ == StreamTypeEnum::adTypeText) {
        destination->WriteText(ReadText(charNumber));
    } else {
        const std::size_t end = endOfCharacters(charNumber);
        destination->put(std::string_view(bytes_).substr(position_, end - position_));
        position_ = end;
    }
}

// --- Files

void Stream::LoadFromFile(const String& fileName) {
    requireOpen();
    std::optional<std::string> content;
    try {
        content = platform::readFile(platform::locate(fileName.view()));
    } catch (const AutomationError& error) {
        fail::openingFile(fileName, error.description());
    }
    if (!content) {
        fail::openingFile(fileName, u"there is no such file");
    }
    bytes_ = std::move(*content);
    position_ = 0;
}

void Stream::SaveToFile(const String& fileName, SaveOptionsEnum options) {
    requireOpen();
    if (options != SaveOptionsEnum::adSaveCreateNotExist &&
        options != SaveOptionsEnum::adSaveCreateOverWrite) {
        fail::invalidArgument();
    }
    const auto file = platform::locate(fileName.view());
    try {
        if (options == SaveOptionsEnum::adSaveCreateNotExist) {
            platform::OutputFile(file, platform::OutputFile::Begin::New).write(bytes_);
        } else {
            platform::replaceFile(file, bytes_, platform::FileAccess::Shared);
        }
    } catch (const AutomationError& error) {
        fail::writingFile(fileName, error.description());
    }
    position_ = 0;
}

}  // namespace kap::ado

#include "platform/files/text_stream.hpp"

#include <algorithm>
#include <system_error>
#include <utility>

#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "platform/file_errors.hpp"
#include "platform/whole_file.hpp"

namespace kap::platform::files {
namespace {

constexpr std::u16string_view kLineEnd = u"\r\n";

std::size_t countOf(std::int32_t characters) {
    if (characters < 0) {
        throw AutomationError(errors::kInvalidArgument);
    }
    return static_cast<std::size_t>(characters);
}

}  // namespace

TextStream::TextStream(const std::filesystem::path& file) {
    const auto bytes = readFile(file);
    if (!bytes) {
        throwFileError(std::make_error_code(std::errc::no_such_file_or_directory), file);
    }
    text_ = decodeText(encodingOf(*bytes), *bytes);
}

TextStream::TextStream(std::unique_ptr<OutputFile> file, bool unicode)
    : output_(std::move(file)), unicode_(unicode) {}

const ClassDescription& TextStream::classDescription() {
    static const ClassDescription description =
        ClassBuilder<TextStream>(u"TextStream", u"", u"")
            .property<&TextStream::Line>(u"Line")
            .property<&TextStream::Column>(u"Column")
            .property<&TextStream::AtEndOfStream>(u"AtEndOfStream")
            .property<&TextStream::AtEndOfLine>(u"AtEndOfLine")
            .method<&TextStream::Read>(u"Read", {u"Characters"})
            .method<&TextStream::ReadLine>(u"ReadLine")
            .method<&TextStream::ReadAll>(u"ReadAll")
            .method<&TextStream::Write>(u"Write", {u"Text"})
            .method<&TextStream::WriteLine>(u"WriteLine", {Parameter(u"Text").otherwise(u"")})
            .method<&TextStream::WriteBlankLines>(u"WriteBlankLines", {u"Lines"})
            .method<&TextStream::Skip>(u"Skip", {u"Characters"})
            .method<&TextStream::SkipLine>(u"SkipLine")
            .method<&TextStream::Close>(u"Close")
            .build();
    return description;
}

void TextStream::checkOpen() const {
    if (!open_) {
        throw AutomationError(errors::kObjectNotSet);
    }
}

void TextStream::checkReading() const {
    checkOpen();
    if (output_) {
        throw AutomationError(errors::kBadFileMode);
    }
}

void TextStream::checkNotAtEnd() const {
    checkReading();
    if (position_ == text_.size()) {
        throw AutomationError(errors::kInputPastEnd);
    }
}

bool TextStream::AtEndOfStream() {
    checkReading();
    return position_ == text_.size();
}

bool TextStream::AtEndOfLine() {
    checkReading();
    return position_ == text_.size() || text_[position_] == u'\n' || text_[position_] == u'\r';
}

std::int32_t TextStream::Line() {
    checkOpen();
    return line_;
}

std::int32_t TextStream::Column() {
    checkOpen();
    return column_;
}

// Counts lines and columns over a text that is read or written.
void TextStream::pass(std::u16string_view text) {
    for (const char16_t unit : text) {
        ++column_;
        if (unit == u'\n') {
            ++line_;
            column_ = 1;
        }
    }
}

std::u16string TextStream::take(std::size_t count) {
    std::u16string taken = text_.substr(position_, count);
    position_ += taken.size();
    pass(taken);
    return taken;
}

String TextStream::Read(std::int32_t characters) {
    checkNotAtEnd();
    return take(countOf(characters));
}

String TextStream::ReadLine() {
    checkNotAtEnd();
    const std::size_t end = std::min(text_.find(u'\n', position_), text_.size() - 1);
    std::u16string line = take(end + 1 - position_);
    if (line.ends_with(u'\n')) {
        line.pop_back();
    }
    if (line.ends_with(u'\r')) {
        line.pop_back();
    }
    return line;
}

String TextStream::ReadAll() {
    checkNotAtEnd();
    return take(text_.size() - position_);
}

void TextStream::Skip(std::int32_t characters) {
    checkNotAtEnd();
    take(countOf(characters));
}

void TextStream::SkipLine() {
    static_cast<void>(ReadLine());
}

void TextStream::put(std::u16string_view text) {
    checkOpen();
    if (!output_) {
        throw AutomationError(errors::kBadFileMode);
    }
    if (!unicode_) {
        output_->write(String(text).utf8());
    } else if (output_->size() == 0) {
        output_->write(encodeText(TextEncoding::Utf16Marked, text).value_or(""));
    } else {
        output_->write(utf16Bytes(text));
    }
    pass(text);
}

void TextStream::Write(const String& text) {
    put(text);
}

void TextStream::WriteLine(const String& text) {
    put(text.units() + std::u16string(kLineEnd));
}

void TextStream::WriteBlankLines(std::int32_t lines) {
    std::u16string text;
    for (std::size_t i = 0; i < countOf(lines); ++i) {
        text += kLineEnd;
    }
    put(text);
}

void TextStream::Close() {
    checkOpen();
    output_.reset();
    text_.clear();
    open_ = false;
}

Ref<TextStream> openTextStream(const std::filesystem::path& file, std::int32_t ioMode, bool create,
                               std::int32_t format) {
    constexpr std::int32_t kUnicode = -1;
    using Begin = OutputFile::Begin;
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored)) {
        if (!create) {
            throwFileError(std::make_error_code(std::errc::no_such_file_or_directory), file);
        }
        const OutputFile made(file, Begin::Empty);
    }
    switch (static_cast<IoMode>(ioMode)) {
        case IoMode::Reading:
            return make<TextStream>(file);
        case IoMode::Writing:
            return make<TextStream>(std::make_unique<OutputFile>(file, Begin::Empty),
                                    format == kUnicode);
        case IoMode::Appending:
            return make<TextStream>(std::make_unique<OutputFile>(file, Begin::AtEnd),
                                    format == kUnicode);
    }
    throw AutomationError(errors::kInvalidArgument);
}

}  // namespace kap::platform::files

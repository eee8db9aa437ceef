#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <kaputil/automation/class_description.hpp>
#include <kaputil/base/export.hpp>
#include <kaputil/data/enumerations.hpp>

namespace kap::ado {

// Bytes or text in memory, read and written from a position on, loaded from files and saved to
// them.
//
//     auto stream = kap::make<kap::ado::Stream>();
//     stream->setCharset(u"utf-8");
//     stream->Open();
//     stream->WriteText(u"Perché", StreamWriteEnum::adWriteLine);
//     stream->SaveToFile(u"nota.txt", SaveOptionsEnum::adSaveCreateOverWrite);
//
// Positions and sizes are bytes, of texts too. Every member but the properties that say how it is
// opened raises 3704 while the stream is closed.
class KAPUTIL_EXPORT Stream final : public DescribedObject {
public:
    Stream();
    ~Stream() override;
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    // The encoding of its text: "Unicode" (UTF-16, the default), "utf-8", "us-ascii", "iso-8859-1",
    // "iso-8859-15", "windows-1252", "ibm850" and the other names of these. A text in UTF-16 or
    // UTF-8 begins with the byte order mark, which reading passes over. Raises 3001 for a name that
    // is not known, 3219 when assigned while the position is not 0.
    [[nodiscard]] String Charset() const { return charset_; }
    void setCharset(const String& value);
    // Whether the position is behind the last byte.
    [[nodiscard]] bool EOS() const;
    // What ends a line: adCRLF unless assigned.
    [[nodiscard]] LineSeparatorEnum LineSeparator() const { return separator_; }
    void setLineSeparator(LineSeparatorEnum value);
    // adModeRead: nothing can be written. Raises 3705 when assigned while open.
    [[nodiscard]] ConnectModeEnum Mode() const { return mode_; }
    void setMode(ConnectModeEnum value);
    // From 0. Assigning one behind the end makes the stream longer, by bytes of 0; raises 3001 for
    // less than 0.
    [[nodiscard]] std::int32_t Position() const;
    void setPosition(std::int32_t value);
    [[nodiscard]] std::int32_t Size() const;
    [[nodiscard]] ObjectStateEnum State() const;
    // adTypeText, the default, or adTypeBinary. Raises 3219 when assigned while the position is not
    // 0.
    [[nodiscard]] StreamTypeEnum Type() const { return type_; }
    void setType(StreamTypeEnum value);

    // Opens it empty. Raises 3705 when it is open already, 3251 for a source: files are loaded with
    // LoadFromFile.
    void Open(const Variant& source = Variant::missing(),
              ConnectModeEnum mode = ConnectModeEnum::adModeUnknown, std::int32_t options = -1,
              const String& userName = {}, const String& password = {});
    void Close();
    // What is written is there at once: nothing to flush, and nothing to cancel.
    void Flush();
    void Cancel() {}

    // The next bytes, as an array; -1 (adReadAll): all that are left. Null at the end. Raises 3219
    // in a text.
    [[nodiscard]] Variant Read(std::int32_t numBytes = -1);
    // Puts an array of bytes at the position. Raises 3219 in a text, 3001 for anything else.
    void Write(const Variant& buffer);
    // The next characters; -1 (adReadAll): all that are left, -2 (adReadLine): up to the next line
    // separator, which is passed over. Raises 3219 in a binary.
    [[nodiscard]] String ReadText(std::int32_t numChars = -1);
    void WriteText(const String& data, StreamWriteEnum options = StreamWriteEnum::adWriteChar);
    void SkipLine();
    // The stream ends at the position.
    void SetEOS();
    // Puts characters (of texts) or bytes from the position on into another stream, at its
    // position; -1 is all. Raises 3219 for a binary copied into a text.
    void CopyTo(const Ref<Stream>& destination, std::int32_t charNumber = -1);

    // Takes the content of a file in the place of its own, with the position at 0. Raises 3002 when
    // the file cannot be read.
    void LoadFromFile(const String& fileName);
    // Raises 3004 when the file is there and `options` do not say adSaveCreateOverWrite, and when
    // it cannot be written. The position is 0 afterwards.
    void SaveToFile(const String& fileName,
                    SaveOptionsEnum options = SaveOptionsEnum::adSaveCreateNotExist);

    // The bytes, for the library's own readers and writers.
    [[nodiscard]] const std::string& bytes() const;
    void assign(std::string bytes);

private:
    void requireOpen() const;
    void requireStart() const;
    void requireType(StreamTypeEnum type) const;
    void requireWritable() const;
    void put(std::string_view bytes);
    void skipMark();
    [[nodiscard]] std::size_t endOfCharacters(std::int32_t count) const;
    [[nodiscard]] String takeText(std::size_t end);
    [[nodiscard]] String takeLine();

    bool open_ = false;
    StreamTypeEnum type_ = StreamTypeEnum::adTypeText;
    String charset_ = u"Unicode";
    LineSeparatorEnum separator_ = LineSeparatorEnum::adCRLF;
    ConnectModeEnum mode_ = ConnectModeEnum::adModeUnknown;
    std::string bytes_;
    std::size_t position_ = 0;
};

}  // namespace kap::ado

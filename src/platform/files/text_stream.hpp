#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include <kaputil/automation/class_description.hpp>

#include "platform/output_file.hpp"
#include "platform/text_encoding.hpp"

namespace kap::platform::files {

// What a file is opened for, in the numbers of the file-system object.
enum class IoMode : std::uint8_t { Reading = 1, Writing = 2, Appending = 8 };

// A text file that is read or written. Lines are read whatever they end in, and written with CR LF.
//
// A file is read in its own encoding, by its mark or by what it holds, and written in UTF-8, or in
// UTF-16 with its mark when it is opened as Unicode. Each writing member puts its whole text into
// the file at once. Raises 54 for reading what is open for writing and the other way round, 62 for
// reading beyond the end, 91 after Close.
class TextStream final : public DescribedObject {
public:
    // For reading.
    explicit TextStream(const std::filesystem::path& file);
    // For writing.
    TextStream(std::unique_ptr<OutputFile> file, bool unicode);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] bool AtEndOfStream();
    [[nodiscard]] bool AtEndOfLine();
    [[nodiscard]] std::int32_t Line();
    [[nodiscard]] std::int32_t Column();

    [[nodiscard]] String Read(std::int32_t characters);
    [[nodiscard]] String ReadLine();
    [[nodiscard]] String ReadAll();
    void Skip(std::int32_t characters);
    void SkipLine();

    void Write(const String& text);
    void WriteLine(const String& text);
    void WriteBlankLines(std::int32_t lines);
    void Close();

private:
    void checkOpen() const;
    void checkReading() const;
    void checkNotAtEnd() const;
    std::u16string take(std::size_t count);
    void put(std::u16string_view text);
    void pass(std::u16string_view text);

    bool open_ = true;
    std::u16string text_;  // of a file that is read
    std::size_t position_ = 0;
    std::unique_ptr<OutputFile> output_;  // null: for reading
    bool unicode_ = false;
    std::int32_t line_ = 1;
    std::int32_t column_ = 1;
};

// Opens a file as the file-system object's members do: 53 when it is not there and not to be made,
// 5 for a mode that does not exist. Format: 0 and -2 for UTF-8, -1 for Unicode.
[[nodiscard]] Ref<TextStream> openTextStream(const std::filesystem::path& file, std::int32_t ioMode,
                                             bool create, std::int32_t format);

}  // namespace kap::platform::files

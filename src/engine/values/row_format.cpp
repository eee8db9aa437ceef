#include "engine/values/row_format.hpp"

#include <cstdint>

#include <kaputil/automation/plain_text.hpp>

#include "engine/values/value.hpp"

namespace kap::engine {
namespace {

// Texts with their lengths before them: "3:abc". A number is a text of its digits.
class FormatPacker {
public:
    void put(std::string_view text) {
        packed_ += plain::text(static_cast<std::int64_t>(text.size())) + ":";
        packed_ += text;
    }
    void put(std::int64_t number) { put(std::string_view(plain::text(number))); }
    void put(const std::optional<std::string>& text) {
        put(std::int64_t{text ? 1 : 0});
        put(text ? std::string_view(*text) : std::string_view());
    }
    [[nodiscard]] std::string packed() && { return std::move(packed_); }

private:
    std::string packed_;
};

class FormatUnpacker {
public:
    explicit FormatUnpacker(std::string_view packed) : rest_(packed) {}

    std::string text() {
        const std::size_t colon = rest_.find(':');
        const auto size = static_cast<std::size_t>(
            plain::readWhole(rest_.substr(0, colon)).value_or(std::int64_t{0}));
        std::string result(rest_.substr(colon + 1, size));
        rest_.remove_prefix(colon + 1 + size);
        return result;
    }
    std::int64_t number() { return plain::readWhole(text()).value_or(std::int64_t{0}); }
    std::size_t size() { return static_cast<std::size_t>(number()); }
    bool flag() { return number() != 0; }
    std::optional<std::string> optionalText() {
        const bool given = flag();
        std::string value = text();
        return given ? std::optional(std::move(value)) : std::nullopt;
    }

private:
    std::string_view rest_;
};

}  // namespace

std::string packRowFormat(const RowFormat& format) {
    const tsql::RowsAsText& options = format.options;
    FormatPacker packer;
    packer.put(static_cast<std::int64_t>(options.language));
    packer.put(static_cast<std::int64_t>(options.mode));
    packer.put(options.rowName);
    packer.put(options.root);
    for (const bool flag : {options.elements, options.marksNulls, options.binary, options.typed,
                            options.withoutArray}) {
        packer.put(std::int64_t{flag ? 1 : 0});
    }
    packer.put(static_cast<std::int64_t>(format.levels.size()));
    for (const std::string& level : format.levels)
        packer.put(std::string_view(level));
    packer.put(static_cast<std::int64_t>(format.columns.size()));
    for (const FormattedColumn& column : format.columns) {
        packer.put(std::string_view(column.name));
        packer.put(packType(column.type));
        packer.put(static_cast<std::int64_t>(column.markup));
        packer.put(static_cast<std::int64_t>(column.level));
        packer.put(static_cast<std::int64_t>(column.comparison));
    }
    return std::move(packer).packed();
}

RowFormat unpackRowFormat(std::string_view packed) {
    FormatUnpacker unpacker(packed);
    RowFormat format;
    tsql::RowsAsText& options = format.options;
    options.language = static_cast<tsql::RowsAsText::Language>(unpacker.number());
    options.mode = static_cast<tsql::RowsAsText::Mode>(unpacker.number());
    options.rowName = unpacker.optionalText();
    options.root = unpacker.optionalText();
    for (bool* flag : {&options.elements, &options.marksNulls, &options.binary, &options.typed,
                       &options.withoutArray}) {
        *flag = unpacker.flag();
    }
    format.levels.resize(unpacker.size());
    for (std::string& level : format.levels)
        level = unpacker.text();
    format.columns.resize(unpacker.size());
    for (FormattedColumn& column : format.columns) {
        column.name = unpacker.text();
        column.type = unpackType(unpacker.number());
        column.markup = static_cast<Markup>(unpacker.number());
        column.level = unpacker.size();
        column.comparison = static_cast<RowComparison>(unpacker.number());
    }
    return format;
}

}  // namespace kap::engine

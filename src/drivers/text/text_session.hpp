#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include <kaputil/automation/string.hpp>

#include "data/driver.hpp"
#include "drivers/text/line_writer.hpp"
#include "platform/output_file.hpp"

namespace kap::ado::text_files {

// Rows of a result that are to be copied into a file.
struct CopiedRows {
    const ado::Result* result = nullptr;
    // Puts the rows behind those of the result into their place; false when there are none.
    std::function<bool()> next;
    // What stands for Null and for the text `replaced`, cut to the width of its column.
    std::string replaced;
    std::string instead;
    std::function<void(std::int64_t done)> progress;  // told after each row; may be empty
};

// The text files of one folder.
class TextSession final : public ado::Session {
public:
    explicit TextSession(std::filesystem::path folder);
    ~TextSession() override;

    void execute(ado::Request& request, ado::Reply& reply) override;
    ado::ChangeOutcome apply(const ado::RowChange& change) override;
    void begin() override;
    void commit() override;
    void rollback() override {}
    [[nodiscard]] int transactionDepth() const override { return 0; }

    // Adds many rows to a file at once, as if each were applied. A column of the file takes the
    // last of the result's columns that have its name; without one it stays blank.
    void copy(const String& name, const CopiedRows& copied);

private:
    class Table;
    [[nodiscard]] Table& table(const String& name);

    std::filesystem::path folder_;
    std::map<std::u16string, std::unique_ptr<Table>> tables_;
};

}  // namespace kap::ado::text_files

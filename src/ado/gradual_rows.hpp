#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "data/driver.hpp"
#include "platform/helper_thread.hpp"

namespace kap::ado {

// Rows that a thread of the library's own fetches while their client does something else.
class GradualRows final : public RowSource {
public:
    // Raises std::system_error when the system has no thread left.
    GradualRows(std::shared_ptr<RowSource> source, const std::vector<ColumnInfo>& columns);
    // Ends the fetching; what has not come is lost.
    ~GradualRows() override;
    GradualRows(const GradualRows&) = delete;
    GradualRows& operator=(const GradualRows&) = delete;

    void fetch(std::vector<ColumnStore>& rows) override;
    [[nodiscard]] bool fetchSome(std::vector<ColumnStore>& rows) override;
    [[nodiscard]] bool fetchReady(std::vector<ColumnStore>& rows) override;

    // Waits until all rows have come, so that the connection can be used for something else.
    void waitForAll();
    // No more rows are fetched; who asks for them gets 3712.
    void cancel();

private:
    enum class Wanted { WhatIsHere, Something, All };
    void run() noexcept;
    bool take(std::vector<ColumnStore>& rows, Wanted wanted);
    void appendEach(std::vector<ColumnStore>& to, const std::vector<ColumnStore>& from) const;

    std::shared_ptr<RowSource> source_;
    std::vector<bool> holdsBytes_;  // by column
    std::mutex guard_;
    std::condition_variable changed_;
    std::vector<ColumnStore> here_;
    bool over_ = false;
    bool stopped_ = false;
    bool cancelled_ = false;
    std::exception_ptr failure_;
    platform::HelperThread thread_;
};

}  // namespace kap::ado

#pragma once

#include "data/driver.hpp"

namespace kap::ado::text_files {

// Text files of a folder as tables to which rows are added, each described by the folder's
// Schema.ini. It answers to the name of the platform's text driver:
//
//     Driver={Microsoft Text Driver (*.txt; *.csv)};Dbq=/srv/scambio
//
// Every column reads as a text of the column's width, so that a value is written as it is given;
// what it must look like is up to the file's schema.
class TextDriver final : public ado::Driver {
public:
    // Offers the driver under its name from the first call on.
    static void offer();

    // Raises the data-access error of a database that cannot be opened when `Dbq` names no folder.
    [[nodiscard]] std::unique_ptr<ado::Session> open(const ado::ConnectionString& keys,
                                                     std::chrono::seconds timeout) const override;
};

}  // namespace kap::ado::text_files

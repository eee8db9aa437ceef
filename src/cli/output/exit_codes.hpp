#pragma once

namespace kap::cli {

// What the command line tells the shell. Scripts compare these numbers.
inline constexpr int kSuccess = 0;
inline constexpr int kFailed = 1;      // the work itself failed: an error in a script, a wrong step
inline constexpr int kWrongUsage = 2;  // arguments that make no sense, or a file that is no script
inline constexpr int kNoDatabase = 3;  // the database could not be opened
inline constexpr int kAnomalies = 4;   // the work was done, and found what it was to fail on

}  // namespace kap::cli

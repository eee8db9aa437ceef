#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Stands between a program and the host's file functions: a test lets the n-th call fail, ends the
// process at it, or writes down what was written.
//
// A program that is linked with this library has its calls, and those of the libraries it uses,
// counted. Nothing is done to files outside the folder that a test names.
namespace kap::faults {

enum class Call : std::uint8_t { Open, Read, Write, Sync, Truncate, Rename, Unlink, Lock, Map };

// Which call fails, and how.
struct Fault {
    std::string folder{};       // files whose path has this in it
    std::vector<Call> calls{};  // empty: any
    int nth = 1;                // of these calls, from 1; 0: none
    int error = 0;              // what errno says; kKill ends the process without a word
    bool andAllAfter = false;   // a disk that stays full
    std::string nameEnd{};      // only files whose name ends like this; empty: any
    bool onlyCreating = false;  // of Open: only when it may make the file
};

inline constexpr int kKill = -1;

// From now on, until `stop`.
void start(const Fault& fault);

struct Outcome {
    int calls = 0;  // that the fault might have been in
    bool failed = false;
    std::string which{};  // the call and the file
};
Outcome stop();

// What was done to files, in order.
struct Event {
    enum class Kind : std::uint8_t { Write, Truncate, Sync, Remove, Rename, Mark };
    Kind kind = Kind::Mark;
    std::string path{};
    std::string other{};  // the new name
    std::int64_t offset = 0;
    std::string bytes{};  // written; of a mark its text
};

// Writes down what is done to files of a folder, until `stopRecording`.
void startRecording(const std::string& folder);
void mark(const std::string& text);
std::vector<Event> stopRecording();

}  // namespace kap::faults

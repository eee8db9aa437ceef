#pragma once

// Where this build's sources and programs are: absolute paths without a separator at the end. They
// stand in one small source file that the build writes, so that every other object of a clone is
// the same as in another clone, and the compiler's cache serves both.
namespace kap::test {

extern const char* const kSourceFolder;    // the root of the repository
extern const char* const kBuildFolder;     // what belongs to this preset
extern const char* const kTestPrograms;    // programs that tests start in a process of their own
extern const char* const kCommandLine;     // the program kaputil
extern const char* const kFuzzingSamples;  // texts that fuzzing begins with

}  // namespace kap::test

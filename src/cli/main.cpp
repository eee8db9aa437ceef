// The command line of the library.
#ifdef _WIN32
#include <windows.h>

#include <filesystem>
#endif

#include <string>
#include <vector>

#include "cli/command_reader.hpp"

#ifdef _WIN32
// The system gives arguments in its own code page; the whole of them it tells when it is asked.
int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::u8string argument = std::filesystem::path(argv[i]).u8string();
        arguments.emplace_back(argument.begin(), argument.end());
    }
    SetConsoleOutputCP(CP_UTF8);
    return kap::cli::runCommandLine(std::move(arguments));
}
#else
int main(int argc, char** argv) {
    return kap::cli::runCommandLine({argv + 1, argv + argc});
}
#endif

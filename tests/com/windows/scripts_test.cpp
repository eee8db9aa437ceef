#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "script_engine.hpp"

// Every script of tests/com/scripts in a script engine inside this process, where its leaks show.
namespace kap::test {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> scripts() {
    const wchar_t* folder = _wgetenv(L"KAPUTIL_SCRIPTS");
    std::vector<fs::path> all;
    if (folder != nullptr) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            all.push_back(entry.path());
        }
    }
    std::ranges::sort(all);
    return all;
}

std::wstring textOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    const String text = bytes.str();
    return {text.view().begin(), text.view().end()};
}

class RegisteredScript : public testing::TestWithParam<fs::path> {};

TEST_P(RegisteredScript, RunsAndLeavesNothingBehind) {
    const Apartment apartment;
    const wchar_t* language = GetParam().extension() == ".vbs" ? L"VBScript" : L"JScript";
    EXPECT_EQ("", ScriptEngine::run(language, textOf(GetParam())));
    const HMODULE module = GetModuleHandleW(L"KapUtil26.dll");
    ASSERT_NE(nullptr, module) << "the script has not used the library";
    const auto canUnloadNow = reinterpret_cast<HRESULT(WINAPI*)()>(
        reinterpret_cast<void*>(GetProcAddress(module, "DllCanUnloadNow")));
    EXPECT_EQ(S_OK, canUnloadNow()) << "objects are left";
}

INSTANTIATE_TEST_SUITE_P(Scripts, RegisteredScript, testing::ValuesIn(scripts()),
                         [](const auto& parameter) {
                             std::string name = parameter.param.filename().string();
                             std::ranges::replace(name, '.', '_');
                             return name;
                         });

TEST(RegisteredEngine, ShowsTheFailureOfAScript) {
    const Apartment apartment;
    EXPECT_NE("", ScriptEngine::run(L"VBScript", L"Err.Raise 5"));
}

}  // namespace
}  // namespace kap::test

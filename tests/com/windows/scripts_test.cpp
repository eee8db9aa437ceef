#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <kaputil/catalogue/create_object.hpp>

#include "automation/class_builder.hpp"
#include "com/served_classes.hpp"
#include "platform/win32/automation/com_object.hpp"
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
            if (entry.is_regular_file()) {
                all.push_back(entry.path());
            }
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

// Makes the library's objects from the module under test, and all others as the library does.
class Host final : public DescribedObject {
public:
    explicit Host(const Module& module) : module_(module) {}
    static const ClassDescription& classDescription() {
        static const ClassDescription description = ClassBuilder<Host>(u"Host", u"", u"")
                                                        .method<&Host::Create>(u"Create", {u"name"})
                                                        .build();
        return description;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    Ref<Object> Create(const String& name) {
        for (const com::ServedClass& served : com::servedClasses()) {
            if (served.programmaticName == name) {
                return platform::automation::objectBehind(module_.create(served.classId).get());
            }
        }
        return createObject(name);
    }

private:
    const Module& module_;
};

class Scripts : public testing::TestWithParam<fs::path> {};

TEST_P(Scripts, RunAndLeaveNothingBehind) {
    const Apartment apartment;
    const Module module;
    const wchar_t* language = GetParam().extension() == ".vbs" ? L"VBScript" : L"JScript";
    {
        Pointer<IDispatch> host;
        *host.out() = platform::automation::dispatchOf(make<Host>(module));
        EXPECT_EQ("", ScriptEngine::run(language, textOf(GetParam()), host));
    }
    EXPECT_TRUE(module.isIdle()) << "objects are left";
}

INSTANTIATE_TEST_SUITE_P(All, Scripts, testing::ValuesIn(scripts()), [](const auto& parameter) {
    std::string name = parameter.param.filename().string();
    std::ranges::replace(name, '.', '_');
    return name;
});

TEST(RegisteredClass, IsMadeByItsNameAndGoes) {
    const Apartment apartment;
    const Module module;
    {
        CLSID identity{};
        ASSERT_EQ(S_OK, CLSIDFromProgID(L"kaputil.cproprieta", &identity));
        Pointer<IDispatch> made;
        ASSERT_EQ(S_OK, CoCreateInstance(identity, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                         made.outVoid()));
        EXPECT_FALSE(module.isIdle());
    }
    EXPECT_TRUE(module.isIdle());
}

TEST(ScriptEngines, ShowTheFailureOfAScript) {
    const Apartment apartment;
    EXPECT_NE("", ScriptEngine::run(L"VBScript", L"Err.Raise 5", {}));
}

}  // namespace
}  // namespace kap::test

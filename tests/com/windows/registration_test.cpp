#include <kaputil/catalogue/catalogue.hpp>
#include <kaputil/platform/registry.hpp>

#include "com/served_classes.hpp"
#include "dispatch_client.hpp"

namespace kap::test {
namespace {

namespace registry = platform::registry;

const std::u16string kMachine = u"HKEY_LOCAL_MACHINE\\Software\\Classes\\";
const std::u16string kUser = u"HKEY_CURRENT_USER\\Software\\Classes\\";

// The type library's places for the module's own bitness and for the other one, and what shows the
// registry of that.
constexpr bool kIs64 = sizeof(void*) == 8;
const std::u16string kOwnPlatform = kIs64 ? u"win64" : u"win32";
const std::u16string kOtherPlatform = kIs64 ? u"win32" : u"win64";
constexpr REGSAM kOtherBitness = kIs64 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

bool systemKnowsBothBitnesses() {
    BOOL emulated = FALSE;
    return kIs64 || (IsWow64Process(GetCurrentProcess(), &emulated) != FALSE && emulated != FALSE);
}

std::u16string braced(const String& identity) {
    return u"{" + identity.units() + u"}";
}

String valueAt(const std::u16string& key, std::u16string_view name = {}) {
    const auto value = registry::value(key, name);
    return value ? registry::textOf(*value) : String(u"(none)");
}

// Whether anything of the library is left under a root.
std::vector<String> leftUnder(const std::u16string& root) {
    std::vector<String> left;
    const auto look = [&](const std::u16string& key) {
        if (registry::hasKey(root + key)) {
            left.emplace_back(key);
        }
    };
    for (const com::ServedClass& one : com::servedClasses()) {
        look(one.programmaticName.units());
        look(u"CLSID\\" + braced(one.classId));
    }
    for (const com::TypeLibrary& types : com::typeLibraries()) {
        for (const PublishedClass& one : types.classes) {
            look(u"Interface\\" + braced(one.interfaceId));
        }
        look(u"TypeLib\\" + braced(types.identity));
    }
    return left;
}

void expectEverythingUnder(const std::u16string& root) {
    for (const com::ServedClass& one : com::servedClasses()) {
        const std::u16string key = root + u"CLSID\\" + braced(one.classId);
        EXPECT_EQ(one.programmaticName, valueAt(key + u"\\ProgID"));
        EXPECT_EQ(u"Apartment", valueAt(key + u"\\InprocServer32", u"ThreadingModel").view());
        EXPECT_EQ(braced(one.classId),
                  valueAt(root + one.programmaticName.units() + u"\\CLSID").view());
    }
    for (const com::TypeLibrary& types : com::typeLibraries()) {
        for (const PublishedClass& one : types.classes) {
            EXPECT_EQ(one.interfaceName, valueAt(root + u"Interface\\" + braced(one.interfaceId)));
        }
        const std::u16string key = root + u"TypeLib\\" + braced(types.identity) + u"\\1.0";
        EXPECT_EQ(types.description, valueAt(key));
        const String path = valueAt(key + u"\\0\\" + kOwnPlatform);
        Pointer<ITypeLib> loaded;
        EXPECT_EQ(S_OK, LoadTypeLibEx(platform::wide(path), REGKIND_NONE, loaded.out()))
            << path.utf8();
    }
}

// Every key under a root, with those below.
std::vector<String> keysUnder(const std::u16string& root) {
    std::vector<String> keys;
    for (const String& name : registry::keysBelow(root)) {
        const std::u16string key = root + u"\\" + name.units();
        keys.emplace_back(key);
        const auto more = keysUnder(key);
        keys.insert(keys.end(), more.begin(), more.end());
    }
    return keys;
}

class Unregistered : public testing::Test {
protected:
    Unregistered() {
        module_.get("DllRegisterServer", registerServer_);
        module_.get("DllUnregisterServer", unregisterServer_);
        module_.get("DllInstall", install_);
    }

    Apartment apartment_;
    Module module_;
    HRESULT(WINAPI* registerServer_)() = nullptr;
    HRESULT(WINAPI* unregisterServer_)() = nullptr;
    HRESULT(WINAPI* install_)(BOOL, PCWSTR) = nullptr;
};

TEST_F(Unregistered, TheModuleEntersAndRemovesEverything) {
    ASSERT_EQ(std::vector<String>(), leftUnder(kMachine));
    EXPECT_EQ(S_OK, registerServer_());
    EXPECT_EQ(S_OK, registerServer_()) << "again";
    expectEverythingUnder(kMachine);
    EXPECT_EQ(S_OK, unregisterServer_());
    EXPECT_EQ(std::vector<String>(), leftUnder(kMachine));
    EXPECT_EQ(S_OK, unregisterServer_()) << "of what is not there";
}

TEST_F(Unregistered, TheModuleIsRegisteredForTheUserAlone) {
    const auto before = keysUnder(u"HKEY_CURRENT_USER\\Software");
    EXPECT_EQ(S_OK, install_(TRUE, L"user"));
    EXPECT_EQ(std::vector<String>(), leftUnder(kMachine));
    expectEverythingUnder(kUser);
    EXPECT_EQ(S_OK, install_(FALSE, L"user"));
    EXPECT_EQ(std::vector<String>(), leftUnder(kUser));
    EXPECT_EQ(before, keysUnder(u"HKEY_CURRENT_USER\\Software")) << "an empty key is left";
}

TEST_F(Unregistered, TheUsersOwnClassesStay) {
    const std::u16string others = kUser + u"CLSID\\{7d1f5b53-5d0b-4b53-9c56-1f5f6f7d1aff}";
    registry::createKey(others);
    EXPECT_EQ(S_OK, install_(TRUE, L"user"));
    EXPECT_EQ(S_OK, install_(FALSE, L"user"));
    EXPECT_TRUE(registry::hasKey(others));
    registry::deleteKey(others);
    for (const std::u16string& key : {kUser + u"CLSID", kUser.substr(0, kUser.size() - 1)}) {
        if (registry::keysBelow(key).empty()) {
            registry::deleteKey(key);
        }
    }
}

TEST_F(Unregistered, AnotherBitnessKeepsItsTypeLibrary) {
    const std::u16string other =
        kMachine + u"TypeLib\\" + braced(library().typeLibraryId) + u"\\1.0\\0\\" + kOtherPlatform;
    EXPECT_EQ(S_OK, registerServer_());
    registry::createKey(other);
    EXPECT_EQ(S_OK, unregisterServer_());
    EXPECT_TRUE(registry::hasKey(other));
    registry::deleteKey(kMachine + u"TypeLib\\" + braced(library().typeLibraryId));
}

TEST_F(Unregistered, TheEventLogShowsTheModulesMessages) {
    const std::u16string source =
        u"HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\"
        u"KapUtil26";
    EXPECT_EQ(S_OK, registerServer_());
    EXPECT_EQ(u"%SystemRoot%\\System32\\EventCreate.exe",
              valueAt(source, u"EventMessageFile").view());
    EXPECT_EQ(S_OK, unregisterServer_());
    EXPECT_FALSE(registry::hasKey(source));
}

// The classes' identities are kept for each bitness, their names are not.
TEST_F(Unregistered, AnotherBitnessKeepsItsNames) {
    if (!systemKnowsBothBitnesses()) {
        GTEST_SKIP() << "this Windows knows 32 bits only";
    }
    const com::ServedClass& one = com::servedClasses().front();
    const std::u16string path = u"Software\\Classes\\CLSID\\" + braced(one.classId);
    HKEY other = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              RegCreateKeyExW(HKEY_LOCAL_MACHINE, platform::wide(path), 0, nullptr, 0,
                              KEY_WRITE | DELETE | kOtherBitness, nullptr, &other, nullptr));
    RegCloseKey(other);
    EXPECT_EQ(S_OK, registerServer_());
    EXPECT_EQ(S_OK, unregisterServer_());
    EXPECT_EQ((std::vector<String>{one.programmaticName}), leftUnder(kMachine));
    EXPECT_EQ(ERROR_SUCCESS,
              RegDeleteKeyExW(HKEY_LOCAL_MACHINE, platform::wide(path), kOtherBitness, 0));
    EXPECT_EQ(S_OK, unregisterServer_());
    EXPECT_EQ(std::vector<String>(), leftUnder(kMachine));
}

TEST_F(Unregistered, AManifestServesProgramsWithoutRegistration) {
    const std::wstring path = Module::path();
    const std::wstring folder = path.substr(0, path.find_last_of(L"\\/"));
    const std::wstring manifest = folder + L"\\KapUtil26.manifest";
    ACTCTXW context{};
    context.cbSize = sizeof context;
    context.dwFlags = ACTCTX_FLAG_ASSEMBLY_DIRECTORY_VALID;
    context.lpSource = manifest.c_str();
    context.lpAssemblyDirectory = folder.c_str();
    void* made = CreateActCtxW(&context);
    ASSERT_NE(INVALID_HANDLE_VALUE, made) << GetLastError();
    ULONG_PTR cookie = 0;
    ASSERT_TRUE(ActivateActCtx(made, &cookie));
    CLSID identity{};
    EXPECT_EQ(S_OK, CLSIDFromProgID(L"KapUtil.CProprieta", &identity));
    {
        Pointer<IDispatch> bag;
        EXPECT_EQ(S_OK, CoCreateInstance(identity, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                         bag.outVoid()));
        if (bag) {
            call(bag, L"Scrivi", L"A", 1);
            EXPECT_EQ(L"1", call(bag, L"Leggi", L"A").text());
        }
    }
    DeactivateActCtx(0, cookie);
    ReleaseActCtx(made);
}

}  // namespace
}  // namespace kap::test

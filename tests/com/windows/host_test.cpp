#include "dispatch_client.hpp"

// What reaches the host of the module.
namespace kap::test {
namespace {

std::string& seenKeys() {
    static std::string keys;
    return keys;
}

// Left and right Shift, Ctrl and Alt are one key each to those who press them.
DWORD eitherSide(DWORD key) {
    return key >= VK_LSHIFT && key <= VK_RMENU ? VK_SHIFT + (key - VK_LSHIFT) / 2 : key;
}

// Writes down what is pressed (+) and released (-), and keeps it from every window.
LRESULT CALLBACK seeKey(int code, WPARAM message, LPARAM event) {
    if (code != HC_ACTION) {
        return CallNextHookEx(nullptr, code, message, event);
    }
    const auto* key = reinterpret_cast<const KBDLLHOOKSTRUCT*>(event);
    const bool released = message == WM_KEYUP || message == WM_SYSKEYUP;
    seenKeys() += (released ? '-' : '+') + std::to_string(eitherSide(key->vkCode)) + ' ';
    return 1;
}

class KeyEvents : public testing::Test {
protected:
    KeyEvents() : hook_(SetWindowsHookExW(WH_KEYBOARD_LL, &seeKey, GetModuleHandleW(nullptr), 0)) {
        EXPECT_NE(nullptr, hook_) << GetLastError();
    }
    ~KeyEvents() override { UnhookWindowsHookEx(hook_); }

    // The keys that a call sends.
    std::string sent(const wchar_t* keys) {
        seenKeys().clear();
        call(functions_, L"kapSendKeys", keys);
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            DispatchMessageW(&message);
        }
        return seenKeys();
    }

private:
    Apartment apartment_;
    Module module_;
    Pointer<IDispatch> functions_ = module_.create(kGeneralFunctions);
    HHOOK hook_;
};

TEST_F(KeyEvents, ArePressedInOrderAndReleasedInReverse) {
    EXPECT_EQ("+9 -9 ", sent(L"{TAB}"));
    EXPECT_EQ("+16 +9 -9 -16 ", sent(L"+{TAB}"));
    EXPECT_EQ("+17 +36 -36 -17 ", sent(L"{^HOME}"));
    EXPECT_EQ("+17 +35 -35 -17 ", sent(L"{^END}"));
    EXPECT_EQ("+17 +33 -33 -17 ", sent(L"{^PGUP}"));
    EXPECT_EQ("+33 -33 ", sent(L"{PGUP}"));
    EXPECT_EQ("+17 +34 -34 -17 ", sent(L"{^PGDN}"));
    EXPECT_EQ("+34 -34 ", sent(L"{PGDN}"));
    EXPECT_EQ("+38 -38 ", sent(L"{UP}"));
    EXPECT_EQ("+40 -40 ", sent(L"{DOWN}"));
}

TEST_F(KeyEvents, HoldAltForTheLetterC) {
    EXPECT_EQ("+18 +67 -67 -18 ", sent(L"+C"));
}

TEST_F(KeyEvents, OfUnknownTextsAreNone) {
    EXPECT_EQ("", sent(L"{tab}"));
}

}  // namespace
}  // namespace kap::test

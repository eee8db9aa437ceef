#include "platform/posix/account.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include <kaputil/platform/user.hpp>

#include "platform/paths.hpp"

namespace kap::platform {

std::optional<Account> currentAccount() {
    constexpr std::size_t kLongest = 1 << 20;
    std::vector<char> buffer(1024);
    for (;;) {
        passwd entry{};
        passwd* found = nullptr;
        const int error = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
        if (error == ERANGE && buffer.size() < kLongest) {
            buffer.resize(buffer.size() * 2);
            continue;
        }
        if (error != 0 || found == nullptr) {
            return std::nullopt;
        }
        return Account{entry.pw_name, entry.pw_dir};
    }
}

std::optional<String> userName() {
    const auto account = currentAccount();
    if (!account || account->name.empty()) {
        return std::nullopt;
    }
    return pathText(account->name);
}

}  // namespace kap::platform

#include "platform/mail/contact_folder.hpp"

#include <algorithm>
#include <system_error>
#include <utility>

#include <kaputil/automation/error.hpp>
#include <kaputil/platform/folders.hpp>

#include "base/unicode.hpp"
#include "platform/file_errors.hpp"
#include "platform/folder_lock.hpp"
#include "platform/folder_names.hpp"
#include "platform/paths.hpp"
#include "platform/random_name.hpp"
#include "platform/whole_file.hpp"

namespace kap::platform::mail {
namespace {

namespace fs = std::filesystem;

bool isHidden(const fs::path& path) {
    return path.filename().string().starts_with('.');
}

template <class Wanted>
std::vector<fs::path> entriesOf(const fs::path& folder, Wanted wanted) {
    std::vector<fs::path> found;
    std::error_code error;
    std::error_code ignored;  // what is gone meanwhile is neither file nor folder
    if (!fs::is_directory(folder, error)) {
        return found;
    }
    for (const fs::path& name : namesIn(folder, error)) {
        const fs::directory_entry entry(folder / name, ignored);
        if (!isHidden(name) && wanted(entry)) {
            found.push_back(entry.path());
        }
    }
    checkFile(error);
    std::ranges::sort(found);
    return found;
}

bool isContact(const fs::directory_entry& entry) {
    std::error_code ignored;  // what cannot be looked at is no contact
    return entry.is_regular_file(ignored) &&
           unicode::sameName(pathText(entry.path().extension()), u".vcf");
}

bool canBeFolder(const String& name) {
    return !name.empty() && name[0] != u'.' &&
           name.view().find_first_of(std::u16string_view(u"/\\\0", 3)) == std::u16string_view::npos;
}

}  // namespace

fs::path contactStores() {
    return dataFolder() / "contacts";
}

fs::path defaultContactFolder() {
    fs::path folder = contactStores() / "Personale" / "Contatti";
    makePrivateFolder(folder);
    return folder;
}

std::vector<fs::path> foldersIn(const fs::path& folder) {
    return entriesOf(folder, [](const fs::directory_entry& entry) {
        std::error_code ignored;
        return entry.is_directory(ignored);
    });
}

std::vector<fs::path> contactsIn(const fs::path& folder) {
    return entriesOf(folder, isContact);
}

fs::path makeFolder(const fs::path& folder, const String& name) {
    if (!canBeFolder(name)) {
        throw AutomationError(errors::kBadFileName);
    }
    for (const fs::path& known : foldersIn(folder)) {
        if (unicode::sameName(pathText(known.filename()), name)) {
            throw AutomationError(errors::kFileAlreadyExists);
        }
    }
    fs::path made = folder / name.utf8();
    makePrivateFolder(made);
    return made;
}

std::optional<Card> readCard(const fs::path& file) {
    const auto bytes = readFile(file, kLargestSettings);
    return bytes ? Card::read(*bytes) : std::nullopt;
}

fs::path fileFor(const Card& card, const fs::path& folder) {
    std::string name = card.uid();
    name.erase(0, name.rfind(':') + 1);
    const bool usable = !name.empty() && std::ranges::all_of(name, [](char unit) {
        return unit == '-' || (unit >= '0' && unit <= '9') || (unit >= 'a' && unit <= 'z') ||
               (unit >= 'A' && unit <= 'Z');
    });
    fs::path file = folder / ((usable ? name : randomUuid()) + ".vcf");
    std::error_code ignored;
    return fs::exists(file, ignored) ? folder / (randomUuid() + ".vcf") : file;
}

Card changeCard(const fs::path& file, Card otherwise, const std::function<void(Card&)>& change) {
    const FolderLock lock(file.parent_path());
    Card card = readCard(file).value_or(std::move(otherwise));
    change(card);
    replaceFile(file, card.bytes(), FileAccess::Private);
    return card;
}

}  // namespace kap::platform::mail

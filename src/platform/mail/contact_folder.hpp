#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/mail/card.hpp"

// The user's contacts: a folder for each store, in it folders in folders, in these one file a
// contact, as address books read them.
namespace kap::platform::mail {

// The folder of the stores; it need not be there.
[[nodiscard]] std::filesystem::path contactStores();

// Where contacts go that are put nowhere else; made when it is missing.
[[nodiscard]] std::filesystem::path defaultContactFolder();

// The folders in a folder, and its contacts' files, sorted by name. None when the folder is not
// there.
[[nodiscard]] std::vector<std::filesystem::path> foldersIn(const std::filesystem::path& folder);
[[nodiscard]] std::vector<std::filesystem::path> contactsIn(const std::filesystem::path& folder);

// Makes a folder in a folder. Raises 52 for a name that no folder can have, 58 when it is there.
[[nodiscard]] std::filesystem::path makeFolder(const std::filesystem::path& folder,
                                               const String& name);

// The card in a file; nullopt when there is none in it.
[[nodiscard]] std::optional<Card> readCard(const std::filesystem::path& file);

// Where a new card of a folder goes.
[[nodiscard]] std::filesystem::path fileFor(const Card& card, const std::filesystem::path& folder);

// Writes the card in a file after `change` was done to it, or `otherwise` when there is none yet.
// Nobody else changes the folder meanwhile. Gives back the card.
[[nodiscard]] Card changeCard(const std::filesystem::path& file, Card otherwise,
                              const std::function<void(Card&)>& change);

}  // namespace kap::platform::mail

#include "platform/mail/draft.hpp"

#include <kaputil/automation/format.hpp>
#include <kaputil/platform/folders.hpp>

#include "automation/clock.hpp"
#include "platform/random_name.hpp"
#include "platform/whole_file.hpp"

namespace kap::platform::mail {

std::filesystem::path keepDraft(const Draft& draft) {
    const std::filesystem::path folder = dataFolder() / "drafts";
    makePrivateFolder(folder);
    const String when = convert::format(localNow(), uR"(yyyymmdd\-hhnnss)");
    std::filesystem::path file = folder / (when.utf8() + "-" + randomUuid() + ".eml");
    replaceFile(file, messageText(draft), FileAccess::Private);
    return file;
}

}  // namespace kap::platform::mail

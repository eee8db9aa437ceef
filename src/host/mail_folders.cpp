#include "host/mail_folders.hpp"

#include <exception>
#include <optional>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>
#include <kaputil/core/cproprieta.hpp>
#include <kaputil/platform/creatable_objects.hpp>

#include "automation/late_bound.hpp"

namespace kap::host {
namespace {

constexpr std::int16_t kContactsFolder = 10;

bool isGiven(const String& path) {
    return !path.empty() && path != String(u"°°°");
}

Variant namespaceOf(const Variant& mailClient) {
    return late::call(mailClient, u"GetNamespace", {u"MAPI"});
}

Variant unsetObject() {
    return Ref<Object>();
}

// The names along a path.
std::vector<Variant> namesIn(const String& path) {
    const auto names = make<CProprieta>();
    names->Scrivi(u"", takePathApart(path));
    std::vector<Variant> all;
    for (std::int16_t position = 1; position <= names->Count(); ++position) {
        all.push_back(names->Leggi(position));
    }
    return all;
}

// Takes steps of which each may fail, and remembers the last failure.
class Steps {
public:
    template <class Step>
    void take(Step step) {
        try {
            step();
        } catch (const AutomationError&) {
            failure_ = std::current_exception();
        }
    }
    void raiseFailure() const {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }

private:
    std::exception_ptr failure_;
};

}  // namespace

String takePathApart(const String& path) {
    if (path.view().find(u'/') == std::u16string_view::npos) {
        return path;
    }
    const auto names = make<CProprieta>();
    const auto add = [&](std::size_t number, std::u16string_view name) {
        names->Scrivi(u"Folder" + convert::toString(static_cast<std::int32_t>(number)), name);
    };
    std::size_t start = 1;
    for (;;) {
        const std::size_t slash = path.view().find(u'/', start - 1);
        if (slash == std::u16string_view::npos) {
            // Deliberately numbered one less than where it starts: only the order of names matters.
            add(start - 1, path.view().substr(start - 1));
            return names->Leggi().as<String>();
        }
        add(start, path.view().substr(start - 1, slash + 1 - start));
        start = slash + 2;
    }
}

Variant contactFolder(const Variant& mailClient, const String& path) {
    const Variant session = namespaceOf(mailClient);
    Variant folders = late::get(session, u"Folders");
    if (!isGiven(path)) {
        return late::call(session, u"GetDefaultFolder", {kContactsFolder});
    }
    Variant folder = unsetObject();
    for (const Variant& name : namesIn(path)) {
        folder = late::call(folders, u"Item", {name});
        folders = late::get(folder, u"Folders");
    }
    return folder;
}

Variant countItems(const String& path) {
    const Variant mailClient = platform::createObject(u"Outlook.Application");
    if (!isGiven(path)) {
        const Variant folder = contactFolder(mailClient, path);
        return late::get(late::get(folder, u"Items"), u"Count");
    }
    Variant folders = late::get(namespaceOf(mailClient), u"Folders");
    Variant folder = unsetObject();
    Variant count;
    Steps steps;
    for (const Variant& name : namesIn(path)) {
        steps.take([&] { folder = late::call(folders, u"Item", {name}); });
        steps.take([&] { folders = late::get(folder, u"Folders"); });
    }
    steps.take([&] { count = late::get(late::get(folder, u"Items"), u"Count"); });
    steps.raiseFailure();
    return count;
}

bool isNothing(const Variant& value) {
    return value.isNull() || value.isEmpty() || (value.isObject() && !value.as<Ref<Object>>());
}

}  // namespace kap::host

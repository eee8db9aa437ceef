#include "platform/mail/folders.hpp"

#include <optional>
#include <utility>

#include <kaputil/automation/convert.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "platform/mail/contact_item.hpp"
#include "platform/paths.hpp"

namespace kap::platform::mail {
namespace {

namespace fs = std::filesystem;

const fs::path& at(const std::vector<fs::path>& paths, std::int32_t index) {
    if (index < 1 || static_cast<std::size_t>(index) > paths.size()) {
        throw AutomationError(errors::kSubscriptOutOfRange);
    }
    return paths[static_cast<std::size_t>(index) - 1];
}

struct Filter {
    ContactField field;
    std::u16string value;
};

std::u16string_view withoutQuotes(std::u16string_view value) {
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == u'"' || value.front() == u'\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

Filter filterOf(const String& text) {
    const std::u16string_view filter = unicode::trim(text);
    const std::size_t close = filter.find(u']');
    if (filter.starts_with(u'[') && close != std::u16string_view::npos) {
        const auto field = contactFieldNamed(unicode::trim(filter.substr(1, close - 1)));
        const std::u16string_view rest = unicode::trim(filter.substr(close + 1));
        if (field && rest.size() > 1 && rest.front() == u'=') {
            return {*field, std::u16string(withoutQuotes(unicode::trim(rest.substr(1))))};
        }
    }
    throw AutomationError(errors::kInvalidArgument, u"Filtro non valido: \"" + text + u"\"");
}

}  // namespace

MailFolder::MailFolder(fs::path path) : path_(std::move(path)) {}

const ClassDescription& MailFolder::classDescription() {
    static const ClassDescription description = ClassBuilder<MailFolder>(u"MAPIFolder", u"", u"")
                                                    .property<&MailFolder::Name>(u"Name")
                                                    .property<&MailFolder::Folders>(u"Folders")
                                                    .property<&MailFolder::Items>(u"Items")
                                                    .build(u"Name");
    return description;
}

String MailFolder::Name() {
    return pathText(path_.filename());
}

Ref<FolderList> MailFolder::Folders() {
    return make<FolderList>(path_);
}

Ref<ItemList> MailFolder::Items() {
    return make<ItemList>(path_);
}

FolderList::FolderList(fs::path path) : path_(std::move(path)) {}

const ClassDescription& FolderList::classDescription() {
    static const ClassDescription description = ClassBuilder<FolderList>(u"Folders", u"", u"")
                                                    .property<&FolderList::Count>(u"Count")
                                                    .method<&FolderList::Item>(u"Item", {u"Index"})
                                                    .method<&FolderList::Add>(u"Add", {u"Name"})
                                                    .build(u"Item");
    return description;
}

std::int32_t FolderList::Count() {
    return static_cast<std::int32_t>(foldersIn(path_).size());
}

Ref<MailFolder> FolderList::Item(const Variant& index) {
    const Variant wanted = convert::plainValue(index);
    if (!wanted.isString()) {
        return make<MailFolder>(at(foldersIn(path_), convert::toLong(wanted)));
    }
    const String& name = wanted.as<String>();
    for (const fs::path& folder : foldersIn(path_)) {
        if (unicode::sameName(pathText(folder.filename()), name)) {
            return make<MailFolder>(folder);
        }
    }
    throw AutomationError(errors::kPathNotFound, u"La cartella \"" + name + u"\" non esiste.");
}

Ref<MailFolder> FolderList::Add(const String& name) {
    return make<MailFolder>(makeFolder(path_, name));
}

std::vector<Variant> FolderList::elements() {
    std::vector<Variant> all;
    for (const fs::path& folder : foldersIn(path_)) {
        all.emplace_back(make<MailFolder>(folder));
    }
    return all;
}

ItemList::ItemList(fs::path folder) : folder_(std::move(folder)) {}

const ClassDescription& ItemList::classDescription() {
    static const ClassDescription description = ClassBuilder<ItemList>(u"Items", u"", u"")
                                                    .property<&ItemList::Count>(u"Count")
                                                    .method<&ItemList::Item>(u"Item", {u"Index"})
                                                    .method<&ItemList::Find>(u"Find", {u"Filter"})
                                                    .build(u"Item");
    return description;
}

std::int32_t ItemList::Count() {
    return static_cast<std::int32_t>(contactsIn(folder_).size());
}

Ref<Object> ItemList::Item(std::int32_t index) {
    const fs::path file = at(contactsIn(folder_), index);
    return make<ContactItem>(file, readCard(file).value_or(Card()));
}

Ref<Object> ItemList::Find(const String& filter) {
    const Filter wanted = filterOf(filter);
    for (const fs::path& file : contactsIn(folder_)) {
        auto card = readCard(file);
        if (card && unicode::sameName(card->get(wanted.field), wanted.value)) {
            return make<ContactItem>(file, std::move(*card));
        }
    }
    return {};
}

std::vector<Variant> ItemList::elements() {
    std::vector<Variant> all;
    for (const fs::path& file : contactsIn(folder_)) {
        if (auto card = readCard(file)) {
            all.emplace_back(make<ContactItem>(file, std::move(*card)));
        }
    }
    return all;
}

}  // namespace kap::platform::mail

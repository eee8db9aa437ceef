#pragma once

#include <cstdint>
#include <filesystem>

#include <kaputil/automation/class_description.hpp>

#include "platform/mail/contact_folder.hpp"

namespace kap::platform::mail {

class FolderList;
class ItemList;

// A folder of contacts, or a store.
class MailFolder final : public DescribedObject {
public:
    explicit MailFolder(std::filesystem::path path);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] String Name();
    [[nodiscard]] Ref<FolderList> Folders();
    [[nodiscard]] Ref<ItemList> Items();

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

private:
    std::filesystem::path path_;
};

// The folders in a folder, or the stores.
class FolderList final : public DescribedObject {
public:
    explicit FolderList(std::filesystem::path path);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count();
    // By name, ignoring case, or by position from 1. Raises 76 when there is none, 9 for a position
    // out of range.
    [[nodiscard]] Ref<MailFolder> Item(const Variant& index);
    // Makes one. Raises 58 when it is there, 52 for a name that it cannot have.
    Ref<MailFolder> Add(const String& name);
    [[nodiscard]] std::vector<Variant> elements() override;

private:
    std::filesystem::path path_;
};

// The contacts of a folder.
class ItemList final : public DescribedObject {
public:
    explicit ItemList(std::filesystem::path folder);

    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    [[nodiscard]] std::int32_t Count();
    // By position from 1; raises 9 for one out of range.
    [[nodiscard]] Ref<Object> Item(std::int32_t index);
    // The first whose field equals a value, ignoring case; the unset object when there is none. The
    // filter is "[Field] = value", the value as it stands or in quotes. Raises 5 for any other
    // filter, also for one without a value, which would find whom nobody means.
    [[nodiscard]] Ref<Object> Find(const String& filter);
    [[nodiscard]] std::vector<Variant> elements() override;

private:
    std::filesystem::path folder_;
};

}  // namespace kap::platform::mail

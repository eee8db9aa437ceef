#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <kaputil/automation/ref.hpp>
#include <kaputil/automation/string.hpp>
#include <kaputil/base/export.hpp>

namespace kap {

class Variant;
struct Arguments;

// How a member is called. The values are automation's and may be combined: a script that cannot
// tell a method from a property asks for `Method | Get`.
enum class InvokeKind : std::uint8_t {
    Method = 1,
    Get = 2,
    MethodOrGet = 3,
    Let = 4,
    Set = 8,
    LetOrSet = 12,
};

// Whether a call of kind `kind` may be one of the kinds `sought`.
[[nodiscard]] constexpr bool mayBe(InvokeKind kind, InvokeKind sought) noexcept {
    return (static_cast<unsigned>(kind) & static_cast<unsigned>(sought)) != 0;
}

// The identifier of the default member of every class.
inline constexpr std::int32_t kDefaultMember = 0;

// Anything that can be held in a Variant and called by name: the library's classes, the data-access
// objects, and whatever a client hands in (a form, a mail client).
//
// Objects are counted by reference and live on the thread that made them; hold them in a
// `Ref<T>`.
class KAPUTIL_EXPORT Object {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void retain() const noexcept {
        if (references_.fetch_add(1, std::memory_order_relaxed) == 0) {
            onFirstReference();
        }
    }
    void release() const noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            onLastReferenceGone();
        }
    }

    // The class's name as clients know it ("CProprieta").
    [[nodiscard]] virtual String className() const = 0;

    // The dispatch identifier of a member, its name compared ignoring case; nullopt if there is no
    // such member.
    [[nodiscard]] virtual std::optional<std::int32_t> memberId(std::u16string_view name) const = 0;

    // Calls a member by identifier. By-reference arguments are written back into `arguments`.
    // Raises 438 for an unknown member, 449 and 450 for missing and surplus arguments, 13 for one
    // that does not convert, and whatever the member raises.
    virtual Variant invoke(std::int32_t member, InvokeKind kind, const Arguments& arguments) = 0;

    // Calls a member by name, ignoring case; raises 438 if there is none.
    virtual Variant invoke(std::u16string_view member, InvokeKind kind, const Arguments& arguments);

    // What enumerating a collection gives, in its order. Raises 438 for what is no collection.
    [[nodiscard]] virtual std::vector<Variant> elements();

    // The value of the default member; raises 13 (type mismatch) when the class has none: such an
    // object has no value to convert.
    Variant defaultValue();

protected:
    Object() = default;
    virtual ~Object() = default;

    // Ends the object. What hangs on it in a long row ends one after the other, not one within the
    // other, for which no stack is deep enough.
    void destroy() const noexcept;

    [[nodiscard]] bool isReferenced() const noexcept {
        return references_.load(std::memory_order_relaxed) != 0;
    }

private:
    // An object ends with its last reference, unless its class knows others that need it.
    virtual void onFirstReference() const noexcept {}
    virtual void onLastReferenceGone() const noexcept { destroy(); }

    mutable std::atomic<std::uint32_t> references_{0};
};

}  // namespace kap

#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace kap {

// A bounded store by text that drops what has not been used for longest.
template <class Value>
class LruCache {
public:
    explicit LruCache(std::size_t capacity) : capacity_(capacity) {}

    // The value kept for the text, or null.
    [[nodiscard]] Value* find(std::string_view text) {
        const auto found = byText_.find(text);
        if (found == byText_.end()) {
            return nullptr;
        }
        entries_.splice(entries_.begin(), entries_, found->second);
        return &found->second->second;
    }

    // Keeps a value for a text that is not there. The reference holds until the next insertion.
    Value& insert(std::string_view text, Value value) {
        if (entries_.size() == capacity_) {
            byText_.erase(entries_.back().first);
            entries_.pop_back();
        }
        entries_.emplace_front(std::string(text), std::move(value));
        try {
            byText_.emplace(entries_.front().first, entries_.begin());
        } catch (...) {
            entries_.pop_front();
            throw;
        }
        return entries_.front().second;
    }

    void clear() {
        byText_.clear();
        entries_.clear();
    }
    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }

private:
    using Entries = std::list<std::pair<std::string, Value>>;

    std::size_t capacity_;
    Entries entries_;  // the last used first
    // The keys are views of the texts in `entries_`, which never move.
    std::unordered_map<std::string_view, typename Entries::iterator> byText_;
};

}  // namespace kap

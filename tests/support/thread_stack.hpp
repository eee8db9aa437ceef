#pragma once

#include <gtest/gtest.h>

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace kap {

// Does `work` in a thread whose stack has so many bytes, and waits for it.
inline void inThreadOf(std::size_t stack, std::function<void()> work) {
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, stack));
    pthread_t thread{};
    ASSERT_EQ(0, pthread_create(
                     &thread, &attributes,
                     [](void* given) -> void* {
                         (*static_cast<std::function<void()>*>(given))();
                         return nullptr;
                     },
                     &work));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
}

}  // namespace kap

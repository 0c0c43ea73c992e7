#pragma once

#include <pthread.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>

namespace qrv_test {

/// Runs `work` in a thread with a stack of that size, as a host may have it, and passes on what it
/// throws.
inline void runInThread(std::size_t stackBytes, const std::function<void()>& work) {
    struct Run {
        const std::function<void()>& work;
        std::exception_ptr thrown;
    };
    Run run{work, nullptr};
    const auto body = [](void* argument) -> void* {
        auto& own = *static_cast<Run*>(argument);
        try {
            own.work();
        } catch (...) {
            own.thrown = std::current_exception();
        }
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackBytes);
    pthread_t thread{};
    const int failure = pthread_create(&thread, &attributes, body, &run);
    pthread_attr_destroy(&attributes);
    if (failure != 0)
        throw std::runtime_error("no thread of that size");
    pthread_join(thread, nullptr);
    if (run.thrown)
        std::rethrow_exception(run.thrown);
}

}  // namespace qrv_test

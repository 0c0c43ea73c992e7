#include <engine/base/Parallel.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace qrv {

namespace {

/// Beyond it the memory for what each thread holds grows, and the disk is what everybody waits for.
constexpr std::size_t mostThreads = 8;

class Run {
public:
    Run(std::size_t count, const std::function<void(std::size_t)>& work)
        : count_(count), work_(work) {}

    /// Takes numbers until none is left.
    void takePart() noexcept {
        try {
            for (std::size_t number = next_++; number < count_; number = next_++)
                work_(number);
        } catch (...) {
            const std::lock_guard guard(mutex_);
            failure_ = std::current_exception();
            next_ = count_;
        }
    }

    void passOnFailure() const {
        if (failure_)
            std::rethrow_exception(failure_);
    }

private:
    std::size_t count_;
    const std::function<void(std::size_t)>& work_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::exception_ptr failure_;
};

}  // namespace

std::size_t parallelCalls() {
    return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, mostThreads);
}

// Nobody may leave while a thread still works for the caller.
void inParallel(std::size_t count, const std::function<void(std::size_t)>& work) {
    Run run(count, work);
    std::vector<std::thread> others;
    others.reserve(mostThreads);
    try {
        while (others.size() + 1 < std::min(count, parallelCalls()))
            others.emplace_back([&run] { run.takePart(); });
    } catch (const std::exception&) {
        // The system gives no more threads, or memory for them: fewer do it, too.
    }
    run.takePart();
    for (std::thread& other : others)
        other.join();
    run.passOnFailure();
}

}  // namespace qrv

// Loads an extension, lets it open something, and lets go of that as late as a process can.
//
//     late_release_application EXTENSION FUNCTION HOLDER FOLDER [broken]
//
// HOLDER is "global", an object of the application, which ends behind everything that was loaded
// after it, or "thread", one of a thread that ends in the middle of that. With "broken" the folder
// is removed before.

#include <tests/lifetime/Extension.h>

#include <dlfcn.h>

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace {

using qrv_test::Held;

Held global;
thread_local Held ofThread;

/// A thread that ends when this object does.
class LateThread {
public:
    LateThread() = default;
    LateThread(const LateThread&) = delete;
    LateThread& operator=(const LateThread&) = delete;
    ~LateThread() {
        if (!thread_.joinable())
            return;
        set(mayEnd_);
        thread_.join();
    }

    /// Comes back when the thread holds what `open` gives.
    template <class Open>
    void hold(Open open) {
        thread_ = std::thread([this, open] {
            ofThread = nullptr;  // made before anything that the library keeps for this thread
            ofThread = open();
            set(isHeld_);
            waitFor(mayEnd_);
        });
        waitFor(isHeld_);
    }

private:
    void set(bool& flag) {
        const std::lock_guard lock(mutex_);
        flag = true;
        changed_.notify_all();
    }
    void waitFor(const bool& flag) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&flag] { return flag; });
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isHeld_ = false;
    bool mayEnd_ = false;
    std::thread thread_;
};

LateThread lateThread;

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 5)
        return 2;
    void* extension = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    void* function = extension == nullptr ? nullptr : dlsym(extension, arguments[2]);
    if (function == nullptr)
        return 3;
    const auto open = [function, folder = arguments[4]] {
        Held held;
        reinterpret_cast<qrv_test::Open>(function)(folder, held);
        return held;
    };
    if (std::string(arguments[3]) == "thread")
        lateThread.hold(open);
    else
        global = open();
    if (argumentCount > 5)
        std::filesystem::remove_all(arguments[4]);
    return 0;
}

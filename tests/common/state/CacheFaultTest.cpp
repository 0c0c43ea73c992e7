#include <common/state/Cache.h>
#include <common/state/StateFile.h>
#include <platform/ut/ScopedFault.h>
#include <tests/common/state/FailingAllocation.h>
#include <tests/common/state/StateRepository.h>
#include <tests/support/RecordingIo.h>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <string>

namespace {

using common::Cache;
using qrv_test::FailingAllocation;
using qrv_test::RecordingIo;
using qrv_test::StateRepository;
using testing::AnyOf;
using testing::ElementsAre;

const std::string& oldBytes() {
    static const std::string bytes = qrv_test::stateSample("default");
    return bytes;
}

const std::string& newBytes() {
    static const std::string bytes = qrv_test::stateSample("full");
    return bytes;
}

std::shared_ptr<Cache> changedCache(const StateRepository& repository, const RecordingIo& io) {
    repository.writeStateFile(oldBytes());
    std::shared_ptr<Cache> cache = Cache::get(repository.root(), io).value();
    cache->write() = qrv_test::fullState();
    return cache;
}

TEST(CacheFault, IsToldAndLeavesTheOldFileWhateverCallFails) {
    int kept = 0;
    int replaced = 0;
    for (int nth = 1;; ++nth) {
        const StateRepository repository;
        const RecordingIo io;
        std::shared_ptr<Cache> cache = changedCache(repository, io);
        const ut::ScopedFault fault(nth, EIO);
        cache.reset();
        ASSERT_EQ(io.results.size(), 1u);
        EXPECT_THAT(repository.metadata(), ElementsAre("qrv.state"));
        if (!fault.hasFired()) {
            EXPECT_TRUE(io.results[0]);
            EXPECT_EQ(repository.stateFileBytes(), newBytes());
            break;
        }
        if (io.results[0]) {
            // What fails after the swap and the flushes changes nothing any more.
            EXPECT_EQ(repository.stateFileBytes(), newBytes()) << "call " << nth;
            continue;
        }
        EXPECT_EQ(io.results[0].error().message,
                  L"Error writing to file '" + repository.root().statePath() + L"'");
        EXPECT_THAT(repository.stateFileBytes(), AnyOf(oldBytes(), newBytes()));
        ++(repository.stateFileBytes() == oldBytes() ? kept : replaced);
    }
    EXPECT_GE(kept, 6);
    // Only the flush of the folder comes after the swap.
    EXPECT_EQ(replaced, 1);
}

TEST(CacheFault, LeavesNoFileWhereThereWasNoneWhateverCallFails) {
    int without = 0;
    for (int nth = 1;; ++nth) {
        const StateRepository repository;
        const RecordingIo io;
        const ut::ScopedFault fault(nth, ENOSPC);
        Cache::create(repository.root(), io);
        if (!fault.hasFired()) {
            EXPECT_EQ(repository.stateFileBytes(), oldBytes());
            break;
        }
        if (repository.hasStateFile()) {
            EXPECT_EQ(repository.stateFileBytes(), oldBytes()) << "call " << nth;
        } else {
            EXPECT_TRUE(repository.metadata().empty()) << "call " << nth;
            ++without;
        }
    }
    EXPECT_GE(without, 6);
}

// A default state was written over a real one while its share was not to be reached: every failure
// of the question whether it is there counted as no.
TEST(CacheFault, OfTheQuestionWhetherAStateIsThereKeepsIt) {
    const StateRepository repository;
    repository.writeStateFile(newBytes());
    const RecordingIo io;
    for (const int errorNumber : {EIO, EACCES, ESTALE, ENOMEM}) {
        for (int nth = 1;; ++nth) {
            const ut::ScopedFault fault(nth, errorNumber);
            Cache::create(repository.root(), io);
            EXPECT_EQ(repository.stateFileBytes(), newBytes()) << errorNumber;
            if (!fault.hasFired())
                break;
        }
        const ut::ScopedFault fault(1, errorNumber);
        EXPECT_TRUE(Cache::get(repository.root(), io)) << errorNumber;
    }
    EXPECT_TRUE(io.results.empty());
}

/// Runs `action` in a process of its own that dies at its nth file-system call. True if it died so.
template <class Action>
bool dies(int nth, Action action) {
    const pid_t child = fork();
    if (child == 0) {
        const ut::ScopedFault fault(nth, ut::ScopedFault::kKillProcess);
        action();
        // No exit handler of the test program may run twice.
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == SIGKILL : WEXITSTATUS(status) == 0);
    return WIFSIGNALED(status);
}

TEST(CacheFault, OfAFirstWriteThatIsKilledLeavesNoFileOrAWholeOne) {
    int without = 0;
    for (int nth = 1;; ++nth) {
        const StateRepository repository;
        const RecordingIo io;
        const bool died = dies(nth, [&] { Cache::create(repository.root(), io); });
        if (repository.hasStateFile())
            EXPECT_EQ(repository.stateFileBytes(), oldBytes()) << "call " << nth;
        else
            ++without;
        if (!died) {
            EXPECT_TRUE(repository.hasStateFile());
            break;
        }
    }
    EXPECT_GE(without, 6);
}

TEST(CacheFault, OfAReplacementThatIsKilledLeavesTheOldFileOrTheNew) {
    int kept = 0;
    for (int nth = 1;; ++nth) {
        const StateRepository repository;
        const RecordingIo io;
        repository.writeStateFile(oldBytes());
        const bool died = dies(nth, [&] {
            std::shared_ptr<Cache> cache = Cache::get(repository.root(), io).value();
            cache->write() = qrv_test::fullState();
        });
        const std::string bytes = repository.stateFileBytes();
        EXPECT_THAT(bytes, AnyOf(oldBytes(), newBytes())) << "call " << nth;
        if (bytes == oldBytes())
            ++kept;
        if (!died) {
            EXPECT_EQ(bytes, newBytes());
            break;
        }
    }
    EXPECT_GE(kept, 9);
}

// A host was told nothing of a state that was not written: the path of the file was copied outside
// what catches, and the message could find no memory either.
class CacheFaultOfMemory : public testing::TestWithParam<FailingAllocation::Which> {};

TEST_P(CacheFaultOfMemory, IsToldOnceAndLeavesTheOldFileOrTheNew) {
    for (long nth = 1;; ++nth) {
        const StateRepository repository;
        const RecordingIo io;
        io.results.reserve(1);
        std::shared_ptr<Cache> cache = changedCache(repository, io);
        bool hasFired = false;
        {
            const FailingAllocation failing(nth, GetParam());
            cache.reset();
            hasFired = failing.hasFired();
        }
        ASSERT_EQ(io.results.size(), 1u) << nth;
        const bool isWritten = io.results[0].hasValue();
        EXPECT_EQ(repository.stateFileBytes(), isWritten ? newBytes() : oldBytes()) << nth;
        if (!isWritten) {
            EXPECT_EQ(io.results[0].error().message,
                      L"An unexpected error occurred while deserializing the state file.");
        }
        if (!hasFired) {
            EXPECT_TRUE(isWritten);
            break;
        }
    }
}

TEST_P(CacheFaultOfMemory, IsAnErrorOfTheWriterAndNoException) {
    const StateRepository repository;
    const common::State state = qrv_test::fullState();
    const OdString path = repository.root().statePath();
    for (long nth = 1;; ++nth) {
        bool hasFired = false;
        Expected<void> written;
        {
            const FailingAllocation failing(nth, GetParam());
            ASSERT_NO_THROW(written = common::writeState(state, path)) << nth;
            hasFired = failing.hasFired();
        }
        if (!hasFired)
            break;
    }
    EXPECT_EQ(repository.stateFileBytes(), newBytes());
}

INSTANTIATE_TEST_SUITE_P(, CacheFaultOfMemory,
                         testing::Values(FailingAllocation::Which::one,
                                         FailingAllocation::Which::allThatFollow));

}  // namespace

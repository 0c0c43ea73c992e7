#include <platform/ut/ScopedFault.h>
#include <tests/common/config/Configuration.h>
#include <tests/common/state/FailingAllocation.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

namespace {

using common::Config;
using qrv_test::Configuration;
using qrv_test::FailingAllocation;
using testing::AnyOf;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

const std::string oldBytes = "{\"old\":1}";
const std::string newBytes =
    "{\n    \"projects_map\" : [\n        {\n            \"info\" : {\n"
    "                \"name\" : \"n\",\n                \"uid\" : \"u\"\n"
    "            },\n            \"path\" : \"/none/a\"\n        }\n    ]\n}";

/// A configuration that is to be written over the old bytes.
std::shared_ptr<Config> changed(const Configuration& configuration) {
    configuration.write(oldBytes);
    auto config = configuration.loaded();
    config->write().data.write()[L"/none/a"] = {L"n", L"u"};
    return config;
}

std::string writeError(const Configuration& configuration) {
    return "Error writing to file '" + configuration.file().string() + "'";
}

TEST(ConfigFault, LeavesTheOldFileOrTheNewOneAndIsReported) {
    int failures = 0;
    for (int nth = 1; nth < 1000; ++nth) {
        const Configuration configuration;
        auto config = changed(configuration);
        const ut::ScopedFault fault(nth, ENOSPC);
        config.reset();
        ASSERT_EQ(configuration.io.results.size(), 1U) << nth;
        const Expected<void>& result = configuration.io.results[0];
        EXPECT_THAT(configuration.bytes(), AnyOf(oldBytes, newBytes)) << nth;
        EXPECT_THAT(qrv_test::listTree(configuration.folder.path()),
                    ElementsAre("directories.state"));
        if (!result) {
            ++failures;
            EXPECT_EQ(result.error().message.toNarrow(), writeError(configuration)) << nth;
            EXPECT_EQ(result.error().code, 0);
            continue;
        }
        EXPECT_EQ(configuration.bytes(), newBytes) << nth;
        if (!fault.hasFired())
            break;
    }
    EXPECT_GT(failures, 3);
}

// Every project was lost after a share was not to be reached for a moment: a registry of which
// nobody could say whether it is there was taken for an empty one, and that was written.
TEST(ConfigFault, OfAQuestionDoesNotMakeAnEmptyRegistry) {
    const Configuration configuration;
    configuration.write(newBytes);
    for (int nth = 1; nth < 1000; ++nth) {
        bool hasFired = false;
        {
            const ut::ScopedFault fault(nth, EIO);
            const auto config = configuration.load();
            hasFired = fault.hasFired();
            if (config) {
                EXPECT_EQ((*config)->readProjects().size(), 1U) << nth;
            }
        }
        if (!hasFired)
            break;
    }
}

TEST(ConfigFault, IsReportedWhenADirectoryStandsInTheWay) {
    const Configuration configuration;
    auto config = configuration.loaded();
    static_cast<void>(config->write());
    std::filesystem::create_directory(configuration.file());
    config.reset();
    ASSERT_EQ(configuration.io.results.size(), 1U);
    ASSERT_FALSE(configuration.io.results[0].hasValue());
    EXPECT_EQ(configuration.io.results[0].error().message.toNarrow(), writeError(configuration));
}

// Memory that runs out is the one exception that writing meets. The host was told nothing of it:
// the path of the file was copied outside what catches, and the message could find no memory
// either.
class ConfigFaultOfMemory : public testing::TestWithParam<FailingAllocation::Which> {};

TEST_P(ConfigFaultOfMemory, IsToldOnceWithItsOwnText) {
    std::set<std::string> outcomes;
    for (long nth = 1; nth < 10'000; ++nth) {
        const Configuration configuration;
        configuration.io.results.reserve(1);
        auto config = changed(configuration);
        bool hasFired = false;
        {
            const FailingAllocation failing(nth, GetParam());
            config.reset();
            hasFired = failing.hasFired();
        }
        ASSERT_EQ(configuration.io.results.size(), 1U) << nth;
        const Expected<void>& result = configuration.io.results[0];
        EXPECT_EQ(configuration.bytes(), result ? newBytes : oldBytes) << nth;
        outcomes.insert(result ? "written" : result.error().message.toNarrow());
        if (!hasFired)
            break;
    }
    EXPECT_THAT(outcomes,
                UnorderedElementsAre("written",
                                     "An unexpected error occurred while deserializing the "
                                     "config file."));
}

// The end of a write handle ended the process when there was no memory: it copied the set of its
// listeners, in a destructor.
TEST_P(ConfigFaultOfMemory, KeepsNoListenerFromBeingTold) {
    struct CountingListener : common::ConfigListener {
        void onConfigChanged() override { ++count; }
        int count = 0;
    };
    CountingListener listeners[3];
    const common::ConfigListeners expected(std::begin(listeners), std::end(listeners));
    for (long nth = 1; nth <= 3; ++nth) {
        common::ConfigListeners registered = expected;
        common::ConfigData data;
        std::optional<common::WriteConfigData> handle;
        handle.emplace(data, registered);
        {
            const FailingAllocation failing(nth, GetParam());
            handle.reset();
            EXPECT_TRUE(failing.hasFired());
        }
        for (const CountingListener& listener : listeners)
            EXPECT_EQ(listener.count, nth);
    }
}

INSTANTIATE_TEST_SUITE_P(, ConfigFaultOfMemory,
                         testing::Values(FailingAllocation::Which::one,
                                         FailingAllocation::Which::allThatFollow));

/// A host that breaks its promise.
class ThrowingIo final : public qrv_test::RecordingIo {
public:
    void reportResult(Expected<void> result) const override {
        RecordingIo::reportResult(std::move(result));
        throw std::runtime_error("not allowed");
    }
};

TEST(ConfigFault, OfTheHostDoesNotLeaveTheDestructor) {
    const qrv_test::TemporaryFolder folder;
    const ThrowingIo io;
    auto config = Config::load(folder.text(), io).value();
    static_cast<void>(config->write());
    config.reset();
    EXPECT_EQ(io.results.size(), 1U);
}

}  // namespace

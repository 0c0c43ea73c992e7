#include <tests/common/config/Configuration.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace {

namespace fs = std::filesystem;
using common::Config;
using qrv_test::Configuration;
using qrv_test::listTree;
using qrv_test::Projects;
using qrv_test::RecordingIo;
using qrv_test::shown;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string oneProject =
    R"({"projects_map":[{"info":{"name":"n","uid":"u"},"path":"/none/a"}]})";

TEST(Config, OfADirectoryThatIsMissingIsEmptyAndWritesNothing) {
    const qrv_test::TemporaryFolder folder;
    const RecordingIo io;
    {
        const auto config = Config::load(folder.text("a/b"), io);
        ASSERT_TRUE(config.hasValue());
        EXPECT_THAT((*config)->readProjects(), IsEmpty());
        EXPECT_EQ((*config)->path().path(), folder.text("a/b"));
    }
    EXPECT_THAT(listTree(folder.path()), ElementsAre("a/", "a/b/"));
    EXPECT_THAT(io.results, IsEmpty());
}

TEST(Config, PassesOnTheErrorOfTheDirectory) {
    const RecordingIo io;
    const auto config = Config::load(OdString(), io);
    ASSERT_FALSE(config.hasValue());
    EXPECT_EQ(config.error().message, L"VC config path is empty.");
}

TEST(Config, IsReadFromItsFile) {
    const Configuration configuration;
    configuration.write(oneProject);
    const auto config = configuration.loaded();
    EXPECT_EQ(shown(config->readProjects()), (Projects{{"/none/a", "n", "u"}}));
    EXPECT_EQ(&config->readProjects(), &config->read().read());
}

// A registry that is a link to nothing could not be loaded: it counted as a file.
TEST(Config, OfALinkToNothingIsEmptyAndTakesItsPlace) {
    const Configuration configuration;
    fs::create_symlink("nowhere", configuration.file());
    {
        const auto config = configuration.loaded();
        EXPECT_THAT(config->readProjects(), IsEmpty());
        static_cast<void>(config->write());
    }
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(configuration.file())));
    EXPECT_EQ(configuration.bytes(), "{\n}");
}

TEST(Config, ThatWasOnlyReadWritesNothing) {
    const Configuration configuration;
    configuration.write(oneProject);
    EXPECT_EQ(configuration.loaded()->readProjects().size(), 1U);
    EXPECT_EQ(configuration.bytes(), oneProject);
    EXPECT_THAT(configuration.io.results, IsEmpty());
}

TEST(Config, IsWrittenWhenItsLastOwnerLetsGo) {
    const Configuration configuration;
    auto config = configuration.loaded();
    auto other = config;
    config->write().data.add(L"/none/a", L"n", L"u");
    config.reset();
    EXPECT_THAT(listTree(configuration.folder.path()), IsEmpty());
    EXPECT_THAT(configuration.io.results, IsEmpty());
    other.reset();
    ASSERT_EQ(configuration.io.results.size(), 1U);
    EXPECT_TRUE(configuration.io.results[0].hasValue());
    EXPECT_EQ(configuration.bytes(),
              "{\n    \"projects_map\" : [\n        {\n            \"info\" : {\n"
              "                \"name\" : \"n\",\n                \"uid\" : \"u\"\n"
              "            },\n            \"path\" : \"/none/a\"\n        }\n    ]\n}");
    EXPECT_THAT(listTree(configuration.folder.path()), ElementsAre("directories.state"));
}

// Another registry was overwritten: a path that begins at the current folder was only looked up
// when the configuration ended, and the host had gone to another folder.
TEST(Config, IsWrittenWhereItWasReadAlsoFromAnotherFolder) {
    const Configuration configuration;
    const Configuration other;
    const fs::path before = fs::current_path();
    fs::current_path(configuration.folder.path());
    auto config = Config::load(L"settings", configuration.io).value();
    fs::current_path(other.folder.path());
    static_cast<void>(config->write());
    config.reset();
    fs::current_path(configuration.folder.path());
    config = Config::load(L"settings", configuration.io).value();
    fs::current_path(before);
    EXPECT_THAT(listTree(configuration.folder.path()),
                ElementsAre("settings/", "settings/directories.state"));
    EXPECT_THAT(listTree(other.folder.path()), IsEmpty());
    fs::remove_all(configuration.folder / "settings");
    static_cast<void>(config->write());
    config.reset();
    ASSERT_EQ(configuration.io.results.size(), 2U);
    EXPECT_EQ(configuration.io.results[1].error().message,
              L"Error writing to file 'settings/directories.state'");
}

TEST(Config, IsWrittenAlsoWhenNothingWasChanged) {
    const Configuration configuration;
    static_cast<void>(configuration.loaded()->write());
    EXPECT_EQ(configuration.bytes(), "{\n}");
    EXPECT_EQ(configuration.io.results.size(), 1U);
}

TEST(Config, IsWrittenOnceForSeveralHandles) {
    const Configuration configuration;
    {
        const auto config = configuration.loaded();
        config->write().data.add(L"/none/a", L"n", L"u");
        config->write().data.add(L"/none/b", L"n", L"u");
        config->write().data.remove(L"/none/a");
    }
    EXPECT_EQ(configuration.io.results.size(), 1U);
    EXPECT_EQ(shown(configuration.loaded()->readProjects()), (Projects{{"/none/b", "n", "u"}}));
}

TEST(Config, IsTheSameObjectWhileItLives) {
    const Configuration configuration;
    const auto config = configuration.loaded();
    configuration.write(oneProject);
    EXPECT_EQ(configuration.loaded(), config);
    EXPECT_THAT(config->readProjects(), IsEmpty());
}

TEST(Config, IsTheSameObjectAlsoWhenItsFileHasBecomeUnreadable) {
    const Configuration configuration;
    const auto config = configuration.loaded();
    for (const char* bytes : {"", "{\"cut off", "[]"}) {
        configuration.write(bytes);
        EXPECT_EQ(configuration.loaded(), config) << bytes;
    }
}

TEST(Config, ChecksTheDirectoryAlsoOfALiveOne) {
    const Configuration configuration;
    const qrv_test::TemporaryFolder elsewhere;
    const OdString directory = elsewhere.text("c");
    const auto config = Config::load(directory, configuration.io).value();
    fs::remove(elsewhere / "c");
    qrv_test::writeFile(elsewhere / "c", "a file");
    const auto again = Config::load(directory, configuration.io);
    ASSERT_FALSE(again.hasValue());
    EXPECT_EQ(again.error().message.toNarrow(),
              "The directory " + directory.toNarrow() + " is not writable.");
}

TEST(Config, KeepsTheHostOfItsFirstLoader) {
    const Configuration configuration;
    const RecordingIo second;
    {
        const auto config = configuration.loaded();
        EXPECT_EQ(Config::load(configuration.directory(), second).value(), config);
        static_cast<void>(config->write());
    }
    EXPECT_EQ(configuration.io.results.size(), 1U);
    EXPECT_THAT(second.results, IsEmpty());
}

TEST(Config, IsReadAgainAfterItsEnd) {
    const Configuration configuration;
    const RecordingIo second;
    configuration.loaded().reset();
    configuration.write(oneProject);
    {
        const auto config = Config::load(configuration.directory(), second).value();
        EXPECT_EQ(config->readProjects().size(), 1U);
        static_cast<void>(config->write());
    }
    EXPECT_EQ(second.results.size(), 1U);
    EXPECT_THAT(configuration.io.results, IsEmpty());
}

TEST(Config, IsRegisteredUnderTheTextOfItsDirectory) {
    const Configuration configuration;
    const auto config = configuration.loaded();
    const auto other = Config::load(configuration.directory() + L"/", configuration.io).value();
    EXPECT_NE(other, config);
    EXPECT_EQ(other->path().path(), configuration.directory() + L"/");
}

TEST(Config, ThatCouldNotBeLoadedIsTriedAgain) {
    const Configuration configuration;
    configuration.write("[]");
    EXPECT_FALSE(configuration.load().hasValue());
    configuration.write("{}");
    EXPECT_TRUE(configuration.load().hasValue());
}

TEST(Config, ThatWasMovedFromWritesNothing) {
    const Configuration configuration;
    auto config = configuration.loaded();
    config->write().data.add(L"/none/a", L"n", L"u");
    {
        const Config moved = std::move(*config);
        EXPECT_EQ(moved.readProjects().size(), 1U);
        config.reset();
        EXPECT_THAT(listTree(configuration.folder.path()), IsEmpty());
    }
    EXPECT_EQ(configuration.io.results.size(), 1U);
    EXPECT_EQ(shown(configuration.loaded()->readProjects()), (Projects{{"/none/a", "n", "u"}}));
}

TEST(Config, IsNeitherCopiedNorAssigned) {
    EXPECT_TRUE(std::is_move_constructible_v<Config>);
    EXPECT_FALSE(std::is_copy_constructible_v<Config>);
    EXPECT_FALSE(std::is_copy_assignable_v<Config>);
    EXPECT_FALSE(std::is_move_assignable_v<Config>);
}

}  // namespace

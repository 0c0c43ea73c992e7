#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
using qrv_test::TemporaryFolder;

/// How the application ended, and all that it printed, its messages included.
struct Ending {
    std::string printed;
    int status = 0;
    bool operator==(const Ending&) const = default;
    friend void PrintTo(const Ending& run, std::ostream* stream) {
        *stream << "status " << run.status << ", printed: " << run.printed;
    }
};

/// The application has a project's folder of its own, since it may remove it.
class LateRelease : public testing::TestWithParam<const char*> {
protected:
    fs::path project() const { return folder_ / "project"; }
    std::string bytesOf(const char* file) const { return qrv_test::readFile(project() / file); }

    Ending run(const std::string& function, const std::string& more = "") const {
        const std::string line = std::string(QRV_LATE_APPLICATION) + " " + QRV_LATE_EXTENSION +
                                 " " + function + " " + GetParam() + " " + project().string() +
                                 " " + more + " 2>&1";
        std::FILE* output = popen(line.c_str(), "r");
        Ending result;
        char buffer[4096];
        while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, output))
            result.printed.append(buffer, count);
        const int status = pclose(output);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return result;
    }

private:
    TemporaryFolder folder_;
};

const std::string state = "{\n    \"head\" : {\n        \"reference\" : \"roof\"\n    }\n}";
const std::string registry =
    "{\n    \"projects_map\" : [\n        {\n            \"info\" : {\n"
    "                \"name\" : \"n\",\n                \"uid\" : \"u\"\n"
    "            },\n            \"path\" : \"/none/a\"\n        }\n    ]\n}";

// A state let go of when the process ended was written with garbage for the names of its members,
// and told as written: the names were objects, which the library's own end had destroyed before.
TEST_P(LateRelease, OfAStateWritesItWhole) {
    EXPECT_EQ(run("openCache"), (Ending{"written\nwritten\n", 0}));
    EXPECT_EQ(bytesOf(".qrv/qrv.state"), state);
}

// The same for the registry, from which every project was lost.
TEST_P(LateRelease, OfARegistryWritesItWhole) {
    EXPECT_EQ(run("openConfig"), (Ending{"written\n", 0}));
    EXPECT_EQ(bytesOf("directories.state"), registry);
}

// A process that could not write its state when it ended crashed instead of saying so: a message
// without a translation asked the catalogue's library for data that had ended with the thread.
TEST_P(LateRelease, OfAStateThatCannotBeWrittenIsTold) {
    EXPECT_EQ(run("openCache", "broken"),
              (Ending{"written\nError writing to file '" + (project() / ".qrv/qrv.state").string() +
                          "'\n",
                      0}));
}

TEST_P(LateRelease, OfARegistryThatCannotBeWrittenIsTold) {
    EXPECT_EQ(
        run("openConfig", "broken"),
        (Ending{"Error writing to file '" + (project() / "directories.state").string() + "'\n",
                0}));
}

// A registry opened when the process ended was looked for among loaded ones that were destroyed.
TEST_P(LateRelease, MayOpenARegistry) {
    EXPECT_EQ(run("openConfigLate"), (Ending{"written\n", 0}));
    EXPECT_EQ(bytesOf("directories.state"), registry);
}

INSTANTIATE_TEST_SUITE_P(, LateRelease, testing::Values("global", "thread"),
                         [](const auto& holder) { return std::string(holder.param); });

}  // namespace

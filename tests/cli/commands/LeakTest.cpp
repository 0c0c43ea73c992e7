#include <cli/commands/Commands.h>
#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The search for leaks is the address sanitizer's; in other builds the commands only have to end as
// they should. Other tests run the program without the search.

namespace {

using qrv_test::Outcome;
using qrv_test::runQrv;
using qrv_test::TemporaryFolder;
using qrv_test::writeFile;
using testing::HasSubstr;
using testing::Not;

struct Step {
    std::vector<std::string> words;
    int status = 0;
    /// Written before, by path.
    std::map<std::string, std::string> files = {};
};

const std::vector<Step> work = {
    {{"init"}, 0, {{"a.txt", "first\n"}, {"b.txt", "first\n"}}},
    {{"files"}},
    {{"add", "--all"}},
    {{"unstage", "b.txt"}},
    {{"status"}},
    {{"add", "none"}, 1},
    {{"commit", "-m", "First"}},
    {{"branch", "other"}},
    {{"tag", "v1"}},
    {{"add", "--all"}, 0, {{"a.txt", "here\n"}}},
    {{"commit", "-m", "Here"}},
    {{"switch", "other"}},
    {{"add", "--all"}, 0, {{"a.txt", "there\n"}}},
    {{"commit", "-m", "There"}},
    {{"merge", "master"}, 1},
    {{"resolve", "a.txt", "--mine"}},
    {{"commit", "-m", "Both"}},
    {{"restore", "a.txt", "--from", "1"}},
    {{"diff"}},
    {{"log"}},
    {{"show"}},
};

const std::vector<Step> upkeep = {
    {{"init"}},
    {{"ignore", "add", "*.dwf"}},
    {{"ignore", "check", "plan.dwg"}, 1},
    {{"verify"}},
    {{"recover"}},
    {{"gc"}},
    {{"state"}},
    {{"name", "House"}},
    {{"projects"}},
    {{"config"}},
    {{"log-note", "Noted"}},
    {{"locate", "none"}, 1},
    {{"convert", "commit", "none"}, 1},
    {{"completion", "bash"}},
    {{"manual"}},
    {{"status", "--help"}},
    {{"status", "--none"}, 2},
};

void expectNoLeaks(const std::vector<Step>& steps) {
    const TemporaryFolder folder;
    for (const Step& step : steps) {
        for (const auto& [path, bytes] : step.files)
            writeFile(folder / path, bytes);
        const Outcome outcome =
            runQrv(folder.path(), step.words,
                   {{"ASAN_OPTIONS", "detect_leaks=1"}, {"QRV_AUTHOR", "tester"}});
        EXPECT_EQ(outcome.status, step.status) << step.words.front() << ": " << outcome;
        EXPECT_THAT(outcome.messages, Not(HasSubstr("LeakSanitizer"))) << step.words.front();
    }
}

TEST(Leaks, AreNotInTheDailyWork) {
    expectNoLeaks(work);
}

TEST(Leaks, AreNotInTheUpkeepOfARepository) {
    expectNoLeaks(upkeep);
}

TEST(Leaks, AreLookedForInEveryCommand) {
    std::set<std::string> seen;
    for (const std::vector<Step>& steps : {work, upkeep}) {
        for (const Step& step : steps)
            seen.insert(step.words.front());
    }
    for (const qrv::cli::Command& command : qrv::cli::commands())
        EXPECT_TRUE(seen.contains(command.name)) << command.name;
}

#ifdef __SANITIZE_ADDRESS__
/// More than one, since the memory of one may still be named by what is left on the stack.
[[noreturn]] void loseAndExit() {
    for (int i = 0; i < 100; ++i)
        static_cast<void>(std::make_unique<std::string>(100, 'x').release());
    std::exit(0);
}

TEST(Leaks, AreFoundInTheTestPrograms) {
    EXPECT_EXIT(
        loseAndExit(), [](int status) { return status != 0; }, "LeakSanitizer");
}
#endif

}  // namespace

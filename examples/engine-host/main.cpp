// A host that leaves version control to the engine: a day with a folder of drawings.
//
//     engine_host FOLDER AUTHOR

#include <engine/operations/Add.h>
#include <engine/operations/Commit.h>
#include <engine/operations/Diff.h>
#include <engine/operations/Init.h>
#include <engine/operations/Log.h>
#include <engine/operations/Merge.h>
#include <engine/operations/NamedReferences.h>
#include <engine/operations/Restore.h>
#include <engine/operations/Switch.h>

#include <fstream>
#include <iostream>
#include <stdexcept>

namespace {

class SilentWork : public qrv::Work {
public:
    void add(std::int64_t) override {}
};

/// Shows what the engine tells, and trusts nobody else's repositories.
class Host : public qrv::Caller {
public:
    void note(const OdString& text) override { std::cerr << text.toNarrow() << '\n'; }
    std::unique_ptr<qrv::Work> beginWork(const OdString&, std::size_t) override {
        return std::make_unique<SilentWork>();
    }
    std::string action() const override { return "engine-host"; }
    bool isPerson(std::uint32_t) const override { return false; }
    Expected<std::vector<OdString>> trustedFolders() const override {
        return std::vector<OdString>();
    }
    bool followsSharedFolders() const override { return true; }
};

/// What an operation gave. This host gives up at the first failure; a real one would show the
/// message, which is in the person's language, and go on.
template <class Result>
Result valueOf(Expected<Result> result) {
    if (!result)
        throw std::runtime_error(result.error().message.toNarrow());
    return *std::move(result);
}

class Day {
public:
    Day(std::string folder, const char* author)
        : folder_(std::move(folder)), author_(OdString::fromNarrow(author)) {}

    void run() {
        valueOf(qrv::initialise(folder_, {}, host_));
        save("plan.txt", "Ground floor\n");
        commit("As received");

        switchTo("variant", true);
        save("plan.txt", "Ground floor, wide gate\n");
        commit("Try a wide gate");
        switchTo("master", false);
        save("notes.txt", "Ask for the height of the sills\n");
        commit("Take notes");
        merge("variant");
        listBranches();
        listCommits();

        compare("1", "HEAD");
        restore("plan.txt", "1");
        restore("plan.txt", "HEAD");
    }

private:
    /// As a CAD program does.
    void save(const std::string& name, const std::string& text) const {
        std::ofstream(folder_ + "/" + name) << text;
    }

    void commit(const char* message) {
        valueOf(qrv::add(folder_, {.paths = {}, .all = true}, host_));
        const qrv::Committed made =
            valueOf(qrv::commit(folder_, {author_, OdString(message)}, host_));
        std::cout << "commit " << made.commit.number << " on " << made.branch.toNarrow() << ": "
                  << message << '\n';
    }

    void switchTo(const char* branch, bool create) {
        const qrv::Switched switched =
            valueOf(qrv::switchBranch(folder_, {OdString(branch), create, {}}, host_));
        std::cout << "on " << branch << ", files changed: " << switched.fileCount << '\n';
    }

    void merge(const char* branch) {
        const qrv::Merged merged =
            valueOf(qrv::merge(folder_, {OdString(branch), author_, {}}, host_));
        for (const OdString& path : merged.files)
            std::cout << "merged " << path.toNarrow() << '\n';
        for (const common::ConflictData& conflict : merged.conflicts)
            std::cout << "to resolve: " << conflict.path.toNarrow() << '\n';
    }

    void listBranches() {
        for (const qrv::NamedReference& branch :
             valueOf(qrv::listReferences(folder_, common::RefType::Branch, host_)))
            std::cout << (branch.isCurrent ? "* " : "  ") << branch.name.toNarrow() << " at "
                      << (branch.commit ? branch.commit->number : 0) << '\n';
    }

    void listCommits() {
        for (const qrv::CommitEntry& commit : valueOf(qrv::log(folder_, {}, host_)).commits)
            std::cout << commit.number << ' ' << commit.author.toNarrow() << ": "
                      << commit.message.toNarrow() << '\n';
    }

    void compare(const char* before, const char* after) {
        for (const qrv::Difference& difference :
             valueOf(qrv::diff(folder_, {OdString(before), OdString(after), {}}, host_)))
            std::cout << (difference.before ? "changed " : "added ") << difference.path.toNarrow()
                      << '\n';
    }

    void restore(const std::string& name, const char* commit) {
        const qrv::RestoreRequest request = {.paths = {folder_ + "/" + name},
                                             .commit = OdString(commit)};
        for (const OdString& path : valueOf(qrv::restoreFiles(folder_, request, host_)))
            std::cout << path.toNarrow() << " as in " << commit << '\n';
    }

    Host host_;
    std::string folder_;
    OdString author_;
};

}  // namespace

int main(int argumentCount, char** arguments) try {
    if (argumentCount != 3) {
        std::cerr << "Usage: engine_host FOLDER AUTHOR\n";
        return 2;
    }
    Day(arguments[1], arguments[2]).run();
    return 0;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}

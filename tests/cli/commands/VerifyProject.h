#pragma once

#include <common/repository/RootPath.h>
#include <engine/base/Digest.h>
#include <engine/database/Database.h>
#include <engine/history/History.h>
#include <engine/history/JournalEntry.h>
#include <tests/cli/commands/HistoryProject.h>
#include <tests/engine/paths/Paths.h>
#include <tests/engine/storage/OldForms.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace qrv_test {

/// Bytes that no compression makes shorter, so that a store holds them nearly as they are.
inline std::string noise(std::size_t size) {
    std::string bytes;
    for (int block = 0; bytes.size() < size; ++block)
        bytes += qrv::Digest::of(std::to_string(block));
    return bytes;
}

/// Where the longest frame of the file has its middle.
inline std::size_t middleOfFrame(const std::filesystem::path& frames) {
    qrv::Database database(OdString::fromNarrow(frames.string()), qrv::Database::Access::readOnly);
    qrv::Statement longest =
        database.prepare("SELECT bytes FROM pieces ORDER BY length(bytes) DESC");
    longest.step();
    const std::string_view frame = longest.bytes(0);
    return readFile(frames).find(frame.substr(frame.size() / 2, 16));
}

inline void flipByte(const std::filesystem::path& file, std::size_t position) {
    std::string bytes = readFile(file);
    bytes.at(position) = static_cast<char>(bytes.at(position) ^ 1);
    std::filesystem::remove(file);
    writeFile(file, bytes);
}

/// Two commits of a drawing and a parts list, kept as earlier programs kept them.
class VerifyProject : public testing::Test {
protected:
    VerifyProject() {
        project.write({{"plan.dwg", noise(40000)}, {"parts.csv", "1;bolt\n"}});
        project.commit("first");
        project.write({{"parts.csv", "2;bolts\n"}});
        project.commit("second");
        toOldForms(project.folder);
    }

    static std::string digestOf(const std::string& contents) { return qrv::Digest::of(contents); }
    std::filesystem::path object(const std::string& contents) const {
        return project / (".qrv/objects/" + digestOf(contents));
    }
    std::filesystem::path store() const {
        return std::filesystem::directory_iterator(project / ".qrv/tf")->path();
    }

    /// Leaves what a command leaves that was killed before it wrote the file.
    void noteInterrupted(const std::string& path, const std::string& digest) const {
        const auto rootPath = common::RootPath::get(project.folder.text(), false).value();
        qrv::History history = qrv::History::open(rootPath, qrv::Database::Access::readWrite);
        qrv::JournalEntry entry;
        entry.title = L"restore";
        entry.steps.push_back({relative(OdString::fromNarrow(path)), OdString(),
                               OdString::fromNarrow("po:" + digest), 7});
        noteEntry(history, entry);
    }

    /// What is printed for one problem.
    static Outcome problem(const std::string& counts, const std::string& text) {
        return {1, counts + "\nProblems:\n  " + text + "\n", "qrv: Problems: 1\n"};
    }

    const HistoryProject project;
    const std::string root = std::filesystem::canonical(project.folder.path());
    const std::string counts = "Commits: 2\nObjects: 3\nPacked objects: 0\nDrawing versions: 1\n";
    const std::string allIsWell = "Everything that was kept is there and whole\n";
};

}  // namespace qrv_test

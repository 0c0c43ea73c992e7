#pragma once

#include <engine/base/Digest.h>
#include <engine/maintenance/Collection.h>
#include <engine/storage/PackWriter.h>
#include <tests/engine/worktree/Working.h>
#include <tests/support/Files.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qrv_test {

using Days = std::chrono::duration<int, std::ratio<86400>>;

/// Two commits of a text and of a drawing.
class CollectionFolder : public testing::Test {
protected:
    CollectionFolder() {
        for (const char* const version : {"first", "second"}) {
            project.write({{"a.txt", version}, {"plan.dwg", std::string("drawing, ") + version}});
            project.commit(version);
        }
    }

    qrv::Collected collect(qrv::CollectionMode mode = qrv::CollectionMode::change) const {
        return qrv::collectGarbage(project.open()->repository(), mode).value();
    }
    std::string object(const std::string& contents) const {
        return (project / (".qrv/objects/" + qrv::Digest::of(contents))).string();
    }
    /// Contents that no commit names, as a file of their own.
    std::string unnamedObject(const std::string& contents, Days age) const {
        writeFile(object(contents), contents);
        return aged(object(contents), age);
    }
    static std::string aged(const std::filesystem::path& file, Days age) {
        std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() - age);
        return file.string();
    }
    static Days ageOf(const std::filesystem::path& file) {
        return std::chrono::duration_cast<Days>(std::filesystem::file_time_type::clock::now() -
                                                std::filesystem::last_write_time(file));
    }
    std::vector<std::filesystem::path> packs() const { return filesIn(project / ".qrv/packs"); }
    static std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
        std::vector<std::filesystem::path> files;
        if (std::filesystem::exists(folder))
            for (const std::filesystem::directory_entry& entry :
                 std::filesystem::directory_iterator(folder))
                files.push_back(entry.path());
        std::sort(files.begin(), files.end());
        return files;
    }
    /// A pack as a command leaves it.
    std::filesystem::path pack(const std::vector<std::string>& contents, Days age) const {
        const std::vector<std::filesystem::path> before = packs();
        qrv::PackWriter writer(*sys::Folder::open(project.folder.path().string()));
        for (const std::string& each : contents)
            writer.add(qrv::toDigestBytes(qrv::Digest::of(each)), each, std::nullopt, std::nullopt)
                .value();
        const std::string name = writer.finish().value();
        const std::filesystem::path file = project / (".qrv/packs/" + name + ".pack");
        aged(file, age);
        return file;
    }
    bool isKept(const std::string& contents) const {
        const auto tree = project.open();
        const OdString url = L"po:" + OdString::fromNarrow(qrv::Digest::of(contents));
        return tree->repository().storages().objects().contains(tree->root(), url).value();
    }
    void expectWhole() const {
        const Outcome outcome = project.qrv({"verify"});
        EXPECT_EQ(outcome.status, 0) << outcome;
    }

    Working project;
    const std::string ignoreFile = readFile(project / ".qrv/properties/ignore");
    /// All that the commits name.
    const qrv::Amount named{5, static_cast<std::int64_t>(5 + 6 + 14 + 15 + ignoreFile.size())};
};

}  // namespace qrv_test

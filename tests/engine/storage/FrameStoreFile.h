#pragma once

#include <engine/base/Digest.h>
#include <engine/storage/FrameStore.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv_test {

inline constexpr qrv::FrameLayout testLayout = {.applicationId = 4711,
                                                .longestChain = 16,
                                                .longestSpanBytes = std::int64_t{1} << 30,
                                                .worthPercent = 90};

inline qrv::FrameStore openedWith(const OdString& path, qrv::Database::Access access,
                                  const qrv::FrameLayout& frames) {
    return {std::make_shared<qrv::Database>(path, access), access, frames};
}

/// Makes a drawing store with these revisions as earlier programs made it, below the root.
inline void oldStoreOf(const OdString& root, const std::string& name,
                       const std::vector<std::string>& revisions) {
    constexpr qrv::FrameLayout drawings = {.applicationId = 0x71727664,
                                           .longestChain = 16,
                                           .longestSpanBytes = std::int64_t{1} << 31,
                                           .worthPercent = 90};
    const std::string folder = root.toNarrow() + "/.qrv/tf/";
    std::filesystem::create_directories(folder);
    qrv::FrameStore store = openedWith(OdString::fromNarrow(folder + name + ".tf"),
                                       qrv::Database::Access::create, drawings);
    qrv::DatabaseTransaction transaction(store.database());
    for (const std::string& contents : revisions) {
        MemoryReader reader(contents);
        store.add(reader, store.newest()).value();
    }
    transaction.commit();
}

class FrameStoreFile : public testing::Test {
protected:
    static qrv::FrameStore open(const OdString& path) {
        qrv::FrameStore store = openedWith(path, qrv::Database::Access::create, testLayout);
        // Nobody cuts the power here, and without waiting for the disk it takes a tenth of the
        // time.
        store.database().execute("PRAGMA synchronous = OFF");
        return store;
    }

    // Adds contents behind the newest ones.
    Expected<qrv::FrameStore::Added> add(const std::string& contents) {
        MemoryReader reader(contents);
        qrv::DatabaseTransaction transaction(store_.database());
        Expected<qrv::FrameStore::Added> added = store_.add(reader, store_.newest());
        transaction.commit();
        return added;
    }
    void addRevisions(unsigned count) {
        for (unsigned number = 1; number <= count; ++number)
            ASSERT_TRUE(add(revision(number)));
    }
    void remove(const std::string& contents) {
        qrv::DatabaseTransaction transaction(store_.database());
        store_.remove(store_.find(qrv::Digest::of(contents)).value()).value();
        transaction.commit();
    }
    void setBytes(int frame, const std::string& bytes) {
        store_.database()
            .prepare("UPDATE pieces SET bytes = ? WHERE frame = ?")
            .run(std::string_view(bytes), frame);
    }
    // The contents, or the error with "FILE" for the path and "D1" for the digest of revision 1.
    std::string read(const std::string& contents) {
        try {
            const std::optional<qrv::Frame> frame = store_.find(qrv::Digest::of(contents));
            if (!frame)
                return "not there";
            const Expected<std::unique_ptr<qrv::VersionReader>> reader = store_.open(*frame);
            return withoutNames(reader ? readAll(**reader)
                                       : "error: " + reader.error().message.toNarrow());
        } catch (const qrv::DatabaseError& error) {
            return withoutNames("thrown: " + std::string(error.what()));
        }
    }
    std::string withoutNames(std::string text) const {
        if (!text.starts_with("error: ") && !text.starts_with("thrown: "))
            return text;
        for (unsigned number = 1; number <= 3; ++number)
            text = replaced(text, qrv::Digest::of(revision(number)), "D" + std::to_string(number));
        return replaced(text, path_.toNarrow(), "FILE");
    }
    // The numbers of the bases, 0 for a frame that stands alone.
    std::vector<std::int64_t> bases() {
        std::vector<std::int64_t> numbers;
        for (const qrv::Frame& frame : store_.frames())
            numbers.push_back(frame.base.value_or(0));
        return numbers;
    }
    std::size_t longestChain() {
        std::map<std::int64_t, std::size_t> lengths = {{0, 0}};
        for (const qrv::Frame& frame : store_.frames())
            lengths[frame.number] = lengths[frame.base.value_or(0)] + 1;
        return std::max_element(lengths.begin(), lengths.end(),
                                [](const auto& a, const auto& b) { return a.second < b.second; })
            ->second;
    }

    const TemporaryFolder folder_;
    const OdString path_ = folder_.text("frames");
    qrv::FrameStore store_ = open(path_);
};

}  // namespace qrv_test

#pragma once

#include <engine/base/Digest.h>
#include <engine/base/DigestBytes.h>
#include <engine/storage/Packs.h>
#include <sys/Folder.h>
#include <tests/engine/storage/Contents.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

namespace qrv_test {

inline qrv::DigestBytes digestOf(const std::string& contents) {
    return qrv::toDigestBytes(qrv::Digest::of(contents));
}

/// A folder for packs of its own.
class PackFolder : public testing::Test {
protected:
    static void add(qrv::PackWriter& writer, const std::string& contents,
                    const std::optional<qrv::Sketch>& sketch = std::nullopt) {
        writer.add(digestOf(contents), contents, std::nullopt, sketch).value();
    }
    /// The name of a pack of these contents.
    std::string packOf(const std::vector<std::string>& all) const {
        qrv::PackWriter writer(root_);
        for (const std::string& contents : all)
            add(writer, contents);
        return writer.finish().value();
    }
    /// Adds contents as a difference from others, at a depth of 2.
    static void addAgainst(qrv::PackWriter& writer, const std::string& contents,
                           const std::string& base) {
        const qrv::DifferenceBase against = {
            .digest = digestOf(base), .contents = base, .depth = 2, .roundStart = 1};
        writer.add(digestOf(contents), contents, against, std::nullopt).value();
    }
    /// The name of a pack of nothing else.
    std::string packOfDifference(const std::string& contents, const std::string& base) const {
        qrv::PackWriter writer(root_);
        addAgainst(writer, contents, base);
        return writer.finish().value();
    }
    std::shared_ptr<const qrv::PackReader> opened(const std::string& name) const {
        return qrv::Packs(root_).openPack(name).value();
    }
    /// The contents of that digest as some packs give them.
    static std::string read(qrv::Packs& packs, const qrv::DigestBytes& digest) {
        const Expected<std::unique_ptr<qrv::VersionReader>> reader = packs.open(digest);
        if (!reader)
            return "error: " + reader.error().message.toNarrow();
        return *reader ? readAll(**reader) : "not there";
    }
    std::string read(const std::string& contents) const {
        qrv::Packs packs(root_);
        return read(packs, digestOf(contents));
    }
    std::filesystem::path fileOf(const std::string& name) const {
        return folder_ / (".qrv/packs/" + name + ".pack");
    }
    std::vector<std::string> files() const { return listTree(folder_ / ".qrv/packs"); }

    const TemporaryFolder folder_;
    const sys::Folder root_ = *sys::Folder::open(folder_.path().string());
};

}  // namespace qrv_test

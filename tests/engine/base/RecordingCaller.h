#pragma once

#include <engine/base/Caller.h>

#include <memory>
#include <string>
#include <vector>

namespace qrv_test {

/// Keeps what it is told, and trusts nobody.
class RecordingCaller : public qrv::Caller {
public:
    void note(const OdString& text) override { notes.push_back(text.toNarrow()); }
    std::unique_ptr<qrv::Work> beginWork(const OdString&, std::size_t) override {
        class Recording : public qrv::Work {
        public:
            explicit Recording(std::vector<std::int64_t>& done) : done_(done) {}
            void add(std::int64_t sizeBytes) override { done_.push_back(sizeBytes); }

        private:
            std::vector<std::int64_t>& done_;
        };
        return std::make_unique<Recording>(sizes);
    }
    std::string action() const override { return "test"; }
    bool isPerson(std::uint32_t) const override { return false; }
    Expected<std::vector<OdString>> trustedFolders() const override { return trusted; }
    bool followsSharedFolders() const override { return followsShared; }

    std::vector<std::string> notes;
    /// Of the files that were done, in the order of all work.
    std::vector<std::int64_t> sizes;
    std::vector<OdString> trusted;
    bool followsShared = true;
};

/// For whoever does not look at what it is told.
inline RecordingCaller& anyCaller() {
    static RecordingCaller one;
    return one;
}

}  // namespace qrv_test

#include <engine/base/Digest.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/storage/LooseObject.h>
#include <engine/storage/StorageMessages.h>

#include <utility>

namespace qrv {

namespace {

class LooseObjectReader : public VersionReader {
public:
    LooseObjectReader(sys::InputFile file, std::int64_t sizeBytes, std::string digest, OdString url)
        : file_(std::move(file)),
          sizeBytes_(sizeBytes),
          expected_(std::move(digest)),
          url_(std::move(url)) {}

    Expected<std::size_t> read(std::span<char> buffer) override {
        if (hasEnded_)
            return std::size_t{0};
        const sys::Outcome<std::size_t> count = file_.read(buffer);
        if (!count)
            return cannotRead(url_, causeOf(count.error()));
        digest_.add(buffer.first(*count));
        if (*count == buffer.size())
            return *count;
        hasEnded_ = true;
        if (digest_.finish() != expected_)
            return damaged(url_, tr(L"its contents have another digest"));
        return *count;
    }

    std::int64_t sizeBytes() const override { return sizeBytes_; }

private:
    sys::InputFile file_;
    std::int64_t sizeBytes_;
    Digest digest_;
    std::string expected_;
    OdString url_;
    bool hasEnded_ = false;
};

}  // namespace

Expected<std::unique_ptr<VersionReader>> readLooseObject(sys::InputFile file,
                                                         const std::string& digest,
                                                         const OdString& url) {
    const sys::Outcome<sys::FileStamp> stamp = file.stamp();
    if (!stamp)
        return cannotRead(url, causeOf(stamp.error()));
    return std::unique_ptr<VersionReader>(
        std::make_unique<LooseObjectReader>(std::move(file), stamp->sizeBytes, digest, url));
}

}  // namespace qrv

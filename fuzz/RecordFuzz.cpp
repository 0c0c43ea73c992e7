// A recorded commit is one that writes these very bytes, compressed or not, and a packed URL the
// only form of its URL, whoever wrote them.

#include <engine/history/CommitRecord.h>
#include <engine/history/RecordFrameInternal.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/PackedUrl.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

static bool holds(std::string_view bytes) {
    constexpr std::size_t mostBytes = 1 << 20;
    const Expected<std::string> record = qrv::recordIn(bytes, mostBytes);
    if (record && qrv::isRecordFrame(bytes) && record->size() > mostBytes)
        return false;
    const Expected<qrv::NewCommit> commit =
        record ? qrv::commitOfRecord(*record) : Expected<qrv::NewCommit>(record.error());
    if (commit && recordOf(*commit) != *record)
        return false;
    const std::optional<OdString> url = qrv::unpackedUrl(bytes);
    return !url || ((url->isEmpty() || qrv::isCheckedUrl(*url)) && qrv::packedUrl(*url) == bytes);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (!holds({reinterpret_cast<const char*>(bytes), size}))
        std::abort();
    return 0;
}

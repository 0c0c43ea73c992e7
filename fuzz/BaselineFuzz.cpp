// A baseline with a right digest may have been made by anybody. What is read is written back as it
// was.

#include <engine/base/Digest.h>
#include <engine/worktree/BaselineBytes.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string body(reinterpret_cast<const char*>(bytes), size);
    const std::string whole = "qrv baseline 2\n" + qrv::Digest::of(body) + body;
    const std::optional<qrv::KeptBaseline> kept = qrv::fromBytes(whole);
    if (kept && qrv::toBytes(kept->last, *kept->baseline) != whole)
        std::abort();
    return 0;
}

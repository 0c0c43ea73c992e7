// A pack with right checksums may have been made by anybody. Whatever is read out of it to its end
// has its digest.

#include <engine/base/Digest.h>
#include <engine/storage/Packs.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(bytes), size);
    if (size < qrv::blockRowBytes + qrv::entryRowBytes)
        return 0;
    // A row of each table, the rest being what is stored.
    qrv::PackBlock block = {.kind = static_cast<qrv::BlockKind>(bytes[24]), .depth = bytes[25]};
    std::memcpy(&block.offset, bytes, 3 * sizeof block.offset);
    std::memcpy(block.base.data(), bytes + 28, block.base.size());
    const std::string entry = input.substr(qrv::blockRowBytes, qrv::entryRowBytes);
    std::string pack(qrv::packHeader);
    pack += input.substr(qrv::blockRowBytes + qrv::entryRowBytes);
    qrv::PackTrailer end = {.blocksEnd = std::ssize(pack), .blockCount = 1, .entryCount = 1};
    std::string page;
    append(page, qrv::PackPage{.firstDigest = 0, .checksum = qrv::checksumOf(entry)});
    end.pageChecksum = qrv::checksumOf(page);
    append(pack, block);
    pack += entry + page;
    append(pack, end);
    append(pack, end);

    const auto folder = std::filesystem::temp_directory_path() / "qrv-pack-fuzz";
    std::filesystem::create_directories(folder / ".qrv/packs");
    std::ofstream(folder / ".qrv/packs/0123456789abcdef.pack", std::ios::binary) << pack;
    const qrv::DigestBytes digest = qrv::entryOf(entry).digest;
    const auto version = qrv::Packs(*sys::Folder::open(folder.string())).open(digest);
    const std::int64_t length = version && *version ? (*version)->sizeBytes() : 1 << 20;
    std::string contents(static_cast<std::size_t>(length) % (1 << 20), '\0');
    if (length < 1 << 20 && (*version)->read(contents) &&
        qrv::Digest::of(contents) != qrv::toDigits(digest))
        std::abort();
    return 0;
}

// The parts of a storage URL are where its beginning and its hash signs say, whoever sent it.

#include <common/storage/StorageUrl.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

static common::RootPath someRoot() {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                         ("url-fuzz-" + std::to_string(std::random_device()()));
    const auto root = common::RootPath::get(OdString::fromNarrow(folder.string()), true);
    std::filesystem::remove_all(folder);
    return root.value();
}

static bool holds(const common::RootPath& root, const OdString& url) {
    const bool isDrawing = url.left(2) == OdString(L"tf");
    const OdString digest = url.right(64);
    const auto revision = common::getRevision(url);
    const auto path = common::getStoragePath(root, url);
    if ((common::urlToType(url) == common::FileStorage::Drawing) != isDrawing)
        return false;
    if (url.left(2) == OdString(L"po"))
        return *revision == digest && path->right(digest.getLength()) == digest;
    if (!isDrawing)
        return !revision && !path;
    if (path && !(revision && (*path)[0] == L'/'))
        return false;
    return !revision || (revision->find(L'#') < 0 && url.right(revision->getLength()) == *revision);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const common::RootPath root = someRoot();
    if (!holds(root, OdString::fromNarrow({reinterpret_cast<const char*>(bytes), size})))
        std::abort();
    return 0;
}

// An accepted path stays below its root and avoids our folder; a URL has the parts that it names.

#include <common/storage/StorageUrl.h>
#include <engine/paths/CheckedUrl.h>
#include <engine/paths/RelativePath.h>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <regex>

static bool staysBelowRoot(const std::string& path) {
    static const int root = ::open("/usr", O_PATH | O_DIRECTORY);
    open_how how = {.flags = O_PATH, .mode = 0, .resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS};
    const long opened = ::syscall(SYS_openat2, root, path.c_str(), &how, sizeof how);
    return opened < 0 ? errno != EXDEV : ::close(static_cast<int>(opened)) == 0;
}

static bool avoidsMetadata(const std::wstring& path) {
    static const std::wregex ignored(L"[\x200C-\x200F\x202A-\x202E\x206A-\x206F\xFEFF]");
    static const std::wregex own(L"^([^/]*/)*(\\.qrv(?!/properties/)|qrv~[0-9]+)[. ]*(/|$)",
                                 std::regex::icase);
    return !std::regex_search(std::regex_replace(path, ignored, L""), own);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto text = OdString::fromNarrow({reinterpret_cast<const char*>(bytes), size % 300});
    const auto path = qrv::RelativePath::check(text);
    const auto url = qrv::CheckedUrl::check(text);
    const bool isWrong = url && *common::getRevision(text) != url->digest();
    if (isWrong || (path && !(staysBelowRoot(path->bytes()) && avoidsMetadata(text.toWide()))))
        std::abort();
    return 0;
}

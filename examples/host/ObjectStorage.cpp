#include "ObjectStorage.h"

#include <platform/ut/File.h>
#include <platform/ut/FileName.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int anyKind = 0x1FFF;
constexpr int folderMode = 0777;
constexpr int digestLength = 64;
constexpr int longestFileBytes = std::numeric_limits<int>::max();

ErrorMessage failure(const wchar_t* pattern, const OdString& subject) {
    return {OdString::format(pattern, subject)};
}

bool exists(const OdString& file) {
    return ut::FileName(file).exists(anyKind);
}

OdString digestOf(const std::string& bytes) {
    return generateSha(bytes.data(), static_cast<int>(bytes.size()));
}

// Regular files only: a pipe would let the host wait for ever.
Expected<std::string> readFile(const OdString& name) {
    ut::File file;
    if (!file.open(name) || file.length() > longestFileBytes)
        return failure(L"'%ls' cannot be read", name);
    std::string bytes(static_cast<std::size_t>(file.length()), '\0');
    if (file.read(bytes.data(), bytes.size()) != bytes.size())
        return failure(L"'%ls' was not read to its end", name);
    return bytes;
}

// Written beside the target and renamed, so that nobody ever sees half a file.
Expected<void> writeFile(const OdString& name, const std::string& bytes) {
    const fs::path target = name.toNarrow();
    const fs::path beside = (name + L".new").toNarrow();
    const OdString folder = OdString::fromNarrow(target.parent_path().string());
    if (!ut::FileName::mkdir(folder, folderMode, true))
        return failure(L"The folder '%ls' cannot be made", folder);
    std::ofstream file(beside, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    std::error_code problem;
    if (file)
        fs::rename(beside, target, problem);
    if (file && !problem)
        return {};
    fs::remove(beside, problem);
    return failure(L"'%ls' cannot be written", name);
}

// URLs come from the server as well: one that is no digest could name any file of this machine.
Expected<OdString> objectFile(const common::RootPath& root, const OdString& url) {
    const std::string digest = url.mid(3).toNarrow();
    const bool isDigest = digest.size() == digestLength &&
                          digest.find_first_not_of("0123456789abcdef") == std::string::npos;
    if (url.left(3) != OdString(L"po:") || !isDigest)
        return failure(L"'%ls' names no stored file", url);
    return common::getStoragePath(root, url);
}

Expected<std::string> readObject(const common::RootPath& root, const OdString& url) {
    const Expected<OdString> file = objectFile(root, url);
    if (!file)
        return file.error();
    const Expected<std::string> bytes = readFile(*file);
    if (bytes && digestOf(*bytes) != url.mid(3))
        return failure(L"The stored file '%ls' is damaged", *file);
    return bytes;
}

// Of the metadata folder only the properties are versioned with the project.
bool isVersioned(const fs::path& relative) {
    const bool namesMetadata = std::any_of(relative.begin(), relative.end(), [](const auto& part) {
        return OdString::fromNarrow(part.string()).iCompare(L".qrv") == 0;
    });
    return !namesMetadata || relative.parent_path() == ".qrv/properties";
}

// Paths come from the server as well: none may lead out of the root, neither by its names nor
// through a symbolic link.
Expected<OdString> workingFile(const common::RootPath& root, const OdString& path) {
    if (path.isEmpty() || path.find(L'\0') >= 0)
        return failure(L"'%ls' is no path of this project", path);
    std::error_code problem;
    const fs::path top = fs::canonical(root.path().toNarrow(), problem);
    const fs::path file = problem ? top : fs::weakly_canonical(top / path.toNarrow(), problem);
    const fs::path relative = file.lexically_relative(top);
    const bool isInside = !relative.empty() && relative != "." && *relative.begin() != "..";
    if (problem || !isInside || !isVersioned(relative))
        return failure(L"'%ls' is no path of this project", path);
    return OdString::fromNarrow(file.string());
}

}  // namespace

Expected<OdString> ObjectStorage::keep(const common::RootPath& root, const OdString& file) {
    const Expected<std::string> bytes = readFile(file);
    if (!bytes)
        return bytes.error();
    const OdString url = L"po:" + digestOf(*bytes);
    const Expected<OdString> object = objectFile(root, url);
    if (!object)
        return object.error();
    // Looked at as a whole: what is only said to be there may be damaged, or out of reach.
    if (!readObject(root, url)) {
        const Expected<void> written = writeFile(*object, *bytes);
        if (!written)
            return written.error();
    }
    return url;
}

Expected<OdString> ObjectStorage::store(const common::RootPath& root, const OdString& path) {
    return keep(root, root.pathTo(path));
}

Expected<bool> ObjectStorage::contains(const common::RootPath& root, const OdString& url) {
    const Expected<OdString> file = objectFile(root, url);
    if (!file)
        return file.error();
    return exists(*file);
}

Expected<void> ObjectStorage::exportTo(const common::RootPath& root, const OdString& url,
                                       const OdString& target) {
    const Expected<std::string> bytes = readObject(root, url);
    if (!bytes)
        return bytes.error();
    return writeFile(target, *bytes);
}

Expected<common::DiffHandles> ObjectStorage::compare(const common::RootPath&, const OdString& url,
                                                     const OdString&) {
    return failure(L"'%ls' is not kept as a drawing: its objects cannot be compared", url);
}

Expected<bool> ObjectStorage::restore(const common::RootPath& root, const OdString& url,
                                      const OdString& path) {
    const Expected<bool> isKept = contains(root, url);
    if (!isKept || !*isKept)
        return isKept;
    const Expected<OdString> target = workingFile(root, path);
    if (!target)
        return target.error();
    const Expected<void> written = exportTo(root, url, *target);
    if (!written)
        return written.error();
    return true;
}

Expected<void> ObjectStorage::remove(const common::RootPath& root, const OdString& url) {
    const Expected<OdString> file = objectFile(root, url);
    if (!file)
        return file.error();
    std::error_code problem;
    fs::remove(file->toNarrow(), problem);
    if (problem)
        return failure(L"'%ls' cannot be removed", *file);
    return {};
}

Expected<void> ObjectStorage::verify(const common::RootPath& root, const OdString& url) {
    const Expected<std::string> bytes = readObject(root, url);
    if (!bytes)
        return bytes.error();
    return {};
}

Expected<std::vector<OdString>> ObjectStorage::revisions(const common::RootPath& root,
                                                         const OdString& url) {
    const Expected<bool> isKept = contains(root, url);
    if (!isKept)
        return isKept.error();
    // Objects know nothing of each other, so a version has no earlier ones beside it.
    return *isKept ? std::vector<OdString>{url} : std::vector<OdString>();
}

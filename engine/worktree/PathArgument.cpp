#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <engine/worktree/PathArgument.h>

#include <filesystem>
#include <system_error>

namespace qrv {

namespace fs = std::filesystem;

namespace {

/// Links in the folders are followed, as the root was found without links; the last name is kept as
/// it is, since it may be a link itself, or gone.
fs::path withoutLinks(const fs::path& path) {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(path.parent_path(), error);
    return error ? path : folder / path.filename();
}

bool isBelow(const fs::path& relative) {
    return !relative.empty() && *relative.begin() != "..";
}

}  // namespace

Expected<OdString> pathInRepository(const common::RootPath& root, const std::string& argument) {
    std::error_code error;
    fs::path absolute = fs::absolute(argument, error).lexically_normal();
    // A separator at the end says that a folder is meant, and changes nothing else.
    if (!absolute.has_filename() && absolute.has_relative_path())
        absolute = absolute.parent_path();
    const fs::path base = fs::path(root.path().toNarrow()).lexically_normal();
    fs::path relative = withoutLinks(absolute).lexically_relative(base);
    // Where a link took the place of a folder, the files that were in it keep their names.
    if (!isBelow(relative))
        relative = absolute.lexically_relative(base);
    if (relative == ".")
        return OdString();
    if (error || argument.empty() || !isBelow(relative))
        return ErrorMessage{OdString::format(tr(L"'%ls' lies outside the repository '%ls'"),
                                             printable(OdString::fromNarrow(argument)),
                                             printable(root.path()))};
    return OdString::fromNarrow(relative.native());
}

}  // namespace qrv

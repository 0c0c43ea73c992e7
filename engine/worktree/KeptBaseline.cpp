#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/worktree/KeptBaseline.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace qrv {

namespace {

constexpr std::uint32_t permissions = 0666;
/// Enough for some millions of files. More is not worth the memory.
constexpr std::size_t maximumSizeBytes = 256 << 20;

ErrorMessage unreadable(std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be read: %ls"), OdString(layout::baselinePath), cause);
}

}  // namespace

KeptBaseline toKept(const common::State& state, const sys::FileStamp& stateFile,
                    const OdString& headCommit, std::shared_ptr<const Baseline> baseline) {
    KeptBaseline kept;
    kept.stateFile = stateFile;
    kept.headCommit = headCommit;
    kept.state.head = state.head;
    kept.state.stagedFiles = state.stagedFiles;
    kept.state.renames = state.renames;
    kept.baseline = std::move(baseline);
    return kept;
}

Expected<std::optional<KeptBaseline>> readBaseline(const sys::Folder& root) {
    const sys::Outcome<sys::InputFile> file = root.openFile(layout::baselinePath);
    if (!file && file.error() == std::errc::no_such_file_or_directory)
        return std::optional<KeptBaseline>();
    sys::Outcome<std::vector<char>> bytes = file ? file->readWhole(maximumSizeBytes) : file.error();
    if (!bytes && bytes.error() == std::errc::file_too_large)
        return damagedBaseline();
    if (!bytes)
        return unreadable(bytes.error());
    if (isOfLaterProgram({bytes->data(), bytes->size()}))
        return std::optional<KeptBaseline>();
    std::optional<KeptBaseline> kept = fromBytes(std::move(*bytes));
    if (!kept)
        return damagedBaseline();
    return kept;
}

ErrorMessage damagedBaseline() {
    return {OdString::format(tr(L"'%ls' is damaged (qrv status makes it anew)"),
                             OdString(layout::baselinePath))};
}

std::error_code writeBaseline(const KeptBaseline& kept, const sys::Folder& root) {
    const std::string bytes = toBytes(kept);
    if (bytes.size() > maximumSizeBytes)
        return std::make_error_code(std::errc::file_too_large);
    sys::Outcome<sys::NewFile> file = root.newFile(layout::baselinePath, permissions);
    if (!file)
        return file.error();
    if (const std::error_code error = file->write(bytes))
        return error;
    // Otherwise a cut of the power can leave the new name with half the bytes, which looks like
    // damage. That the name may be gone again then is no loss.
    if (const std::error_code error = file->flush())
        return error;
    return file->publish(sys::NewFile::Existing::replace);
}

}  // namespace qrv

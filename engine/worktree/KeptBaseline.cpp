#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/paths/Layout.h>
#include <engine/worktree/KeptBaseline.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

namespace {

constexpr std::uint32_t permissions = 0666;
/// Enough for some millions of files. More is not worth the memory.
constexpr std::size_t maximumSizeBytes = 256 << 20;

std::uint64_t pathBytesOf(const Baseline& baseline) {
    std::uint64_t length = 0;
    for (const KnownFile& file : baseline.files())
        length += file.path.size();
    return length;
}

ErrorMessage unreadable(std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be read: %ls"), OdString(layout::baselinePath), cause);
}

}  // namespace

Expected<std::optional<KeptBaseline>> readBaseline(const sys::Folder& root) {
    const sys::Outcome<sys::InputFile> file = root.openFile(layout::baselinePath);
    if (!file && file.error() == std::errc::no_such_file_or_directory)
        return std::optional<KeptBaseline>();
    const sys::Outcome<std::vector<char>> bytes =
        file ? file->readWhole(maximumSizeBytes) : file.error();
    if (!bytes && bytes.error() == std::errc::file_too_large)
        return damagedBaseline();
    if (!bytes)
        return unreadable(bytes.error());
    const std::string_view text(bytes->data(), bytes->size());
    if (isOfOtherProgram(text))
        return std::optional<KeptBaseline>();
    std::optional<KeptBaseline> kept = fromBytes(text);
    if (!kept)
        return damagedBaseline();
    return kept;
}

std::optional<BaselineHeading> readBaselineHeading(const sys::Folder& root) {
    const sys::Outcome<sys::InputFile> file = root.openFile(layout::baselinePath);
    std::vector<char> bytes(baselineHeadingLength);
    const sys::Outcome<std::size_t> length =
        file ? file->readAt(0, bytes) : sys::Outcome<std::size_t>(file.error());
    return length ? headingFrom({bytes.data(), *length}) : std::nullopt;
}

ErrorMessage damagedBaseline() {
    return {OdString::format(tr(L"'%ls' is damaged (qrv status makes it anew)"),
                             OdString(layout::baselinePath))};
}

std::error_code writeBaseline(const HeadChange& last, const Baseline& baseline,
                              const sys::Folder& root) {
    const std::string bytes = toBytes(last, baseline);
    if (bytes.size() > maximumSizeBytes ||
        pathBytesOf(baseline) > mostPathBytes(bytes.size() - baselineHeadingLength))
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

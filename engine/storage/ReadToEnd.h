#pragma once

#include <common/base/Expected.h>
#include <engine/storage/CopyBuffer.h>
#include <engine/storage/VersionReader.h>

#include <cstddef>
#include <system_error>

namespace qrv {

inline bool hasFailed(const Expected<void>& result) {
    return !result;
}

inline bool hasFailed(std::error_code result) {
    return static_cast<bool>(result);
}

/// Reads a `VersionReader`, or a `sys::InputFile`, from where it stands to its end, piece by piece.
/// `use` takes each piece, of which the last may be empty, and answers success, or the error that
/// ends the reading. Gives that, or why the source cannot be read: of a version an `ErrorMessage`,
/// of a file an error code.
template <class Source, class Use>
auto readToEnd(Source& source, CopyBuffer& buffer, Use use) -> decltype(use(buffer.first(0))) {
    for (;;) {
        const auto count = source.read(buffer.span());
        if (!count)
            return count.error();
        if (auto result = use(buffer.first(*count)); hasFailed(result))
            return result;
        if (*count < buffer.size())
            return {};
    }
}

/// Reads a version to its end, where its size and digest are compared, and forgets its bytes.
/// Fails when it cannot be read or is damaged.
Expected<void> readToEnd(VersionReader& version);

}  // namespace qrv

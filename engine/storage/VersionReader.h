#pragma once

#include <common/base/Expected.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace qrv {

/// The bytes of one stored version, from their beginning to their end.
class VersionReader {
public:
    VersionReader() = default;
    VersionReader(const VersionReader&) = delete;
    VersionReader& operator=(const VersionReader&) = delete;
    virtual ~VersionReader() = default;

    /// Reads the next bytes and gives their number: less than asked for only at the end. Fails when
    /// they cannot be read, and, at the end, when they are not those that were stored: size and
    /// digest are compared with what the version's name and the storage say. So nothing that was
    /// read counts before the end was reached.
    virtual Expected<std::size_t> read(std::span<char> buffer) = 0;
    virtual std::int64_t sizeBytes() const = 0;
};

}  // namespace qrv

#pragma once

#include <string_view>
#include <system_error>

namespace qrv::cli {

/// Standard output. A failure is remembered and told once, by `finish`; what is written after it is
/// lost.
///
/// A reader that goes away (`qrv files | head`) is an ordinary failure, `std::errc::broken_pipe`,
/// and not the end of the process: an unfinished change of the repository is not cut off.
class Output {
public:
    /// Also makes sure that a standard stream that was closed when the process began stays
    /// unusable: otherwise the next file to be opened would take its number and receive what is
    /// printed.
    Output();

    void write(std::string_view bytes);

    /// Hands everything over and closes the stream. Gives the first failure, or none.
    std::error_code finish();

private:
    std::error_code failure_;
};

}  // namespace qrv::cli

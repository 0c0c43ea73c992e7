#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qrv {

/// The lines of a text of less than 4 GB, which must live as long. Each has its line feed; the last
/// one may have none. A carriage return is a character like any other.
class Lines {
public:
    explicit Lines(std::string_view text);

    std::size_t size() const { return begins_.size() - 1; }
    std::string_view operator[](std::size_t index) const {
        return text_.substr(begins_[index], begins_[index + 1] - begins_[index]);
    }

private:
    std::string_view text_;
    // And the end of the last line. Four bytes each, as there may be as many lines as bytes.
    std::vector<std::uint32_t> begins_;
};

/// Whether a person can compare it by lines: there is no NUL near its beginning. Any encoding will
/// do, for the drawings and lists of an office are often older than UTF-8.
bool isText(std::string_view bytes);

}  // namespace qrv

#pragma once

#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace qrv::cli {

/// A line on standard error that tells how far long work is: how many files of how many, how much,
/// and how quickly. Appears only on a terminal and only after half a second, and is gone at its
/// end.
class Progress : public Work {
public:
    /// `title` says what is done ("Storing"); of `total` files, or of nobody knows how many (0).
    Progress(const OdString& title, std::size_t total);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() override;

    void add(std::int64_t sizeBytes) override;

private:
    using Clock = std::chrono::steady_clock;

    void show(Clock::time_point now);

    OdString title_;
    std::size_t total_;
    std::size_t count_ = 0;
    std::int64_t sizeBytes_ = 0;
    bool isTerminal_;
    bool isShown_ = false;
    Clock::time_point begin_;
    Clock::time_point next_;
};

/// "812 bytes", "1.4 KB", "23 MB", "1.2 GB": of a thousand each, with two digits at least.
OdString sizeText(std::int64_t sizeBytes);

}  // namespace qrv::cli

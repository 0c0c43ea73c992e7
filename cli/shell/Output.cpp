#include <cli/shell/Output.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace qrv::cli {

namespace {

constexpr std::size_t bufferSizeBytes = 1 << 16;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// Opened the wrong way round, so that using the stream goes on failing.
void occupyIfClosed(std::FILE* stream, const char* wrongMode) {
    if (std::ftell(stream) == -1 && errno == EBADF)
        static_cast<void>(std::freopen("/dev/null", wrongMode, stream));
}

}  // namespace

Output::Output() {
    // In the order of their numbers: each takes the lowest one that is free.
    occupyIfClosed(stdin, "w");
    occupyIfClosed(stdout, "r");
    occupyIfClosed(stderr, "r");
#ifdef SIGPIPE
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
#endif
    static_cast<void>(std::setvbuf(stdout, nullptr, _IOFBF, bufferSizeBytes));
}

void Output::write(std::string_view bytes) {
    if (!failure_ && std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size())
        failure_ = lastError();
}

std::error_code Output::finish() {
    if (std::fclose(stdout) != 0 && !failure_)
        failure_ = lastError();
    return failure_;
}

}  // namespace qrv::cli

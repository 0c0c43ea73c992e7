#pragma once

namespace sys {

/// While one lives, a wish to end the process (Ctrl-C, a terminal that is closed, `kill`) is only
/// noted: the work asks `isWanted` where it can stop without leaving anything behind. A second wish
/// of the same kind ends the process at once, as ever. What this process was started to ignore
/// (`nohup`) stays ignored. One at a time, for a program only: a library leaves signals to its
/// host.
class [[nodiscard]] Interruption {
public:
    Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;
    /// From here on such a wish ends the process again.
    ~Interruption();

    /// Whether one was noted since the process began.
    static bool isWanted();
    /// Ends the process in the way that was wished, so that whoever started it sees that; returns
    /// when nothing was noted.
    static void carryOut();
};

}  // namespace sys

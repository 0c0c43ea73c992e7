#include <sys/Terminal.h>

#include <gmock/gmock.h>
#include <pty.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdio>

namespace {

/// Stands in for standard error while it lives.
class ErrorStream {
public:
    explicit ErrorStream(int descriptor) : old_(::dup(STDERR_FILENO)) {
        ::dup2(descriptor, STDERR_FILENO);
    }
    ErrorStream(const ErrorStream&) = delete;
    ErrorStream& operator=(const ErrorStream&) = delete;
    ~ErrorStream() {
        ::dup2(old_, STDERR_FILENO);
        ::close(old_);
    }

private:
    int old_;
};

TEST(Terminal, IsToldFromAPipeAndHasItsWidth) {
    int master = -1;
    int slave = -1;
    const winsize size = {.ws_row = 30, .ws_col = 123, .ws_xpixel = 0, .ws_ypixel = 0};
    ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, &size), 0);
    {
        const ErrorStream terminal(slave);
        EXPECT_TRUE(sys::isTerminal(sys::Stream::error));
        EXPECT_EQ(sys::terminalWidth(sys::Stream::error), 123);
    }
    int pipe[2] = {};
    ASSERT_EQ(::pipe(pipe), 0);
    {
        const ErrorStream noTerminal(pipe[1]);
        EXPECT_FALSE(sys::isTerminal(sys::Stream::error));
        EXPECT_EQ(sys::terminalWidth(sys::Stream::error), 80);
    }
    for (const int descriptor : {master, slave, pipe[0], pipe[1]})
        ::close(descriptor);
}

TEST(Terminal, WithoutASizeIsEightyColumnsWide) {
    int master = -1;
    int slave = -1;
    ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    {
        const ErrorStream terminal(slave);
        EXPECT_EQ(sys::terminalWidth(sys::Stream::error), 80);
    }
    ::close(master);
    ::close(slave);
}

TEST(Names, AreThoseOfTheUserAndTheMachine) {
    utsname names = {};
    ASSERT_EQ(::uname(&names), 0);
    EXPECT_EQ(sys::hostName(), names.nodename);
    if (::geteuid() == 0) {
        EXPECT_EQ(sys::userName(), "root");
    }
    EXPECT_NE(sys::userName(), "");
}

}  // namespace

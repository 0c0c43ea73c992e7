#include <tests/cli/Program.h>
#include <tests/support/Files.h>
#include <tests/support/TemporaryFolder.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ostream>
#include <stdexcept>

namespace qrv_test {

namespace fs = std::filesystem;

namespace {

void redirect(int descriptor, const fs::path& file) {
    const int opened = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (opened < 0 || ::dup2(opened, descriptor) < 0)
        ::_exit(126);
    ::close(opened);
}

/// English messages, but still the locale's numbers.
void setLanguage() {
    if (const char* const locale = ::getenv("LC_ALL"))
        ::setenv("LC_NUMERIC", std::string(locale).c_str(), 1);
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"})
        ::unsetenv(name);
    ::setenv("LANG", "C.UTF-8", 1);
}

/// The search for leaks takes longer than most commands, and does not work under a tracer. That the
/// program has none is for LeakTest to say, and for the random walks.
void leaveOutLeaks() {
    const char* const options = ::getenv("ASAN_OPTIONS");
    ::setenv("ASAN_OPTIONS", (std::string(options ? options : "") + ":detect_leaks=0").c_str(), 1);
}

void setEnvironment(const Environment& environment, const fs::path& captured) {
    setLanguage();
    leaveOutLeaks();
    ::setenv("QRV", QRV_PROGRAM, 1);
    ::setenv("QRV_CONFIG_DIR", (captured / "configuration").c_str(), 1);
    for (const auto& [name, value] : environment)
        ::setenv(name.c_str(), value.c_str(), 1);
}

[[noreturn]] void become(const fs::path& folder, std::vector<std::string>& arguments,
                         const fs::path& captured) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    redirect(STDOUT_FILENO, captured / "output");
    redirect(STDERR_FILENO, captured / "messages");
    if (::chdir(folder.c_str()) == 0)
        ::execv(pointers[0], pointers.data());
    ::_exit(127);
}

Outcome run(const fs::path& folder, std::vector<std::string> arguments,
            const Environment& environment) {
    const TemporaryFolder captured;
    const pid_t child = ::fork();
    if (child == 0) {
        setEnvironment(environment, captured.path());
        become(folder, arguments, captured.path());
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child)
        throw std::runtime_error("cannot run " + arguments[0]);
    return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status),
            readFile(captured / "output"), readFile(captured / "messages")};
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "status " << outcome.status << "\n--- output\n"
                  << outcome.output << "--- messages\n"
                  << outcome.messages << "---";
}

Outcome runQrv(const fs::path& folder, std::vector<std::string> arguments,
               const Environment& environment) {
    arguments.insert(arguments.begin(), QRV_PROGRAM);
    return run(folder, std::move(arguments), environment);
}

Outcome runShell(const fs::path& folder, const std::string& line, const Environment& environment) {
    return run(folder, {"/bin/sh", "-c", line}, environment);
}

std::map<std::string, std::string> contentsOf(const fs::path& folder) {
    std::map<std::string, std::string> contents;
    for (const std::string& path : listTree(folder)) {
        const fs::path entry = folder / path;
        if (fs::is_symlink(entry))
            contents[path] = fs::read_symlink(entry).string();
        else
            contents[path] = path.ends_with('/') ? "" : readFile(entry);
    }
    return contents;
}

}  // namespace qrv_test

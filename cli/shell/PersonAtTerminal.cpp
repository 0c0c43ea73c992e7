#include <cli/shell/PersonAtTerminal.h>
#include <cli/terminal/Message.h>
#include <cli/terminal/Progress.h>
#include <cli/user/Settings.h>
#include <sys/Interruption.h>
#include <sys/User.h>

#include <QByteArray>

namespace qrv::cli {

namespace {

constexpr std::uint32_t administrator = 0;

}  // namespace

void PersonAtTerminal::note(const OdString& text) {
    printMessage(text);
}

std::unique_ptr<Work> PersonAtTerminal::beginWork(const OdString& title, std::size_t total) {
    return std::make_unique<Progress>(title, total);
}

bool PersonAtTerminal::isPerson(std::uint32_t user) const {
    if (sys::effectiveUser() != administrator)
        return false;
    bool isNumber = false;
    const std::uint32_t caller = qgetenv("SUDO_UID").toUInt(&isNumber);
    return isNumber && caller == user;
}

Expected<std::vector<OdString>> PersonAtTerminal::trustedFolders() const {
    return cli::trustedFolders();
}

bool PersonAtTerminal::followsSharedFolders() const {
    const Expected<Settings> settings = readSettings();
    return !settings || settings->sharedFolders != 0;
}

std::shared_ptr<void> PersonAtTerminal::deferInterruption() {
    return std::make_shared<sys::Interruption>();
}

PersonAtTerminal& person() {
    static PersonAtTerminal one;
    return one;
}

}  // namespace qrv::cli

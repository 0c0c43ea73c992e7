#pragma once

#include <engine/base/Caller.h>
#include <platform/kernel/OdString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qrv::cli {

/// Whoever typed the command, for the engine: notes go to standard error, progress to the terminal,
/// and what the person has set is looked up when it is asked for.
class PersonAtTerminal : public Caller {
public:
    void note(const OdString& text) override;
    std::unique_ptr<Work> beginWork(const OdString& title, std::size_t total) override;
    std::string action() const override { return command_; }
    /// To root, whoever called `sudo` is the same person.
    bool isPerson(std::uint32_t user) const override;
    Expected<std::vector<OdString>> trustedFolders() const override;
    /// Settings that cannot be read are no reason to lock colleagues out.
    bool followsSharedFolders() const override;
    std::shared_ptr<void> deferInterruption() override;

    /// The word that was typed, such as "commit".
    void setCommand(const std::string& command) { command_ = command; }

private:
    std::string command_;
};

/// The one that this process has.
PersonAtTerminal& person();

}  // namespace qrv::cli

#pragma once

#include <common/base/Expected.h>
#include <common/repository/RootPath.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>

namespace qrv {

/// What a repository is made with.
struct InitRequest {
    /// The project's name, one line of plain text; without one the project keeps what it has.
    std::optional<OdString> name;
    /// Also ignore what a drafting office's programs leave beside drawings.
    bool addDraftingRules = false;
};

/// A repository that is complete.
struct Initialised {
    /// Where it lies, and whether it is new.
    common::RootPath root;
    /// What to call the project: its name or, where it has none, that of its folder.
    OdString name;
    /// How many ignore rules were added to those that were there.
    int addedRules = 0;
    /// Of a new one: the root of the repository above it, which goes on listing its files.
    std::optional<OdString> outerRepository;
};

/// Makes `folder`, which need not exist, a repository, or completes the one that it is: with a
/// state, with ignore rules, and with what is asked for. What is there is not touched. Fails for
/// something else than a folder, for one within a metadata folder, for a repository of somebody
/// whom the person does not trust, and when something cannot be made; what was made until then
/// stays, and a further call completes it.
QRV_ENGINE_EXPORT Expected<Initialised> initialise(const std::string& folder,
                                                   const InitRequest& request, Caller& caller);

}  // namespace qrv

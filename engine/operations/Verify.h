#pragma once

#include <common/base/Expected.h>
#include <engine/base/Caller.h>
#include <engine/base/Export.h>
#include <engine/maintenance/Verification.h>
#include <platform/kernel/OdString.h>

#include <string>

namespace qrv {

/// How the repository is to be checked.
struct VerifyRequest {
    /// Only look whether everything is there, without reading stored contents.
    bool onlyStructure = false;
};

/// A repository that was checked.
struct Verified {
    /// Its root.
    OdString root;
    /// What was looked at, and what is wrong with it.
    Verification found;
};

/// Reads everything that the repository that holds `folder` stores: each object and drawing version
/// against its digest, the pack, the history with its hashes, the state, and whether every version
/// that a commit names is there. The working files are not looked at. What is lost or damaged is no
/// failure but among the problems of the answer. Fails when there is no repository, or it is not to
/// be opened.
///
/// Changes nothing; but what a killed process had begun to write to one of the databases is rolled
/// back by whoever opens it next, and that may be this. An interrupted command stays interrupted.
QRV_ENGINE_EXPORT Expected<Verified> verify(const std::string& folder, const VerifyRequest& request,
                                            Caller& caller);

}  // namespace qrv

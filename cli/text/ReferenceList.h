#pragma once

#include <common/json/Value.h>
#include <common/server/Reference.h>
#include <platform/kernel/OdString.h>

#include <map>
#include <vector>

namespace qrv::cli {

/// The branches and tags of a repository, by the hashes of their commits.
class ReferenceList {
public:
    explicit ReferenceList(std::vector<common::Reference> references);

    /// " (master, tag v1)", or nothing when none is at the commit.
    OdString textAt(const OdString& hash) const;
    /// A list of objects with "type", "branch" or "tag", and "name".
    jsonlib::json::Array documentAt(const OdString& hash) const;

private:
    std::map<OdString, std::vector<common::Reference>> byHash_;
};

}  // namespace qrv::cli

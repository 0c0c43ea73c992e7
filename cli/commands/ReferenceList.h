#pragma once

#include <common/json/Value.h>
#include <common/server/Reference.h>
#include <engine/history/History.h>
#include <platform/kernel/OdString.h>

#include <map>
#include <optional>
#include <vector>

namespace qrv::cli {

class Output;

/// The branches and tags of a repository, by the hashes of their commits.
class ReferenceList {
public:
    /// May throw `DatabaseError`.
    explicit ReferenceList(History& history);

    /// " (master, tag v1)", or nothing when none is at the commit.
    OdString textAt(const OdString& hash) const;
    /// A list of objects with "type", "branch" or "tag", and "name".
    jsonlib::json::Array documentAt(const OdString& hash) const;

private:
    std::map<OdString, std::vector<common::Reference>> byHash_;
};

/// "master  3  1f0c5b7a2e  Move the stairs" and a line feed, with the name filled up to `width`
/// units.
OdString referenceLine(const OdString& name, int width, const CommitEntry& commit);

/// An object with "name" and "commit"; the latter is null for a branch without a commit.
jsonlib::json::Object referenceDocument(const OdString& name,
                                        const std::optional<CommitEntry>& commit);

/// Tells that a branch or tag was made or deleted: its document, or the text with its name ("%ls"),
/// the commit's number ("%i") and title ("%ls").
void writeReference(const OdString& name, const CommitEntry& commit, const OdString& text,
                    bool asJson, Output& output);

}  // namespace qrv::cli

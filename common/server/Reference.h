#pragma once

#include <common/base/Expected.h>
#include <common/base/Export.h>
#include <common/json/Value.h>
#include <common/server/Annotation.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <vector>

namespace common {

/// The kinds of a reference. The numbers never change.
enum class RefType {
    Branch = 0,  ///< moves with each commit to it; "branch" in records
    Tag = 1,     ///< stays; "tag" in records
};

/// A named pointer to a commit.
struct Reference {
    OdString name;                         ///< of the branch or the tag
    OdString commitHash;                   ///< the commit that it points to
    RefType type = RefType::Branch;        ///< branch or tag
    std::optional<Annotation> annotation;  ///< no reader fills it
};

/// Reads a reference. An "annotation" object in it is read and dropped: only a member of the wrong
/// kind in it shows, as `JsonParseError`. An absent "commitHash", "name" or "refType", looked for
/// in this order, is an error, as is a "refType" other than "branch" and "tag"; a member of the
/// wrong kind throws `JsonParseError`.
QRV_COMMON_EXPORT Expected<Reference> deserializeReference(const jsonlib::json::Object& record);
/// A list of them, in the text's order. The first element that cannot be read ends the list with
/// its error. A text that is no JSON array throws `JsonParseError`; one cut off inside a string
/// throws `std::length_error`.
QRV_COMMON_EXPORT Expected<std::vector<Reference>> deserializeReferences(const OdString& text);

}  // namespace common

#pragma once

#include <common/json/Value.h>
#include <engine/diff/Difference.h>
#include <platform/kernel/OdString.h>

#include <vector>

namespace qrv::cli {

/// "  modified  plans/ground.dwg" or "  renamed   a.dwg -> b.dwg", without a line feed; the words
/// are aligned.
OdString differenceText(const Difference& difference);

/// " (120 bytes)", or " (120 -> 340 bytes)" when the file has other contents than before.
OdString sizeText(const Difference& difference);

/// A list of objects: "path"; "change", which is "added", "modified", "removed" or "renamed";
/// "previousPath" of a renamed file; "sizeBefore" and "sizeAfter" in bytes, where there is such a
/// side; and "digestBefore" and "digestAfter", the SHA-256 digests of the contents.
jsonlib::json::Array toJson(const std::vector<Difference>& differences);

}  // namespace qrv::cli

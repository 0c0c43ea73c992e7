#pragma once

#include <common/base/Expected.h>
#include <common/json/Value.h>
#include <common/server/RepoData.h>

namespace common {

/// The reader behind `deserializeRepoData`, for a record that stands inside another one.
Expected<RepoData> readRepoData(const jsonlib::json::Object& record);

}  // namespace common

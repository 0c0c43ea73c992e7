#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

#include <optional>
#include <string>

namespace qrv::cli {

/// Who makes a commit: what `--author` says, else the environment's QRV_AUTHOR, else user@host.
/// Fails for a name that is not one line of plain text, holds nothing but blanks or is longer than
/// 200 characters.
Expected<OdString> authorOf(const std::optional<std::string>& option);

}  // namespace qrv::cli

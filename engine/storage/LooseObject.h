#pragma once

#include <common/base/Expected.h>
#include <engine/storage/VersionReader.h>
#include <platform/kernel/OdString.h>
#include <sys/InputFile.h>

#include <memory>
#include <string>

namespace qrv {

/// Reads an object from its file and compares it, at the end, with the digest that is its name.
/// `url` is for the messages.
Expected<std::unique_ptr<VersionReader>> readLooseObject(sys::InputFile file,
                                                         const std::string& digest,
                                                         const OdString& url);

}  // namespace qrv

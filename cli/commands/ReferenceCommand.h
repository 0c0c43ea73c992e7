#pragma once

#include <common/base/Expected.h>
#include <common/server/Reference.h>

#include <optional>
#include <string>

namespace qrv::cli {

class Output;

/// What was typed behind `branch` or `tag`.
struct ReferenceArguments {
    /// To be made.
    std::optional<std::string> name;
    std::string commit = "HEAD";
    std::optional<std::string> deleted;
    bool force = false;
    bool namesOnly = false;
    bool asJson = false;
};

/// What both commands do: make or delete the one that is named, or list all.
Expected<void> runReferenceCommand(common::RefType type, const ReferenceArguments& arguments,
                                   Output& output);

}  // namespace qrv::cli

#pragma once

#include <common/base/Expected.h>

#include <functional>

namespace qrv::cli {

class ArgumentParser;
class Output;

/// What a command does once its arguments are known: writes its results, or fails with a message.
using Action = std::function<Expected<void>(Output&)>;

struct Command {
    const char* name;
    /// In English; the catalogue may have another.
    const wchar_t* summary;
    /// Declares the command's arguments. The action is called after they were parsed.
    Action (*declare)(const ArgumentParser& parser);
};

}  // namespace qrv::cli

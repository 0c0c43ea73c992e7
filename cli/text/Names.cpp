#include <cli/text/Names.h>
#include <engine/base/Printable.h>
#include <sys/Terminal.h>

namespace qrv::cli {

std::string nameForOutput(const OdString& name) {
    return (sys::isTerminal(sys::Stream::output) ? printable(name) : name).toNarrow();
}

}  // namespace qrv::cli

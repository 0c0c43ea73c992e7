#include <cli/JsonOutput.h>
#include <cli/Output.h>
#include <common/json/Writer.h>
#include <platform/kernel/OdString.h>

namespace qrv_cli {

void writeJson(const jsonlib::json::Value& document, Output& output) {
    output.write(OdString(jsonlib::json::write(document)).toNarrow());
    output.write("\n");
}

}  // namespace qrv_cli

#include <engine/history/RowsInternal.h>
#include <engine/history/VersionRows.h>

namespace qrv {

void visitVersions(History& history, std::int64_t number,
                   const std::function<void(const VersionRow&)>& visit) {
    Statement query = history.database().prepare(
        "SELECT path, url, previous_path, size FROM changes"
        " WHERE number = ? AND length(url) > 0 ORDER BY path");
    query.bind(number);
    const CheckedRow row(history.database(), query);
    while (query.step())
        visit({.path = query.bytes(0),
               .previousPath = query.bytes(2),
               .url = row.url(1),
               .sizeBytes = row.sizeBytes(3)});
}

}  // namespace qrv

#include <common/state/ConflictData.h>

namespace common {

bool DiffHandles::hasHandles() const {
    return !modified.empty() || !locallyRemoved.empty() || !remotelyRemoved.empty();
}

ConflictData::ConflictData(const OdString& filePath, const OdString& url, FileChange local,
                           FileChange remote)
    : ConflictData(filePath, url, local, remote, DiffHandles()) {
}

ConflictData::ConflictData(const OdString& filePath, const OdString& url, FileChange local,
                           FileChange remote, const DiffHandles& difference)
    : path(filePath), remoteUrl(url), localType(local), remoteType(remote), handles(difference) {
}

}  // namespace common

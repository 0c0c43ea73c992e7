#include <engine/paths/Layout.h>

namespace qrv::layout {

std::string objectPath(const std::string& digest) {
    return std::string(objectsFolder) + '/' + digest;
}

std::string packPath(const std::string& name) {
    return std::string(packsFolder) + '/' + name + packEnding;
}

std::string drawingStorePath(const OdString& store) {
    return std::string(storesFolder) + '/' + store.toNarrow() + storeEnding;
}

std::string commitRecordPath(const OdString& hash) {
    return std::string(commitRecordsFolder) + '/' + hash.toNarrow();
}

std::string damagedHistoryPath(int number) {
    return std::string(historyPath) + ".damaged-" + std::to_string(number);
}

}  // namespace qrv::layout

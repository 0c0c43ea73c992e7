#include <common/config/ConfigData.h>
#include <platform/qut/toQt.h>

#include <QDir>
#include <QFileInfo>
#include <QString>
#include <algorithm>

namespace common {

namespace {

bool isSameFolder(const QFileInfo& left, const QFileInfo& right) {
    if (left.exists() || right.exists())
        return left == right;
    // Qt calls any two missing files equal. One project on an unplugged drive would then stand for
    // all others there, so missing folders are compared by their paths.
    const QString leftPath = QDir::cleanPath(left.absoluteFilePath());
    const QString rightPath = QDir::cleanPath(right.absoluteFilePath());
    return leftPath.compare(rightPath, Qt::CaseInsensitive) == 0;
}

// Asks whether a project lies in the folder `path`.
class InFolder {
public:
    explicit InFolder(const OdString& path) : folder_(qut::toQt(path)) {}

    bool operator()(const std::pair<const OdString, ProjectInfo>& project) const {
        return isSameFolder(QFileInfo(qut::toQt(project.first)), folder_);
    }

private:
    QFileInfo folder_;
};

}  // namespace

void ConfigData::add(const OdString& path, const OdString& name, const OdString& uid) {
    const auto known = std::find_if(projects_.begin(), projects_.end(), InFolder(path));
    if (known != projects_.end())
        known->second = {name, uid};
    else
        projects_.insert({path, {name, uid}});
}

void ConfigData::remove(const OdString& path) {
    std::erase_if(projects_, InFolder(path));
}

}  // namespace common

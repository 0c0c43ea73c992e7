#include <common/config/ConfigData.h>
#include <platform/qut/toQt.h>
#include <platform/ut/FileName.h>

#include <QDir>
#include <QFileInfo>
#include <QString>
#include <algorithm>
#include <filesystem>
#include <system_error>

namespace common {

namespace {

constexpr int anyKind = 0x1FFF;
constexpr int notFound = -1;

/// The folder of a project, as it is registered.
class Folder {
public:
    explicit Folder(const OdString& path) : path_(path) {
        // Qt would cut such a path there, and complain on the standard error.
        if (namesSomething())
            info_.setFile(qut::toQt(path));
    }

    bool isSameAs(const Folder& other) const {
        if (!namesSomething() || !other.namesSomething())
            return path_ == other.path_;
        if (path_.isEmpty() || other.path_.isEmpty() || info_.exists() || other.info_.exists())
            return info_ == other.info_;
        if (isThere() || other.isThere())
            return isSameOnDisk(other);
        // Qt calls any two missing files equal. One project on an unplugged drive would then stand
        // for all others there, so missing folders are compared by their paths.
        return cleanPath().compare(other.cleanPath(), Qt::CaseInsensitive) == 0;
    }

private:
    bool namesSomething() const { return path_.find(L'\0') == notFound; }
    bool isThere() const { return ut::FileName(path_).exists(anyKind); }
    QString cleanPath() const { return QDir::cleanPath(info_.absoluteFilePath()); }

    // For what Qt cannot see: names beyond the codec of the locale, or out of its reach. One that
    // nobody can see now is not taken for another, whose entry it would overwrite.
    bool isSameOnDisk(const Folder& other) const {
        std::error_code error;
        const bool isSame =
            std::filesystem::equivalent(path_.toNarrow(), other.path_.toNarrow(), error);
        return error ? cleanPath() == other.cleanPath() : isSame;
    }

    OdString path_;
    QFileInfo info_;
};

/// Asks whether a project lies in the folder `path`.
class InFolder {
public:
    explicit InFolder(const OdString& path) : folder_(path) {}

    bool operator()(const std::pair<const OdString, ProjectInfo>& project) const {
        return Folder(project.first).isSameAs(folder_);
    }

private:
    Folder folder_;
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

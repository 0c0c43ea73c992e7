#include <common/repository/PropertyProjectName.h>
#include <platform/qut/OpenFile.h>
#include <platform/qut/toQt.h>

#include <QDir>
#include <QFile>
#include <QTextStream>
#include <string>

namespace common {

namespace {

/// The same code units. Qt's own conversion to wide characters would replace those that stand for a
/// byte which is not valid UTF-8, and so name another file.
OdString toText(const QString& text) {
    const ushort* units = text.utf16();
    return OdString(std::wstring(units, units + text.size()));
}

}  // namespace

PropertyProjectName::PropertyProjectName(const RootPath& root)
    : filePath_(
          QDir::cleanPath(qut::toQt(root.propertiesPath()) + QDir::separator() + "project_name")) {
}

QString PropertyProjectName::getName() const {
    QFile file;
    if (!qut::openFile(file, toText(filePath_), QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    return stream.readAll();
}

bool PropertyProjectName::setName(const QString& name) const {
    QFile file;
    if (!qut::openFile(file, toText(filePath_), QIODevice::WriteOnly))
        return false;
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << name << Qt::endl;
    file.close();
    return true;
}

}  // namespace common

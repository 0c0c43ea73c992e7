#include <common/repository/ActivityLog.h>
#include <platform/kernel/OdTimeStamp.h>
#include <platform/qut/OpenFile.h>

#include <QFile>
#include <string>

namespace common {

bool logString(const OdString& message, const RootPath& root) {
    QFile file;
    if (!qut::openFile(file, root.logPath(), QIODevice::WriteOnly | QIODevice::Append))
        return false;
    const OdString time = OdTimeStamp(OdTimeStamp::kInitLocalTime).ctime();
    // Written as bytes, since a text stream would replace what stands for the bytes of a file name
    // that is not valid UTF-8. What fails after the opening is not reported.
    const std::string line = (time + L" - " + message + L"\n").toNarrow();
    file.write(line.data(), static_cast<qint64>(line.size()));
    file.close();
    return true;
}

}  // namespace common

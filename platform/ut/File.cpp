#include <platform/ut/File.h>
#include <platform/ut/RegularFileInternal.h>
#include <sys/TransferInternal.h>

#include <fcntl.h>

#include <utility>

namespace ut {

File::~File() {
    close();
}

bool File::open(const OdString& path) {
    close();
    OpenedFile opened = openRegularFile(path, O_RDONLY);
    if (!opened.handle.isOpen())
        return false;
    length_ = opened.sizeBytes;
    descriptor_ = opened.handle.giveAway();
    return true;
}

void File::close() {
    // Nothing was written, so a failing close has nothing to report.
    const sys::Handle closed(std::exchange(descriptor_, -1));
    length_ = 0;
}

std::size_t File::read(void* buffer, std::size_t size) {
    return isOpened() ? sys::readUpTo(descriptor_, {static_cast<char*>(buffer), size}).count : 0;
}

}  // namespace ut

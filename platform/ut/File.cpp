#include <platform/ut/File.h>
#include <platform/ut/RegularFileInternal.h>
#include <platform/ut/SystemCallsInternal.h>

#include <fcntl.h>

namespace ut {

File::~File() {
    close();
}

bool File::open(const OdString& path) {
    close();
    OpenedFile opened = openRegularFile(path, O_RDONLY);
    if (!opened.descriptor.isOpen())
        return false;
    length_ = opened.sizeBytes;
    descriptor_ = opened.descriptor.release();
    return true;
}

void File::close() {
    // Nothing was written, so a failing close has nothing to report.
    if (isOpened())
        calls::close(descriptor_);
    descriptor_ = -1;
    length_ = 0;
}

std::size_t File::read(void* buffer, std::size_t size) {
    return isOpened() ? readUpTo(descriptor_, buffer, size).count : 0;
}

}  // namespace ut

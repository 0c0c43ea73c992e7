#include <platform/ut/DescriptorInternal.h>
#include <platform/ut/SystemCallsInternal.h>

namespace ut {

bool Descriptor::close() {
    return !isOpen() || calls::close(release()) == 0;
}

}  // namespace ut

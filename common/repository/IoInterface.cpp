#include <common/repository/IoInterface.h>

namespace common {

IoInterface::~IoInterface() = default;

void IoInterface::reserved() const {
}

}  // namespace common

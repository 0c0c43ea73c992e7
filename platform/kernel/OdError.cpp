#include <platform/kernel/OdError.h>

OdError::OdError(const OdString& description)
    : description_(description), descriptionUtf8_(description.toNarrow()) {
}

// Defined here so that the type's description for catching is in one library only.
OdError::~OdError() = default;

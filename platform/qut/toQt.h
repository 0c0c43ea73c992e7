#pragma once

#include <platform/kernel/Export.h>
#include <platform/kernel/OdString.h>

#include <QString>

namespace qut {

/// The same code units as a `QString`.
QRV_PLATFORM_EXPORT QString toQt(const OdString& text);

}  // namespace qut

#pragma once

#include <engine/paths/RelativePath.h>

namespace qrv_test {

/// The path of the text, which has to be a safe one.
inline qrv::RelativePath relative(const OdString& path) {
    return qrv::RelativePath::check(path).value();
}

}  // namespace qrv_test

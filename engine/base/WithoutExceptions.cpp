#include <engine/base/Translation.h>
#include <engine/base/WithoutExceptions.h>

#include <new>

namespace qrv {

ErrorMessage messageOf(const std::exception& caught) {
    if (dynamic_cast<const std::bad_alloc*>(&caught) != nullptr)
        return {tr(L"There is not enough memory.")};
    return {OdString(caught.what())};
}

}  // namespace qrv

#include <engine/base/Bytes.h>
#include <engine/base/Translation.h>

#include <new>

namespace qrv {

Expected<Bytes> Bytes::ofSize(std::int64_t size) {
    Bytes bytes;
    bytes.size_ = static_cast<std::size_t>(size);
    bytes.bytes_.reset(new (std::nothrow) char[bytes.size_]);
    if (bytes.bytes_ == nullptr)
        return ErrorMessage{
            OdString::format(tr(L"There is not enough memory for a file of %i bytes"), size)};
    return bytes;
}

}  // namespace qrv

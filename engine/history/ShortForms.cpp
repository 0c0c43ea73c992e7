#include <engine/history/ShortForms.h>
#include <platform/kernel/OdTimeStamp.h>

namespace qrv {

namespace {

constexpr int digitsOfShortHash = 10;
constexpr std::int64_t millisecondsPerSecond = 1000;

}  // namespace

OdString shortHash(const OdString& hash) {
    return hash.left(digitsOfShortHash);
}

OdString timeText(std::int64_t seconds) {
    OdTimeStamp time(OdTimeStamp::kInitZero);
    time.setPackedValue(seconds * millisecondsPerSecond);
    return time.strftime(L"%Y-%m-%d %H:%M:%S UTC");
}

}  // namespace qrv

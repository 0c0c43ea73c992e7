#include <common/json/JsonAccess.h>
#include <common/server/Annotation.h>
#include <common/server/RecordInternal.h>
#include <common/server/RecordKeysInternal.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace common {

using jsonlib::json::Object;

namespace {

/// A real that does not fit is cut to the nearest end of the range; one that is no number gives 0.
std::int64_t truncated(double number) {
    constexpr double limit = 9223372036854775808.0;
    if (std::isnan(number))
        return 0;
    if (number >= limit)
        return std::numeric_limits<std::int64_t>::max();
    if (number < -limit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

}  // namespace

Object serializeAnnotation(const OdString& author, const OdString& date, const OdString& message) {
    Object record;
    record[recordKeys::author] = author.toWide();
    record[recordKeys::date] = date.toWide();
    record[recordKeys::message] = message.toWide();
    return record;
}

Expected<Annotation> deserializeAnnotation(Object record) {
    Annotation annotation;
    if (!hasKey(record, recordKeys::author))
        return missingKey(L"annotation", recordKeys::author);
    if (hasKey(record, recordKeys::message))
        annotation.message = getStringValue(record, recordKeys::message, OdString());
    if (!hasKey(record, recordKeys::date))
        return missingKey(L"annotation", recordKeys::date);
    annotation.date.setPackedValue(truncated(getDoubleValue(record, recordKeys::date, OdString())));
    annotation.author = getStringValue(record, recordKeys::author, OdString());
    return annotation;
}

}  // namespace common

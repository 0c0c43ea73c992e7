#pragma once

#include <common/base/ErrorMessage.h>
#include <common/base/Expected.h>
#include <common/json/JsonAccess.h>
#include <common/json/Value.h>
#include <platform/kernel/OdString.h>

#include <utility>
#include <vector>

namespace common {

/// The object, or the array, that the whole text is. Throws `JsonParseError` when it is none; text
/// that is no JSON counts as null there.
jsonlib::json::Object readObject(const OdString& text);
jsonlib::json::Array readArray(const OdString& text);

/// "Could not parse <record>, missing "<key>"".
ErrorMessage missingKey(const OdString& record, const OdString& key);
/// Why an element of a list that should be an object is none.
ErrorMessage notAnObject(const jsonlib::json::Value& element);

/// Reads each object of the array with `readRecord`. The first element that is no object, or that
/// `readRecord` refuses, ends the list with its error; what was read before is dropped.
template <class Record>
Expected<std::vector<Record>> readList(
    const jsonlib::json::Array& elements,
    Expected<Record> (*readRecord)(const jsonlib::json::Object&)) {
    std::vector<Record> records;
    for (const jsonlib::json::Value& element : elements) {
        if (element.type() != jsonlib::json::Value_type::object)
            return notAnObject(element);
        Expected<Record> record = readRecord(element.getObject());
        if (!record)
            return std::move(record).error();
        records.push_back(std::move(*record));
    }
    return records;
}

}  // namespace common

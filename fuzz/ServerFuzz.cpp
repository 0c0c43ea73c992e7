// A record gives a value, its error or one of the two exceptions that are foreseen.

#include <common/json/JsonParseError.h>
#include <common/json/Reader.h>
#include <common/server/CommitNumber.h>
#include <common/server/FetchData.h>
#include <common/server/ServerAnswer.h>

#include <cstdint>
#include <stdexcept>

template <class Reader, class Record>
static void convert(Reader reader, const Record& record) try {
    static_cast<void>(reader(record));
} catch (const common::JsonParseError&) {
} catch (const std::length_error&) {  // The answer to a string without an end.
}

static bool convertValue(const OdString& text) {
    jsonlib::json::Value value;
    jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), value);
    if (value.type() == jsonlib::json::Value_type::array)
        convert(common::deserializeCommitNumbers, value.getArray());
    if (value.type() != jsonlib::json::Value_type::object)
        return false;
    convert(common::deserializeCommit, value.getObject());
    convert(common::deserializeInitData, value.getObject());
    convert(common::deserializeFetchData, value.getObject());
    return true;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const OdString text = OdString::fromNarrow({reinterpret_cast<const char*>(bytes), size});
    convert(common::deserializeRepoData, text);
    convert(common::deserializeRepoDatas, text);
    convert(common::deserializeReferences, text);
    convert(common::deserializeServerVersion, text);
    convert(convertValue, text);
    return 0;
}

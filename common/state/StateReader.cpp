#include <common/base/MessageInternal.h>
#include <common/json/JsonAccess.h>
#include <common/json/ParseObjectInternal.h>
#include <common/json/Value.h>
#include <common/state/PlatformInternal.h>
#include <common/state/StateFile.h>
#include <common/state/StateMembersInternal.h>
#include <common/state/StateRowsInternal.h>
#include <platform/ut/File.h>
#include <platform/ut/ReadEntireFile.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace common {

namespace {

using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

/// What a message says was being read, where there is nothing to say beyond the member's name.
constexpr const wchar_t* noContext = L"";

/// What a message says was being read, of an element that is no object.
template <class Row>
constexpr const wchar_t* contextOf(const std::vector<Row>&) {
    return L"parsing json vector.";
}
template <class Value>
constexpr const wchar_t* contextOf(const std::map<OdString, Value>&) {
    return L"parsing json map.";
}

template <class Row>
void add(Row row, std::vector<Row>& rows) {
    rows.push_back(std::move(row));
}
/// The first of equal paths stays. Files are written in the map's order, so the end is the place.
template <class Value>
void add(std::pair<OdString, Value> row, std::map<OdString, Value>& rows) {
    rows.try_emplace(rows.end(), std::move(row.first), std::move(row.second));
}

/// Reads members of JSON objects into parts of the state, by the type of the part. Missing members
/// and members of the wrong type are thrown; the rest is returned.
class TreeReader {
public:
    /// The members of the object, in the order of their table.
    template <class JsonObject, class Row>
    static Expected<void> readRow(JsonObject& object, Row& row) {
        Expected<void> result;
        const auto readNext = [&](const auto& member) {
            const OdString name{std::wstring(member.name)};
            if (member.presence == Presence::required || hasKey(object, name))
                result = read(object, name, member.of(row));
            return result.hasValue();
        };
        std::apply([&](const auto&... member) { static_cast<void>((readNext(member) && ...)); },
                   stateMembers<Row>);
        return result;
    }

private:
    static Expected<void> read(const Object& object, const OdString& name, OdString& text) {
        text = getStringValue(object, name, noContext);
        return {};
    }
    static Expected<void> read(const Object& object, const OdString& name, std::int64_t& number) {
        number = getInt64Value(object, name, noContext);
        return {};
    }
    static Expected<void> read(const Object& object, const OdString& name, bool& isTrue) {
        isTrue = getBoolValue(object, name, noContext);
        return {};
    }

    static Expected<void> read(const Object& object, const OdString& name, FileChange& change) {
        const Expected<FileChange> named = toFileChange(getStringValue(object, name, noContext));
        if (!named)
            return named.error();
        change = *named;
        return {};
    }

    static Expected<void> read(const Object& object, const OdString& name,
                               OdArray<OdDbHandle>& handles) {
        for (const Value& element : getArrayValue(object, name, noContext))
            handles.push_back(OdDbHandle(getStringValue(element)));
        return {};
    }

    static Expected<void> read(const Object& file, const OdString& name, Head& head) {
        const Object& object = getObjectValue(file, name, noContext);
        const OdString reference{std::wstring(headMembers::reference)};
        if (!hasKey(object, reference))
            return translatedError(L"HEAD does not point to a branch");
        head.reference = getStringValue(object, reference, noContext);
        // Odd on purpose: "commit" only tells that there is a number, which is then that of "head".
        if (hasKey(object, OdString(std::wstring(headMembers::commit))))
            head.commit = getInt64Value(object, name, noContext);
        return {};
    }

    /// An object within another.
    template <class Row>
    static Expected<void> read(const Object& object, const OdString& name, Row& row) {
        return readRow(getObjectValue(object, name, noContext), row);
    }

    template <class Row>
    static Expected<void> read(Object& file, const OdString& name, std::vector<Row>& rows) {
        return readList<Row>(file, name, rows);
    }
    template <class Value>
    static Expected<void> read(Object& file, const OdString& name,
                               std::map<OdString, Value>& rows) {
        return readList<std::pair<OdString, Value>>(file, name, rows);
    }

    template <class Row, class Rows>
    static Expected<void> readList(Object& file, const OdString& name, Rows& rows) {
        Value& list = file.find(name.toWide())->second;
        checkType(list, Value_type::array, name, name);
        for (Value& element : list.getArray()) {
            if (element.type() != Value_type::object)
                return composeMessage(element, Value_type::object, contextOf(rows));
            Row row = emptyRow<Row>();
            if (Expected<void> result = readRow(element.getObject(), row); !result)
                return result;
            add(std::move(row), rows);
            // Elements are freed one by one, so that a large state is not in memory twice.
            element = Value();
        }
        return {};
    }
};

/// Reads a file of the usual form, which is by far the quickest way. Nothing for every other file,
/// and for one that cannot be read.
std::optional<State> readUsualFile(const OdString& statePath) {
    ut::File file;
    // No byte gives more than one unit, so a file of this size is no longer than a text may be.
    constexpr std::int64_t largestSizeBytes = std::numeric_limits<std::int32_t>::max();
    if (!file.open(statePath) || file.length() > largestSizeBytes)
        return std::nullopt;
    const auto sizeBytes = static_cast<std::size_t>(file.length());
    const auto bytes = std::make_unique_for_overwrite<char[]>(sizeBytes);
    if (file.read(bytes.get(), sizeBytes) != sizeBytes)
        return std::nullopt;
    return readRows({bytes.get(), sizeBytes});
}

/// Reads any file, and finds the words for what is wrong with it.
Expected<State> readAnyFile(const OdString& statePath) {
    Object file = parseObject(ut::readEntireFile(statePath));
    if (!hasKey(file, OdString(std::wstring(headMembers::head))))
        return translatedError(L"State does not contain HEAD.");
    State state;
    if (Expected<void> result = TreeReader::readRow(file, state); !result)
        return std::move(result).error();
    return state;
}

}  // namespace

Expected<State> deserialize(const OdString& statePath) {
    if constexpr (isPlatformBundled) {
        if (std::optional<State> state = readUsualFile(statePath))
            return std::move(*state);
    }
    return readAnyFile(statePath);
}

}  // namespace common

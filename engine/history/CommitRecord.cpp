#include <common/json/Reader.h>
#include <common/json/Value.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitRecord.h>

#include <charconv>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <utility>

namespace qrv {

namespace {

using jsonlib::json::Array;
using jsonlib::json::Object;
using jsonlib::json::Value;
using jsonlib::json::Value_type;

/// The member, if it is there and of that kind.
const Value* member(const Object& object, const wchar_t* name, Value_type type) {
    const auto found = object.find(name);
    return found == object.end() || found->second.type() != type ? nullptr : &found->second;
}

OdString textOf(const Object& object, const wchar_t* name) {
    const Value* const value = member(object, name, Value_type::string);
    return value == nullptr ? OdString() : OdString(value->getString());
}

int numberIn(const std::string& text, std::size_t begin, std::size_t count) {
    int number = 0;
    const char* const first = text.data() + begin;
    std::from_chars(first, first + count, number);
    return number;
}

/// Of "2024-03-05T14:07:09Z"; anything else gives a time with which the record has another hash.
std::int64_t secondsOf(const std::string& date) {
    namespace chrono = std::chrono;
    constexpr std::size_t length = 20;
    if (date.size() != length)
        return 0;
    const chrono::sys_days day = chrono::year(numberIn(date, 0, 4)) /
                                 chrono::month(static_cast<unsigned>(numberIn(date, 5, 2))) /
                                 chrono::day(static_cast<unsigned>(numberIn(date, 8, 2)));
    const auto time = day + chrono::hours(numberIn(date, 11, 2)) +
                      chrono::minutes(numberIn(date, 14, 2)) +
                      chrono::seconds(numberIn(date, 17, 2));
    return chrono::duration_cast<chrono::seconds>(time.time_since_epoch()).count();
}

std::vector<FileDelta> deltasOf(const Array& files) {
    std::vector<FileDelta> deltas;
    for (const Value& file : files) {
        if (file.type() != Value_type::object)
            continue;
        const Object& object = file.getObject();
        deltas.push_back({textOf(object, L"path"), textOf(object, L"storagePath"),
                          textOf(object, L"previousPath"), 0});
    }
    return deltas;
}

NewCommit commitOf(const Object& record) {
    NewCommit commit;
    if (const Value* const note = member(record, L"annotation", Value_type::object)) {
        commit.author = textOf(note->getObject(), L"author");
        commit.message = textOf(note->getObject(), L"message");
        commit.timeSeconds = secondsOf(textOf(note->getObject(), L"date").toNarrow());
    }
    if (const Value* const parents = member(record, L"parentsHashes", Value_type::array)) {
        for (const Value& parent : parents->getArray()) {
            if (parent.type() == Value_type::string)
                commit.parents.emplace_back(parent.getString());
        }
    }
    if (const Value* const files = member(record, L"files", Value_type::array))
        commit.deltas = deltasOf(files->getArray());
    return commit;
}

std::optional<NewCommit> parsed(std::string_view bytes) try {
    const OdString text = OdString::fromNarrow(bytes);
    Value document;
    if (!jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), document) ||
        document.type() != Value_type::object)
        return std::nullopt;
    return commitOf(document.getObject());
} catch (const std::length_error&) {
    return std::nullopt;
}

}  // namespace

Expected<NewCommit> commitOfRecord(std::string_view bytes) {
    std::optional<NewCommit> commit = parsed(bytes);
    // What was passed over above is missed here.
    if (commit && recordOf(*commit) == bytes)
        return std::move(*commit);
    return ErrorMessage{tr(L"it is no record of a commit")};
}

}  // namespace qrv

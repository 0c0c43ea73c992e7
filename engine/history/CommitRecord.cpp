#include <common/json/Reader.h>
#include <common/json/Value.h>
#include <engine/base/Translation.h>
#include <engine/history/CommitRecord.h>
#include <engine/paths/RelativePath.h>

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

Expected<FileDelta> deltaOf(const Object& file) {
    Expected<RelativePath> path = RelativePath::check(textOf(file, L"path"));
    if (!path)
        return path.error();
    FileDelta delta = {std::move(*path), textOf(file, L"storagePath"), std::nullopt, 0};
    const OdString previous = textOf(file, L"previousPath");
    if (previous.isEmpty())
        return delta;
    Expected<RelativePath> previousPath = RelativePath::check(previous);
    if (!previousPath)
        return previousPath.error();
    delta.previousPath = std::move(*previousPath);
    return delta;
}

Expected<std::vector<FileDelta>> deltasOf(const Array& files) {
    std::vector<FileDelta> deltas;
    for (const Value& file : files) {
        if (file.type() != Value_type::object)
            continue;
        Expected<FileDelta> delta = deltaOf(file.getObject());
        if (!delta)
            return delta.error();
        deltas.push_back(std::move(*delta));
    }
    return deltas;
}

ErrorMessage noRecord() {
    return {tr(L"it is no record of a commit")};
}

Expected<NewCommit> commitOf(const Object& record) {
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
    if (const Value* const files = member(record, L"files", Value_type::array)) {
        Expected<std::vector<FileDelta>> deltas = deltasOf(files->getArray());
        if (!deltas)
            return deltas.error();
        commit.deltas = std::move(*deltas);
    }
    return commit;
}

Expected<NewCommit> parsed(std::string_view bytes) try {
    const OdString text = OdString::fromNarrow(bytes);
    Value document;
    if (!jsonlib::json::read(text.c_str(), text.c_str() + text.getLength(), document) ||
        document.type() != Value_type::object)
        return noRecord();
    return commitOf(document.getObject());
} catch (const std::length_error&) {
    return noRecord();
}

}  // namespace

Expected<NewCommit> commitOfRecord(std::string_view bytes) {
    Expected<NewCommit> commit = parsed(bytes);
    // What was passed over above is missed here.
    if (commit && recordOf(*commit) != bytes)
        return noRecord();
    return commit;
}

}  // namespace qrv

#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <engine/base/Digest.h>
#include <engine/history/Commit.h>
#include <engine/history/CommitRecord.h>
#include <platform/kernel/OdTimeStamp.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace qrv {

namespace {

constexpr std::size_t pieceBytes = 1 << 16;

OdString dateOf(const NewCommit& commit) {
    OdTimeStamp time;
    time.setPackedValue(commit.timeSeconds * 1000);
    return time.strftime(L"%Y-%m-%dT%H:%M:%SZ");
}

bool isPlain(char byte) {
    return byte >= ' ' && byte <= '~' && byte != '"' && byte != '\\';
}

/// As the writer of JSON has the text.
std::string quoted(const OdString& text) {
    const std::string bytes = text.toNarrow();
    if (std::all_of(bytes.begin(), bytes.end(), isPlain))
        return '"' + bytes + '"';
    return OdString(jsonlib::json::write(text.toWide())).toNarrow();
}

/// The text as the database gives it back: a lone half of a surrogate pair, for which UTF-8 has no
/// form, becomes the bytes with which it is written. Paths and URLs have none.
std::string quotedAsStored(const OdString& text) {
    return quoted(OdString::fromNarrow(text.toNarrow()));
}

/// Writes the record as the library's writer would, but from one file to the next: the document of
/// a commit of very many files takes a kilobyte for each.
class RecordWriter {
public:
    explicit RecordWriter(const RecordSink& sink) : sink_(sink) {}

    void write(const NewCommit& commit) {
        add("{\n    \"annotation\" : {\n        \"author\" : ");
        add(quotedAsStored(commit.author));
        add(",\n        \"date\" : ");
        add(quoted(dateOf(commit)));
        add(",\n        \"message\" : ");
        add(quotedAsStored(commit.message));
        add("\n    },\n    \"files\" : [");
        const char* separator = "\n        {";
        for (const FileDelta* delta : orderedByPath(commit.deltas)) {
            add(separator);
            writeFile(*delta);
            separator = ",\n        {";
        }
        add("\n    ],\n    \"parentsHashes\" : [");
        separator = "\n        ";
        for (const OdString& parent : commit.parents) {
            add(separator);
            add(quoted(parent));
            separator = ",\n        ";
        }
        add("\n    ]\n}");
        sink_(waiting_);
    }

private:
    void writeFile(const FileDelta& delta) {
        add("\n            \"path\" : ");
        add(quoted(delta.path));
        if (delta.previousPath) {
            add(",\n            \"previousPath\" : ");
            add(quoted(*delta.previousPath));
        }
        add(",\n            \"storagePath\" : ");
        add(quoted(delta.url));
        add("\n        }");
    }

    void add(std::string_view bytes) {
        waiting_ += bytes;
        if (waiting_.size() < pieceBytes)
            return;
        sink_(waiting_);
        waiting_.clear();
    }

    const RecordSink& sink_;
    std::string waiting_;
};

}  // namespace

void writeRecord(const NewCommit& commit, const RecordSink& sink) {
    RecordWriter(sink).write(commit);
}

std::string recordOf(const NewCommit& commit) {
    std::string record;
    writeRecord(commit, [&record](std::string_view bytes) { record += bytes; });
    return record;
}

OdString hashOf(const NewCommit& commit) {
    Digest digest;
    writeRecord(commit, [&digest](std::string_view bytes) { digest.add(bytes); });
    return OdString::fromNarrow(digest.finish());
}

}  // namespace qrv

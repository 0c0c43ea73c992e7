#include <common/json/RowScannerInternal.h>
#include <common/state/StateMembersInternal.h>
#include <common/state/StateRowsInternal.h>

#include <algorithm>
#include <cstdint>

namespace common {

namespace {

/// A set of a row's members, with a bit for each.
using MemberSet = std::uint32_t;

template <class Row>
constexpr MemberSet requiredMembers() {
    return std::apply(
        [](const auto&... member) {
            MemberSet set = 0;
            MemberSet bit = 1;
            ((set |= member.presence == Presence::required ? bit : 0, bit <<= 1), ...);
            return set;
        },
        stateMembers<Row>);
}

// All names are ASCII, so each unit is one byte.
bool isCalled(std::string_view nameUtf8, std::wstring_view name) {
    return nameUtf8.size() == name.size() &&
           std::equal(nameUtf8.begin(), nameUtf8.end(), name.begin());
}

/// Reads what comes next in the text into a part of the state, by the type of the part.
class RowReader {
public:
    explicit RowReader(std::string_view bytesUtf8) : scanner_(bytesUtf8) {}

    template <class Row>
    void read(Row& row) {
        MemberSet found = 0;
        readObject([&](std::string_view name) {
            const MemberSet member = readMember(name, row);
            if ((found & member) != 0)
                throw RowScanner::NotPlain();
            found |= member;
        });
        if ((requiredMembers<Row>() & ~found) != 0)
            throw RowScanner::NotPlain();
    }

private:
    /// Calls `readMember` with the name of each member; it must read the member's content.
    template <class ReadMember>
    void readObject(ReadMember readMember) {
        scanner_.expect('{');
        do
            readMember(scanner_.name());
        while (scanner_.take(','));
        scanner_.expect('}');
    }

    template <class ReadElement>
    void readList(ReadElement readElement) {
        scanner_.expect('[');
        do
            readElement();
        while (scanner_.take(','));
        scanner_.expect(']');
    }

    /// The member that was read, as a set.
    template <std::size_t Index = 0, class Row>
    MemberSet readMember(std::string_view name, Row& row) {
        if constexpr (Index == memberCount<Row>) {
            throw RowScanner::NotPlain();
        } else {
            const auto& member = std::get<Index>(stateMembers<Row>);
            if (!isCalled(name, member.name))
                return readMember<Index + 1>(name, row);
            read(member.of(row));
            return MemberSet{1} << Index;
        }
    }

    void read(OdString& text) { text = scanner_.string(); }
    void read(std::int64_t& number) { number = scanner_.integer(); }
    void read(bool& isTrue) { isTrue = scanner_.boolean(); }

    void read(FileChange& change) {
        const Expected<FileChange> named = toFileChange(scanner_.string());
        if (!named)
            throw RowScanner::NotPlain();
        change = *named;
    }

    void read(OdArray<OdDbHandle>& handles) {
        readList([&] { handles.push_back(OdDbHandle(scanner_.string())); });
    }

    /// A head with a commit has another meaning than it seems, which the other reader knows.
    void read(Head& head) {
        bool hasReference = false;
        readObject([&](std::string_view name) {
            if (hasReference || !isCalled(name, headMembers::reference))
                throw RowScanner::NotPlain();
            read(head.reference);
            hasReference = true;
        });
    }

    template <class Row>
    void read(std::vector<Row>& rows) {
        readList([&] { read(rows.emplace_back(emptyRow<Row>())); });
    }

    template <class Value>
    void read(std::map<OdString, Value>& rows) {
        readList([&] {
            std::pair<OdString, Value> row;
            read(row);
            // The first of equal paths stays. Files are written in the map's order, so the end is
            // the place.
            rows.try_emplace(rows.end(), std::move(row.first), std::move(row.second));
        });
    }

    RowScanner scanner_;
};

}  // namespace

std::optional<State> readRows(std::string_view bytesUtf8) try {
    State state;
    RowReader(bytesUtf8).read(state);
    return state;
} catch (const RowScanner::NotPlain&) {
    return std::nullopt;
}

}  // namespace common

#include <common/base/MessageInternal.h>
#include <common/json/RowTextInternal.h>
#include <common/state/PlatformInternal.h>
#include <common/state/StateFile.h>
#include <common/state/StateMembersInternal.h>
#include <common/state/StateWriterInternal.h>
#include <platform/ut/TextFile.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace common {

namespace {

template <class List>
auto isEmpty(const List& list) -> decltype(list.empty()) {
    return list.empty();
}
bool isEmpty(const DiffHandles& handles) {
    return !handles.hasHandles();
}

/// The places of a row's members in its table, in the order of their names, as the JSON writer has
/// them.
template <class Row>
constexpr auto placesByName() {
    return std::apply(
        [](const auto&... member) {
            const std::array names = {member.name...};
            std::array<std::size_t, sizeof...(member)> places = {};
            for (std::size_t place = 0; place < places.size(); ++place)
                places[place] = place;
            std::sort(places.begin(), places.end(), [&](std::size_t left, std::size_t right) {
                return names[left] < names[right];
            });
            return places;
        },
        stateMembers<Row>);
}

/// Writes parts of the state, by the type of the part. Only a file change without a name fails.
class RowWriter {
public:
    explicit RowWriter(RowText& text) : text_(text) {}

    template <class Row>
    Expected<void> write(const Row& row) {
        return writeRow<Row>(row);
    }

private:
    /// `Row` names the table; an element of a map is a row with a constant key.
    template <class Row>
    Expected<void> writeRow(const auto& row) {
        Expected<void> result;
        const auto writeNext = [&](const auto& member) {
            const auto& content = member.of(row);
            if constexpr (requires { isEmpty(content); }) {
                if (member.presence == Presence::unlessEmpty && isEmpty(content))
                    return true;
            }
            text_.name(member.name);
            result = write(content);
            return result.hasValue();
        };
        text_.openObject();
        [&]<std::size_t... Nth>(std::index_sequence<Nth...>) {
            static constexpr auto places = placesByName<Row>();
            static_cast<void>((writeNext(std::get<places[Nth]>(stateMembers<Row>)) && ...));
        }
        (std::make_index_sequence<memberCount<Row>>());
        text_.closeObject();
        return result;
    }

    Expected<void> write(const OdString& text) {
        text_.string(text);
        return {};
    }
    Expected<void> write(std::int64_t number) {
        text_.integer(number);
        return {};
    }
    Expected<void> write(bool isTrue) {
        text_.boolean(isTrue);
        return {};
    }

    Expected<void> write(FileChange change) {
        const Expected<OdString> name = toString(change);
        if (!name)
            return name.error();
        return write(*name);
    }

    Expected<void> write(const OdDbHandle& handle) { return write(handle.ascii()); }

    Expected<void> write(const Head& head) {
        text_.openObject();
        if (head.commit) {
            text_.name(headMembers::commit);
            text_.integer(*head.commit);
        }
        text_.name(headMembers::reference);
        text_.string(head.reference);
        text_.closeObject();
        return {};
    }

    template <class Element>
    Expected<void> write(const std::vector<Element>& elements) {
        return writeList(elements, [&](const Element& element) { return write(element); });
    }
    template <class Value>
    Expected<void> write(const std::map<OdString, Value>& rows) {
        return writeList(
            rows, [&](const auto& row) { return writeRow<std::pair<OdString, Value>>(row); });
    }

    template <class List, class WriteElement>
    Expected<void> writeList(const List& list, WriteElement writeElement) {
        text_.openArray();
        for (const auto& element : list) {
            text_.element();
            if (Expected<void> written = writeElement(element); !written)
                return written;
        }
        text_.closeArray();
        return {};
    }

    RowText& text_;
};

}  // namespace

ErrorMessage unexpectedStateError() {
    // The text speaks of deserializing although it is the writing that failed; it is kept so.
    return translatedError(L"An unexpected error occurred while deserializing the state file.");
}

Expected<void> replaceState(const State& state, const OdString& target,
                            const OdString& statePath) try {
    ut::TextFile file(target);
    constexpr auto handOver =
        isPlatformBundled ? RowText::HandOver::inPieces : RowText::HandOver::asOneLine;
    RowText text(file, handOver);
    if (Expected<void> written = RowWriter(text).write(state); !written)
        return written;
    text.finish();
    if (!file.write())
        return translatedError(L"Error writing to file '%ls'", statePath);
    return {};
} catch (...) {
    return unexpectedStateError();
}

Expected<void> writeState(const State& state, const OdString& statePath) try {
    return replaceState(state, statePath, statePath);
} catch (...) {
    // Not even the message found memory.
    return ErrorMessage();
}

}  // namespace common

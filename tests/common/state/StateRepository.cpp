#include <common/json/JsonParseError.h>
#include <common/state/StateFile.h>
#include <tests/common/state/StateRepository.h>
#include <tests/support/Files.h>

#include <stdexcept>

namespace qrv_test {

using common::ConflictData;
using common::DiffHandles;
using common::FileChange;

StateRepository::StateRepository() : root_(*common::RootPath::get(folder_.text(), true)) {
}

void StateRepository::writeStateFile(std::string_view bytes) const {
    writeFile(stateFile(), bytes);
}

std::string StateRepository::stateFileBytes() const {
    return readFile(stateFile());
}

std::vector<std::string> StateRepository::metadata() const {
    return listTree(folder_ / ".qrv");
}

std::string loadOutcome(const StateRepository& repository) try {
    const Expected<common::State> state = common::deserialize(repository.root().statePath());
    return state ? "loaded" : "returned: " + state.error().message.toNarrow();
} catch (const common::JsonParseError& error) {
    return "JsonParseError: " + error.description().toNarrow();
} catch (const OdError& error) {
    return "OdError: " + error.description().toNarrow();
} catch (const std::length_error&) {
    return "length_error";
}

std::string loadOutcome(std::string_view bytes) {
    const StateRepository repository;
    repository.writeStateFile(bytes);
    return loadOutcome(repository);
}

common::State load(const StateRepository& repository) {
    return common::deserialize(repository.root().statePath()).value();
}

common::State load(std::string_view bytes) {
    const StateRepository repository;
    repository.writeStateFile(bytes);
    return load(repository);
}

std::string stateSample(const std::string& name) {
    return readFile(std::filesystem::path(QRV_STATE_SAMPLES) / (name + ".sample"));
}

common::State fullState() {
    common::State state;
    state.head.reference = L"roof/extension";
    state.stagedFiles = {{L"site/plan.dwg", FileChange::modified},
                         {L"new.dwg", FileChange::added},
                         {L"old.dwg", FileChange::removed},
                         {L"same.dwg", FileChange::unchanged}};
    state.renames = {{L"new name.dwg", L"old name.dwg"}, {L"B.dwg", L"a.dwg"}};
    state.index = {{L"site/plan.dwg", {133444736000000000, true}},
                   {L"Stra\u00DFe \"7\"\t.dwg", {0, false}},
                   {L"Site/plan.dwg", {-1, false}}};
    const DiffHandles all{{0x1F, 0xFFFFFFFFFFFFFFFF}, {0x2A}, {0x0}, {0xB0}, {}, {}};
    const DiffHandles removedOnly{{}, {0xABC}, {}, {}, {}, {}};
    state.conflicts = {
        {L"z.dwg", L"tf:z#3", FileChange::modified, FileChange::removed},
        {L"a.dwg", L"tf:a#12", FileChange::modified, FileChange::modified, all},
        {L"m.dwg", L"tf:m#1", FileChange::added, FileChange::unchanged, removedOnly}};
    return state;
}

}  // namespace qrv_test

#include <common/state/StateFile.h>
#include <tests/common/state/RandomStates.h>
#include <tests/common/state/StateRepository.h>

#include <gmock/gmock.h>

#include <string>

namespace {

using common::State;
using qrv_test::RandomStates;
using qrv_test::StateRepository;

TEST(StateFile, GivesBackEveryStateThatIsWritten) {
    const StateRepository repository;
    const OdString path = repository.root().statePath();
    RandomStates states;
    for (int run = 0; run < 300; ++run) {
        const State state = states.next();
        ASSERT_TRUE(common::writeState(state, path));
        const std::string bytes = repository.stateFileBytes();
        const Expected<State> read = common::deserialize(path);
        ASSERT_TRUE(read) << bytes;
        ASSERT_TRUE(*read == state) << bytes;
        ASSERT_TRUE(common::writeState(*read, path));
        ASSERT_EQ(repository.stateFileBytes(), bytes);
    }
}

}  // namespace

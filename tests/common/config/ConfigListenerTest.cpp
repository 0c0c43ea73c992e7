#include <common/config/Config.h>
#include <tests/common/config/Configuration.h>

#include <gmock/gmock.h>

#include <cstddef>
#include <functional>
#include <type_traits>
#include <vector>

namespace {

using common::ConfigData;
using common::ConfigListener;
using common::ConfigListeners;
using common::WriteConfigData;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes its number when it is told, then does what it was given to do.
class Listener final : public ConfigListener {
public:
    void onConfigChanged() override {
        told->push_back(number);
        if (reaction)
            reaction();
    }

    std::vector<int>* told = nullptr;
    int number = 0;
    std::function<void()> reaction;
};

class ConfigListenerTest : public testing::Test {
protected:
    ConfigListenerTest() {
        for (int i = 0; i < count; ++i) {
            listeners[i].told = &told;
            listeners[i].number = i;
        }
    }

    void add(int i) { registered.insert(listeners[i]); }
    void remove(int i) { registered.erase(listeners[i]); }
    /// Who is told by one handle, in order.
    std::vector<int> round() {
        told.clear();
        { const WriteConfigData handle(registry, registered); }
        return told;
    }

    static constexpr int count = 5;
    // In ascending order of their addresses.
    Listener listeners[count];
    std::vector<int> told;
    ConfigData registry;
    ConfigListeners registered;
};

TEST_F(ConfigListenerTest, AreToldInTheOrderOfTheirAddresses) {
    for (const int i : {3, 0, 4, 1, 2})
        add(i);
    EXPECT_THAT(round(), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(ConfigListenerTest, AreToldOnceHoweverOftenTheyAreAdded) {
    for (const int i : {1, 1, 0, 1})
        add(i);
    EXPECT_THAT(round(), ElementsAre(0, 1));
}

TEST_F(ConfigListenerTest, NeedNotBeThere) {
    EXPECT_THAT(round(), IsEmpty());
}

TEST_F(ConfigListenerTest, AreToldAtTheEndOfTheHandleAndNotBefore) {
    add(0);
    {
        WriteConfigData handle(registry, registered);
        handle.data.add(L"/none/a", L"n", L"u");
        EXPECT_THAT(told, IsEmpty());
        EXPECT_EQ(&handle.data, &registry);
        EXPECT_EQ(&handle.listeners, &registered);
    }
    EXPECT_THAT(told, ElementsAre(0));
}

TEST_F(ConfigListenerTest, MayRemoveThemselvesWhileTheyAreTold) {
    for (int i = 0; i < count; ++i) {
        add(i);
        listeners[i].reaction = [this, i] { remove(i); };
    }
    EXPECT_THAT(round(), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(round(), IsEmpty());
}

TEST_F(ConfigListenerTest, AreNotToldAfterAnotherRemovedThem) {
    for (int i = 0; i < count; ++i)
        add(i);
    listeners[1].reaction = [this] {
        remove(0);
        remove(2);
        remove(3);
    };
    EXPECT_THAT(round(), ElementsAre(0, 1, 4));
    EXPECT_THAT(round(), ElementsAre(1, 4));
}

TEST_F(ConfigListenerTest, AreNotToldInTheRoundInWhichTheyAreAdded) {
    add(2);
    listeners[2].reaction = [this] {
        add(0);
        add(4);
    };
    EXPECT_THAT(round(), ElementsAre(2));
    EXPECT_THAT(round(), ElementsAre(0, 2, 4));
}

TEST_F(ConfigListenerTest, AreToldWhenTheyWereRemovedAndAddedAgain) {
    add(0);
    add(1);
    listeners[0].reaction = [this] {
        remove(1);
        add(1);
    };
    EXPECT_THAT(round(), ElementsAre(0, 1));
}

TEST_F(ConfigListenerTest, MayAllBeRemovedByTheFirst) {
    for (int i = 0; i < count; ++i)
        add(i);
    listeners[0].reaction = [this] { registered.clear(); };
    EXPECT_THAT(round(), ElementsAre(0));
}

TEST_F(ConfigListenerTest, OfAConfigurationAreToldByEachHandle) {
    const qrv_test::Configuration configuration;
    const auto config = configuration.loaded();
    config->addListener(listeners[1]);
    config->addListener(listeners[0]);
    config->addListener(listeners[1]);
    static_cast<void>(config->write());
    EXPECT_THAT(told, ElementsAre(0, 1));
    config->write().data.add(L"/none/a", L"n", L"u");
    EXPECT_THAT(told, ElementsAre(0, 1, 0, 1));
    config->removeListener(listeners[0]);
    static_cast<void>(config->write());
    EXPECT_THAT(told, ElementsAre(0, 1, 0, 1, 1));
    config->removeListener(listeners[1]);
    static_cast<void>(config->write());
    EXPECT_THAT(told, ElementsAre(0, 1, 0, 1, 1));
}

TEST_F(ConfigListenerTest, SeeWhatWasChanged) {
    const qrv_test::Configuration configuration;
    const auto config = configuration.loaded();
    std::size_t seen = 0;
    listeners[0].reaction = [&] { seen = config->readProjects().size(); };
    config->addListener(listeners[0]);
    config->write().data.add(L"/none/a", L"n", L"u");
    EXPECT_EQ(seen, 1U);
    config->removeListener(listeners[0]);
}

TEST(WriteConfigData, IsOneHandle) {
    EXPECT_FALSE(std::is_copy_constructible_v<WriteConfigData>);
    EXPECT_FALSE(std::is_move_constructible_v<WriteConfigData>);
    EXPECT_FALSE(std::is_copy_assignable_v<WriteConfigData>);
    EXPECT_FALSE(std::is_move_assignable_v<WriteConfigData>);
}

TEST(ConfigListener, HasOneVirtualOperation) {
    EXPECT_FALSE(std::has_virtual_destructor_v<ConfigListener>);
    EXPECT_TRUE(std::is_abstract_v<ConfigListener>);
}

}  // namespace

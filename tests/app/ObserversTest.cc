#include <gmock/gmock.h>

#include "Ferrivane/Observers.h"

namespace ferrivane {
namespace {

using ::testing::ElementsAre;

TEST(Observers, AreToldInTheirOrder) {
    Observers observers;
    std::vector<int> told;
    const auto first = observers.add([&] { told.push_back(1); });
    const auto second = observers.add([&] { told.push_back(2); });
    observers.tell();
    EXPECT_THAT(told, ElementsAre(1, 2));
}

// A window closes because of what it was told of, and takes another observer along.
TEST(Observers, OneThatLeavesWhileAnotherIsToldIsNotTold) {
    Observers observers;
    std::vector<int> told;
    Observers::Subscription second;
    const auto first = observers.add([&] {
        told.push_back(1);
        second.reset();
    });
    second = observers.add([&] { told.push_back(2); });
    observers.tell();
    observers.tell();
    EXPECT_THAT(told, ElementsAre(1, 1));
}

TEST(Observers, OneThatComesWhileAnotherIsToldIsToldTheNextTime) {
    Observers observers;
    std::vector<int> told;
    Observers::Subscription second;
    const auto first = observers.add([&] {
        told.push_back(1);
        if (!second) second = observers.add([&] { told.push_back(2); });
    });
    observers.tell();
    EXPECT_THAT(told, ElementsAre(1));
    observers.tell();
    EXPECT_THAT(told, ElementsAre(1, 1, 2));
}

}  // namespace
}  // namespace ferrivane

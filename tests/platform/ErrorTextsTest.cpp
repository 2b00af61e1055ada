#include "platform/ErrorTexts.h"
#include "simulation/Machine.h"

#include <gtest/gtest.h>

namespace {

TEST(ErrorTexts, AreThoseOfTheSystem) {
    EXPECT_EQ(GetSocketErrorText(10061), simulation::ErrorText(10061));
    EXPECT_EQ(GetSystemErrorText(2), simulation::ErrorText(2));
    EXPECT_EQ(GetSystemErrorText(0), "No error");
    EXPECT_EQ(GetSystemErrorText(4000000000U), "Failed to get error description (Code: 4000000000)");
}

}  // namespace

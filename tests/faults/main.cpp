#include <gmock/gmock.h>

#include "matrix.h"
#include "watchdog.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    testbed::installWatchdog();
    if (testbed::examinedForParent(argc, argv)) {
        return 0;
    }
    testbed::registerRecipes();
    return RUN_ALL_TESTS();
}

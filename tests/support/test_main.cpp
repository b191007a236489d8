#include <gmock/gmock.h>

#include "watchdog.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    testbed::installWatchdog();
    return RUN_ALL_TESTS();
}

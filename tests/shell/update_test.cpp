#include "shell/update_library.h"
#include "shell/update_service.h"

#include <gtest/gtest.h>

#include <QtTest>
#include <atomic>

QString updateLibraryName() {
    return QCoreApplication::applicationDirPath() + "/update_double";
}

TEST(Updates, MayEndTheProgramFromAThreadAndAreEndedWithIt) {
    static std::atomic<int> requests = 0;
    startUpdateService([] { ++requests; });
    EXPECT_TRUE(QTest::qWaitFor([] { return requests == 1; }, 20000));
    stopUpdateService(); // the double asks once more
    EXPECT_EQ(requests, 2);
}

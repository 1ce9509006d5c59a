#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    ::testing::InitGoogleTest(&argc, argv);
    // Children re-run the test from its start, so no forked Qt state is shared.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

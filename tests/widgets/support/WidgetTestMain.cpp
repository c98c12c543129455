#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QLocale>
#include <QStandardPaths>
#include <gtest/gtest.h>

// Qt keeps a few process-lifetime allocations (plugin loaders, driver caches, font caches) that the
// leak checker would otherwise report at exit.
extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    // Dates and numbers shown to users follow the process locale; tests pin it, and the font.
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    searchdata::test::pinApplicationFont();
    return RUN_ALL_TESTS();
}

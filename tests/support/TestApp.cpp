#include "support/TestApp.h"

#include <QCoreApplication>
#include <QEvent>

#include <filesystem>

namespace kesta::test {

TestApp::TestApp()
{
    for (const char* folder : {"MORVO/KESTA/All/Log", "MORVO/KESTA/All/User"})
        std::filesystem::create_directories(appData() + folder);
    std::filesystem::create_directories(questionDir());
    host.appData = dir.path() + "/appdata";
    app = std::make_unique<App>(host, programDir());
}

TestApp::~TestApp()
{
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w != app->windows.form1)
            w->deleteLater();
    }
    settle();
    app.reset();
    settle();
}

Form1& TestApp::start()
{
    app->showMainWindow();
    settle();
    return form1();
}

void TestApp::settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

QWidget* topLevel(const char* objectName)
{
    for (QWidget* w : QApplication::topLevelWidgets()) {
        if (w->objectName() == objectName && w->isVisible())
            return w;
    }
    return nullptr;
}

} // namespace kesta::test

#include "app/ui/App.h"

#include "app/ui/Form1.h"

#include <QWidget>

namespace kesta {

App::App(Host& hostRef, std::string programDir)
    : host(hostRef), reporter(hostRef, state.folders), data(reporter, state.folders, state.options)
{
    state.folders.ProgramDir = std::move(programDir);
}

App::~App()
{
    windows.form1 = nullptr;
}

void App::showMainWindow()
{
    if (!mainWindow_) {
        mainWindow_ = std::make_unique<Form1>(*this);
        windows.form1 = mainWindow_.get();
        mainWindow_->Form_Load();
    }
    mainWindow_->show();
}

void App::unload(QWidget* window)
{
    if (window == nullptr)
        return;
    window->hide();
    window->deleteLater();
}

} // namespace kesta

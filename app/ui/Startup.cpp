#include "app/ui/Startup.h"

#include "app/ui/App.h"
#include "common/core/ErrorTrap.h"

#include <QApplication>

namespace kesta {

int runProgram(Host& host, const std::string& programDir)
{
    App app(host, programDir);
    untrapped(host, [&] { app.showMainWindow(); });
    return QApplication::exec();
}

} // namespace kesta

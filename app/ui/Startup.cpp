#include "app/ui/Startup.h"

#include "app/ui/App.h"
#include "app/ui/Splash.h"
#include "common/core/ErrorTrap.h"

#include <QApplication>

namespace kesta {

int runProgram(Host& host, const std::string& programDir)
{
    App app(host, programDir);
    // The splash unloads itself and opens the main window when dismissed.
    auto* splash = new frmSplash(app);
    untrapped(host, [&] { splash->Form_Load(); });
    splash->show();
    return QApplication::exec();
}

} // namespace kesta

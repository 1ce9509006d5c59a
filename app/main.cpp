#include "app/ui/Startup.h"
#include "common/ui/QtHost.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    kesta::QtHost host;
    return kesta::runProgram(host, QCoreApplication::applicationDirPath().toStdString());
}

#include "common/ui/QtHost.h"

#include "common/ui/QtPrinter.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>

#include <cstdio>
#include <cstdlib>

#ifdef _WIN32
#include <shlobj.h>
#include <windows.h>
#endif

#ifndef KESTA_COMMON_APPDATA
#define KESTA_COMMON_APPDATA "/var/lib/"
#endif

namespace kesta {

QtHost::QtHost() = default;
QtHost::~QtHost() = default;

MessageAnswer QtHost::messageBox(const MessageBoxRequest& request)
{
    QMessageBox box;
    box.setWindowTitle(QString::fromStdString(request.title));
    box.setText(QString::fromStdString(request.text));
    switch (request.icon) {
    case MessageIcon::None: box.setIcon(QMessageBox::NoIcon); break;
    case MessageIcon::Critical: box.setIcon(QMessageBox::Critical); break;
    case MessageIcon::Question: box.setIcon(QMessageBox::Question); break;
    case MessageIcon::Exclamation: box.setIcon(QMessageBox::Warning); break;
    case MessageIcon::Information: box.setIcon(QMessageBox::Information); break;
    }
    switch (request.buttons) {
    case MessageButtons::Ok: box.setStandardButtons(QMessageBox::Ok); break;
    case MessageButtons::OkCancel: box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel); break;
    case MessageButtons::YesNo: box.setStandardButtons(QMessageBox::Yes | QMessageBox::No); break;
    }
    switch (box.exec()) {
    case QMessageBox::Cancel: return MessageAnswer::Cancel;
    case QMessageBox::Yes: return MessageAnswer::Yes;
    case QMessageBox::No: return MessageAnswer::No;
    default: return MessageAnswer::Ok;
    }
}

void QtHost::execModal(QDialog& dialog)
{
    dialog.exec();
}

void QtHost::endProgram(int status)
{
    // Ends at once: no window's close handler, no timer, nothing saved.
    std::fflush(nullptr);
    std::_Exit(status);
}

std::chrono::system_clock::time_point QtHost::now()
{
    return std::chrono::system_clock::now();
}

std::uint64_t QtHost::randomSeed()
{
    // The clock alone repeats within one tick; the counter never does.
    const auto ticks = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return ticks ^ (++seedCounter_ * 0x9E3779B97F4A7C15ULL);
}

void QtHost::beep()
{
    QApplication::beep();
}

Printer* QtHost::printer()
{
    // Looked up until one is found: a printer may be installed while the program runs.
    if (!printer_)
        printer_ = QtPrinter::forDefaultPrinter();
    return printer_.get();
}

std::optional<std::string> QtHost::knownFolder(std::int32_t folderId)
{
#ifdef _WIN32
    char path[MAX_PATH] = {};
    if (SHGetFolderPathA(nullptr, folderId | 0x1800, reinterpret_cast<HANDLE>(-1), 0, path) != 0)
        return std::nullopt;
    return std::string(path);
#else
    if (folderId != 35)
        return std::nullopt;
    return std::string(KESTA_COMMON_APPDATA);
#endif
}

bool QtHost::startSystemInformation()
{
    for (const char* tool : {"hardinfo", "kinfocenter", "gnome-system-monitor", "xfce4-taskmanager"}) {
        const QString path = QStandardPaths::findExecutable(tool);
        if (!path.isEmpty() && QProcess::startDetached(path, {}))
            return true;
    }
    return false;
}

} // namespace kesta

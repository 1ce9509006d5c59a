#include "support/TestApp.h"

#include "common/ui/Widgets.h"
#include "support/BankWriter.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <filesystem>

namespace kesta::test {

void settle()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

void FakeHost::execModal(QDialog& dialog)
{
    modals.push_back(dialog.objectName().toStdString());
    dialog.setModal(true);
    dialog.show();
    const Script script = modalScripts.empty() ? press() : modalScripts.front();
    if (!modalScripts.empty())
        modalScripts.pop_front(); // before it runs: it may open the next dialog
    QPointer<QDialog> alive(&dialog); // running out of time may unload it meanwhile
    script(dialog);
    if (alive)
        alive->hide(); // as a modal loop ends
}

Script press(const char* button)
{
    return [name = QString(button)](QDialog& d) {
        name == "Esc" ? key(&d, Qt::Key_Escape) : click(d.findChild<QWidget*>(name));
    };
}

TestApp::TestApp()
{
    const std::string questions = dir / "program/Questions";
    for (const std::string& folder : {questions, user(""), user("../Log")})
        std::filesystem::create_directories(folder);
    writeNumberedBank(questions + "/quiz.kqb", "KESTA Quiz Demo - Five", 5, "a");
    writeNumberedBank(questions + "/exam.kqb", "KESTA Exam Demo - Three", 3, "abc");
    writeFile(user("option.usr"), "1\r\n0\r\n0\r\n1\r\n30\r\n5");
    host.appData = dir / "appdata";
    restart();
}

void TestApp::restart(bool again)
{
    for (QWidget* w : QApplication::topLevelWidgets())
        if (!qobject_cast<Form1*>(w)) // a main window belongs to its program
            w->deleteLater();
    app.reset();
    settle();
    if (again)
        app = std::make_unique<App>(host, dir / "program");
}

std::string TestApp::look()
{
    QStringList shown, controls;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible())
            shown << w->objectName();
    shown.sort();
    const Form1& f = *app->windows.form1;
    for (QWidget* w : f.findChildren<QWidget*>())
        if (f.isVisible() && w->window() == &f && w->isVisibleTo(&f)
            && (w->inherits("QAbstractButton") || QStringList {"Num_Label1", "TimeLeft"}.contains(w->objectName())))
            controls << w->objectName();
    std::string said;
    for (const MessageBoxRequest& m : host.messages)
        said += m.title + ": " + m.text + "\n";
    host.messages.clear();
    return row(shown.join(' ').toStdString(), controls.join(' ').toStdString(), said);
}

std::string items(const std::vector<QAction*>& menuItems)
{
    std::string all;
    for (QAction* item : menuItems)
        if (item->isVisible())
            all += "[" + ui::plainCaption(item->text()).toStdString() + (item->isEnabled() ? "]" : "(off)]");
    return all;
}

} // namespace kesta::test

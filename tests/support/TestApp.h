#pragma once

#include "app/ui/Form1.h"
#include "app/ui/ProgressWindow.h"
#include "app/ui/Splash.h"
#include "common/ui/QtPrinter.h"
#include "common/ui/Widgets.h"
#include "support/BankWriter.h"
#include "support/RecordingHost.h"
#include "support/TempDir.h"

#include <QTest>
#include <QtWidgets>
#include <deque>
#include <map>
#include <set>

namespace kesta::test {

// Modal dialogs go to a scripted handler instead of waiting for a user. Ending the program first prints what
// `describe` returns, when set.
class FakeHost : public RecordingHost {
public:
    std::function<void(QDialog&)> onModal;
    std::function<std::string()> describe;
    std::unique_ptr<Printer> paper; // the real printer, into a PDF file, instead of the recording one
    Printer* printer() override { return paper ? paper.get() : RecordingHost::printer(); }
    void execModal(QDialog& dialog) override
    {
        QPointer<QDialog> alive(&dialog); // running out of time may unload it meanwhile
        if (dialog.setModal(true), dialog.show(), onModal(dialog), alive)
            alive->hide(); // as a modal loop ends
    }
    // The program may end only in a death test's child: ending the test program itself with 0 would pass for success.
    [[noreturn]] void endProgram(int status) override
    {
        if (describe)
            std::fputs(describe().c_str(), stderr);
        RecordingHost::endProgram(inDeathTestChild() ? status : 70);
    }
};

// One whole program in a scratch folder: an all-users data tree with the default options, and a program folder
// whose Questions hold a five-question quiz (every answer A) and a three-question exam (answers A, B, C). Nothing
// touches the real data folder. A journey drives it by steps, each a few commands separated by "; ":
//   start, restart, splash, progress (a progress window), menu ITEM, click [WINDOW/]NAME, key KEYS [[WINDOW/]NAME],
//   close WINDOW, tick [WINDOW/]TIMER [N], pick LIST N, type LIST TEXT, resize WINDOW W H|max,
//   write FILE BYTES, rm FILE, cat FILE (in the user folder), printer none|paper (the real one, into a PDF file),
//   printed (its text), look, glance (a look that shows nothing), full (on, then off).
// A command that starts with "> " is the script of the next modal dialog to be shown, " & " between its commands.
class TestApp {
public:
    TestApp()
    {
        for (const std::string& folder : { dir / "program/Questions", user(""), user("../Log") })
            std::filesystem::create_directories(folder);
        writeFile(dir / "program/Questions/quiz.kqb", numberedBank("KESTA Quiz Demo", 5, "a"));
        writeFile(dir / "program/Questions/exam.kqb", numberedBank("KESTA Exam Demo", 3, "abc"));
        writeFile(user("option.usr"), "1\r\n0\r\n0\r\n1\r\n30\r\n5");
        host.appData = dir / "appdata";
        host.onModal = [this](QDialog& dialog) { // without a script of its own, looked at and closed with Esc
            const QString script = QString::fromStdString(scripts.empty() ? "" : scripts.front());
            if (!scripts.empty())
                scripts.pop_front(); // taken before it runs: it may open the next dialog
            for (const QString& command :
                (script.isEmpty() ? "look & key Esc " + dialog.objectName() : script).split(" & "))
                perform(command);
        };
        restart();
    }
    ~TestApp() { restart(false); }
    // Runs pending deletions and zero-time work, as the event loop would after a user's action.
    static void settle()
    {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete), QApplication::processEvents();
    }
    // Text with its line ends written out, so that whatever is shown stays on one line.
    static std::string esc(QString s) { return s.replace("\r", "\\r").replace("\n", "\\n").toStdString(); }
    // As the splash hands over: loads and shows the main window.
    Form1& start() { return app->showMainWindow(), settle(), *app->windows.form1; }
    // The program ends, its windows closed, and (unless not `again`) starts again over the same folders.
    void restart(bool again = true)
    {
        for (QWidget* w : QApplication::topLevelWidgets())
            if (!qobject_cast<Form1*>(w)) // a main window belongs to its program
                w->deleteLater();
        app.reset(), settle();
        app = again ? std::make_unique<App>(host, dir / "program") : nullptr;
    }
    std::string user(const std::string& name) const { return dir / ("appdata/MORVO/KESTA/All/User/" + name); }

    // One line of a look: a control's name (Window/name outside the main window), its caption ("*" when checked),
    // " off" when disabled; in `full`, also its place in its parent, its font where it differs from its parent's,
    // word wrap, the default button, and its tool tip. A list reads as a screen reader announces it.
    std::string describe(const QString& key, QWidget* w) const
    {
        QString caption = w->isWindow() ? w->windowTitle() : "", more;
        auto* l = qobject_cast<QLabel*>(w);
        auto* c = qobject_cast<QComboBox*>(w);
        if (auto* b = qobject_cast<QAbstractButton*>(w))
            caption = b->text() + (b->isChecked() ? "*" : ""), more = b->property("default").toBool() ? " default" : "";
        else if (auto* v = qobject_cast<QTextBrowser*>(w))
            caption = v->toPlainText().simplified();
        else if (l || qobject_cast<QGroupBox*>(w))
            caption = l ? l->text() : w->property("title").toString(), more = l && l->wordWrap() ? " wrap" : "";
        else if (auto* p = qobject_cast<QProgressBar*>(w))
            caption = QString("%1 of %2-%3 ").arg(p->value()).arg(p->minimum()).arg(p->maximum())
                + (p->isTextVisible() ? p->text() : "");
        else if (QAccessibleInterface* a = c ? QAccessible::queryAccessibleInterface(c) : nullptr)
            caption = a->text(QAccessible::Name) + "=" + a->text(QAccessible::Value) + " of " + c->itemText(0) + "-"
                + c->itemText(c->count() - 1) + (c->isEditable() ? "" : " fixed");
        const QFont f = w->font(), parent = w->isWindow() ? QApplication::font() : w->parentWidget()->font();
        const QRect g = w->geometry();
        more
            += f == parent ? "" : QString(" %1 %2pt%3").arg(f.family()).arg(f.pointSize()).arg(f.bold() ? " bold" : "");
        more = QString(" %1,%2 %3x%4").arg(g.x()).arg(g.y()).arg(g.width()).arg(g.height()) + more;
        return (key + "[" + QString::fromStdString(esc(caption)) + "]" + (w->isEnabled() ? "" : " off") + "\t"
            + (full ? more + (w->toolTip().isEmpty() ? "" : " ~" + w->toolTip()) : ""))
            .toStdString();
    }

    // What the user sees, keyed by name: each shown window ("Window/") and each visible named control in it, its shown
    // menu items (a score item's date reads <file date> when it is its file's date), and its timers that run.
    std::map<std::string, std::string> screen() const
    {
        std::map<std::string, std::string> lines;
        for (QWidget* window : QApplication::topLevelWidgets()) {
            const QString name = window->objectName(), prefix = name == "Form1" ? "" : name + "/";
            auto add = [&](const QString& key, const std::string& line) {
                if (!line.empty())
                    lines[key.toStdString()] = line;
            };
            if (!window->isVisible() || name.isEmpty())
                continue;
            add(name + "/", describe(name, window));
            for (QWidget* w : window->findChildren<QWidget*>())
                if (w->isVisible() && w->window() == window && !w->objectName().isEmpty()
                    && !w->objectName().startsWith("qt_"))
                    add(prefix + w->objectName(), describe(prefix + w->objectName(), w));
            for (QAction* item : window->findChildren<QAction*>()) {
                QString text = prefix + item->objectName() + "[" + ui::plainCaption(item->text()) + "]"
                    + (item->isEnabled() ? "" : " off");
                if (const QFileInfo file(item->data().toString()); file.exists())
                    text.replace(QLocale::system().toString(file.lastModified(), QLocale::ShortFormat), "<file date>");
                if (item->isVisible() && !item->menu() && !item->objectName().isEmpty())
                    add(prefix + item->objectName(), text.toStdString() + "\t");
            }
            for (QTimer* timer : window->findChildren<QTimer*>())
                add(prefix + timer->objectName(),
                    timer->isActive() ? (prefix + timer->objectName() + " on\t").toStdString() : "");
        }
        return lines;
    }

    // What changed since the last look: "-name" for what went away (a window's controls go with it), the line of
    // what is new or different ("+name" for what shows again as it was; a window out of sight is compared, when it
    // shows again, with how it was), with its place and tool tip when new or changed; then each message box shown
    // meanwhile, "title: text" (the title alone when it said the same before), and "beep".
    std::string look()
    {
        std::map<std::string, std::string> now = screen();
        std::string changes;
        auto window = [](const std::string& key) {
            return key.find('/') == std::string::npos ? "Form1/" : key.substr(0, key.find('/') + 1);
        };
        for (const auto& [key, line] : last)
            if (!now.count(key) && (key == window(key) || now.count(window(key))))
                changes += "-" + key.substr(0, key.size() - (key == window(key))) + "\n";
        auto split = [](const std::string& line) {
            return std::pair(line.substr(0, line.find('\t')), line.substr(line.find('\t') + 1));
        };
        for (const auto& [key, line] : now) {
            const auto [caption, details] = split(line);
            const auto [was, wasDetails] = split(last.count(key) ? last[key] : "\t");
            if (!last.count(key) && seenBefore[key] == line)
                changes += "+" + key.substr(0, key.size() - (key == window(key))) + "\n";
            else if (!last.count(key) || (!details.empty() && !wasDetails.empty() && wasDetails != details))
                changes += caption + details + "\n";
            else if (was != caption)
                changes += caption + "\n";
        }
        for (const auto& [key, line] : last)
            if (!now.count(window(key)) && key != window(key))
                now.insert({ key, line });
        for (const MessageBoxRequest& m : std::exchange(host.messages, {}))
            changes
                += m.title + ":" + (said.insert(m.text).second ? " " + esc(QString::fromStdString(m.text)) : "") + "\n";
        for (const auto& [key, line] : now)
            seenBefore[key] = line;
        last = std::move(now);
        return changes + (std::exchange(host.beeps, 0) ? "beep\n" : "");
    }

    // Runs one step; returns what its "look", "cat" and "printed" commands showed, then the look after it.
    std::string run(const std::string& step)
    {
        for (const QString& command : QString::fromStdString(step).split("; "))
            command.startsWith("> ") ? scripts.push_back(command.mid(2).toStdString()) : perform(command);
        return std::exchange(seen, "") + look();
    }

    TempDir dir;
    FakeHost host;
    std::unique_ptr<App> app;
    std::string seen; // what the step has shown so far

private:
    // A shown window by its name, a control of one as Window/name, or a control of the main window by its name.
    QWidget* find(const QString& name) const
    {
        QString window = name.section('/', 0, 0), control = name.section('/', 1);
        for (QWidget* top : QApplication::topLevelWidgets())
            if (!top->isHidden() && top->objectName() == window && control.isEmpty())
                return top;
        if (control.isEmpty())
            window = "Form1", control = name;
        for (QWidget* top : QApplication::topLevelWidgets())
            for (QWidget* w : top->objectName() == window ? top->findChildren<QWidget*>(control) : QWidgetList())
                if (w->window() == top)
                    return w;
        return nullptr;
    }

    void perform(const QString& command)
    {
        const QStringList a = command.split(' ');
        const QString name = a.value(1), rest = command.section(' ', 2);
        QWidget* w = find(name);
        Form1* f = app->windows.form1;
        auto file = [&] { return user(name.toStdString()); };
        auto timer = [&] {
            return (name.contains('/') ? find(name.section('/', 0, 0)) : f)->findChild<QTimer*>(name.section('/', -1));
        };
        auto key = [&](QWidget* to, const QKeyCombination& k) { // into the window in front, at its focus
            to->activateWindow(), (void)QTest::qWaitForWindowActive(to);
            QTest::keyClick(
                a.size() > 2 || !to->focusWidget() ? to : to->focusWidget(), k.key(), k.keyboardModifiers());
        };
        const std::map<QString, std::function<void()>> commands {
            { "start", [&] { start(); } },
            { "restart", [&] { restart(); } },
            { "splash",
                [&] { (new frmSplash(*app))->Form_Load(), QApplication::topLevelWidgets().constLast()->show(); } },
            { "progress",
                [&] { // its job looks, and activates it again, which must not start a second job
                    QPointer<frmProgressBar> progress = new frmProgressBar;
                    QObject::connect(
                        progress, &frmProgressBar::PerformProcess, [this, progress, f, jobs = 0]() mutable {
                            seen += "job\n", perform("look");
                            if (jobs++ == 0)
                                f->activateWindow(), (void)QTest::qWaitForWindowActive(f), progress->activateWindow(),
                                    (void)QTest::qWaitForWindowActive(progress);
                        });
                    progress->show(), progress->activateWindow();
                } },
            { "menu", [&] { f->findChild<QAction*>(name)->trigger(); } },
            { "click",
                [&] { w->activateWindow(), QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(8, w->height() / 2)); } },
            { "key", [&] { key(a.size() > 2 ? find(a[2]) : f, QKeySequence(name)[0]); } },
            { "close", [&] { w->close(); } },
            { "tick",
                [&] {
                    for (int i = 0; i < std::max(1, rest.toInt()) && timer()->isActive(); ++i)
                        QMetaObject::invokeMethod(timer(), "timeout"), settle();
                } },
            { "pick", [&] { qobject_cast<QComboBox*>(w)->setCurrentIndex(rest.toInt()); } },
            { "type", [&] { QTest::keyClicks(w, rest); } },
            { "resize", [&] { rest == "max" ? w->showMaximized() : w->resize(a[2].toInt(), a[3].toInt()); } },
            { "write", [&] { writeFile(file(), rest.toStdString()); } },
            { "rm", [&] { std::filesystem::remove(file()); } },
            { "cat",
                [&] { seen += name.toStdString() + ": " + esc(QString::fromStdString(readFile(file()))) + "\n"; } },
            { "printer",
                [&] {
                    name == "none" ? (void)(host.printerInstalled = false, host.paper.reset())
                                   : (void)(host.paper = QtPrinter::toPdf(QString::fromStdString(dir / "paper.pdf")));
                } },
            { "printed",
                [&] { // the text of the PDF file's pages
                    QProcess pdf;
                    pdf.start("pdftotext", { QString::fromStdString(dir / "paper.pdf"), "-" }), pdf.waitForFinished();
                    seen += "paper: " + esc(QString::fromUtf8(pdf.readAllStandardOutput())) + "\n";
                } },
            { "look", [&] { seen += look(); } },
            { "glance", [&] { look(); } }, // what another journey checks
            { "full", [&] { full = !full; } },
        };
        if (!commands.count(a[0]) || (!w && QString("click close pick type resize").contains(a[0])))
            return ADD_FAILURE() << "cannot " << command.toStdString();
        commands.at(a[0])(), settle();
    }

    bool full = false; // looks show places, fonts and tool tips
    std::map<std::string, std::string> last, seenBefore;
    std::set<std::string> said;
    std::deque<std::string> scripts;
};

} // namespace kesta::test

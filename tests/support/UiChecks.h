#pragma once

#include "app/ui/Form1.h"
#include "support/RecordingHost.h"

#include <QAbstractButton>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <initializer_list>
#include <sstream>
#include <string>

// Whole-state checks for the window tests: each turns what the user would
// see into one string, so a test compares a state at once.
namespace kesta::test {

// The text a label or button shows.
inline std::string text(const QWidget* w)
{
    if (auto* label = qobject_cast<const QLabel*>(w))
        return label->text().toStdString();
    return qobject_cast<const QAbstractButton*>(w)->text().toStdString();
}

// The objectNames of the main window's test controls that are shown (not hidden
// up to the window), in a fixed order, each followed by a space.
inline std::string shownControls(const Form1& f)
{
    std::string names;
    for (const QWidget* w :
        std::initializer_list<const QWidget*> { f.Start_Test, f.ViewAnswer, f.Num_Label1, f.Option1, f.Option2,
            f.Option3, f.Option4, f.Label3, f.EndExam, f.Back_Command1, f.Command2, f.Finish, f.Time_Left, f.TimeLeft })
        if (w->isVisibleTo(&f))
            names += w->objectName().toStdString() + " ";
    return names;
}

// The parts joined with "|" (a bool shows as 1 or 0), to compare many values at once.
template <typename... Parts> std::string row(const Parts&... parts)
{
    std::ostringstream out;
    const char* separator = "";
    ((out << separator << parts, separator = "|"), ...);
    return out.str();
}

// A dialog's title, Label1, OKButton and CancelButton texts, as row() joins them.
inline std::string captions(const QWidget& dialog)
{
    return row(dialog.windowTitle().toStdString(), text(dialog.findChild<QLabel*>("Label1")),
        text(dialog.findChild<QPushButton*>("OKButton")), text(dialog.findChild<QPushButton*>("CancelButton")));
}

// A plain message box (no icon, OK only) as messages() shows it.
inline std::string box(const std::string& title, const std::string& body)
{
    return "[" + title + "|0|0] " + body + "\n";
}

// Every message box shown so far, one box() each.
inline std::string messages(const RecordingHost& host)
{
    std::string all;
    for (const MessageBoxRequest& m : host.messages)
        all += "[" + m.title + "|" + std::to_string(static_cast<int>(m.icon)) + "|"
            + std::to_string(static_cast<int>(m.buttons)) + "] " + m.text + "\n";
    return all;
}

} // namespace kesta::test

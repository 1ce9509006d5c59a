#pragma once

#include <QRect>
#include <QString>

class QAction;
class QFrame;
class QGroupBox;
class QLabel;
class QMenu;
class QMenuBar;
class QPushButton;
class QRadioButton;
class QWidget;

namespace kesta::ui {

// Builders for the controls of the program's windows. Each control gets its
// name as objectName; labels, buttons and menu items are read out by their
// current caption, which Qt's accessibility follows as it changes.

QMenu* menu(QMenuBar* bar, const QString& name, const QString& caption);
QMenu* menu(QMenu* parent, const QString& name, const QString& caption);
QAction* action(QMenu* parent, const QString& name, const QString& caption);
QFrame* frame(QWidget* parent, const QString& name, const QRect& geometry);            // plain frame
QGroupBox* group(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry); // captioned
QLabel* label(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry,
              const QString& toolTip = {});
QPushButton* button(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry,
                    const QString& toolTip = {});
QRadioButton* radio(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry);

// Sets the font family of a widget and everything inside it.
void setFontFamily(QWidget* widget, const QString& family);

// The caption without its mnemonic marker.
QString plainCaption(const QString& caption);

} // namespace kesta::ui

#pragma once

#include <QRect>
#include <QSize>
#include <QString>

#include <initializer_list>

class QAction;
class QComboBox;
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

// A list box, announced by its name (see labelFor) rather than by its value.
QComboBox* comboBox(QWidget* parent, const QString& name, const QRect& geometry);

// Ties a control without a caption of its own to the label before it: the
// label's buddy, and announced by the label's text (without '&').
void labelFor(QLabel* label, QWidget* control);

// Makes the keyboard focus pass through `widgets` in the order given, so that
// Tab follows the layout rather than the order the controls were created in.
void setTabChain(std::initializer_list<QWidget*> widgets);

// Pixels for a length in twips (1/1440 inch; 15 twips a pixel), rounded.
int twips(int value);

// Lays out a window's page: the button frame near the bottom of the client
// area, the page view filling the space above it with the margins of a normal
// or a maximized window, and the view and both frames centred. A window too
// small for the margins leaves the view without size instead of a negative one.
void arrangePage(const QWidget& window, const QSize& client, QWidget* view, QWidget* buttons, QWidget* header);

// Sets the font family of a widget and everything inside it.
void setFontFamily(QWidget* widget, const QString& family);

// The caption without its mnemonic marker, as screen readers announce it:
// "E&xit" gives "Exit", "Q&&A" gives "Q&A".
QString plainCaption(const QString& caption);

// A caption taken from data (a test's title) that shows every '&' as written
// instead of turning the next letter into a mnemonic.
QString literalCaption(const QString& text);

} // namespace kesta::ui

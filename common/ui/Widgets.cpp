#include "common/ui/Widgets.h"

#include <algorithm>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>

namespace kesta::ui {

namespace {

// On Linux Qt announces a combo box by its current value ("30") and leaves
// the label to a relation, ignoring the accessible name; screen readers that
// list controls, and tests that look a control up by name, then cannot tell
// the lists apart. A named combo box is announced by its name instead, with
// the value as its value (and as its name while it has none).
class NamedComboBox final : public QAccessibleWidget {
public:
    explicit NamedComboBox(QComboBox* combo) : QAccessibleWidget(combo, QAccessible::ComboBox) {}

    QString text(QAccessible::Text t) const override
    {
        const auto* combo = static_cast<const QComboBox*>(widget());
        if (t == QAccessible::Name && !combo->accessibleName().isEmpty())
            return combo->accessibleName();
        if (t == QAccessible::Name || t == QAccessible::Value)
            return combo->currentText();
        return QAccessibleWidget::text(t);
    }
};

QAccessibleInterface* namedComboBoxFactory(const QString& className, QObject* object)
{
    auto* combo = qobject_cast<QComboBox*>(object);
    if (className == QLatin1String("QComboBox") && combo != nullptr)
        return new NamedComboBox(combo);
    return nullptr;
}

} // namespace

QComboBox* comboBox(QWidget* parent, const QString& name, const QRect& geometry)
{
    // Installed before the first combo box exists: an active screen reader
    // asks for a control's interface as soon as it is made, and keeps it.
    // Factories installed later are asked first, so this one overrides Qt's own.
    static const bool installed = [] {
        QAccessible::installFactory(namedComboBoxFactory);
        return true;
    }();
    (void)installed;
    auto* combo = new QComboBox(parent);
    combo->setObjectName(name);
    combo->setGeometry(geometry);
    return combo;
}

void labelFor(QLabel* label, QWidget* control)
{
    label->setBuddy(control);
    control->setAccessibleName(plainCaption(label->text()));
}

QString plainCaption(const QString& caption)
{
    QString plain = caption;
    plain.replace("&&", QString(QChar(0x1)));
    plain.remove('&');
    plain.replace(QString(QChar(0x1)), "&");
    return plain;
}

int twips(int value)
{
    return (value + 7) / 15;
}

void arrangePage(const QWidget& window, const QSize& client, QWidget* view, QWidget* buttons, QWidget* header)
{
    const int w = client.width();
    const int h = client.height();
    buttons->move(buttons->x(), h - (buttons->height() + twips(350)));
    if (!window.isMinimized()) {
        const bool maximized = window.isMaximized();
        const int width = w - twips(maximized ? 2800 : 1400);
        const int height = h - (view->y() + buttons->height() + twips(maximized ? 2800 : 700));
        view->resize(std::max(0, width), std::max(0, height));
    }
    for (QWidget* control : {view, buttons, header})
        control->move(w / 2 - control->width() / 2, control->y());
}

QString literalCaption(const QString& text)
{
    QString escaped = text;
    escaped.replace("&", "&&");
    return escaped;
}

QMenu* menu(QMenuBar* bar, const QString& name, const QString& caption)
{
    QMenu* m = bar->addMenu(caption);
    m->setObjectName(name);
    m->menuAction()->setObjectName(name + "Action");
    return m;
}

QMenu* menu(QMenu* parent, const QString& name, const QString& caption)
{
    QMenu* m = parent->addMenu(caption);
    m->setObjectName(name);
    m->menuAction()->setObjectName(name + "Action");
    return m;
}

QAction* action(QMenu* parent, const QString& name, const QString& caption)
{
    QAction* a = parent->addAction(caption);
    a->setObjectName(name);
    return a;
}

QFrame* frame(QWidget* parent, const QString& name, const QRect& geometry)
{
    auto* f = new QFrame(parent);
    f->setObjectName(name);
    f->setGeometry(geometry);
    f->setFrameShape(QFrame::NoFrame);
    return f;
}

QGroupBox* group(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry)
{
    auto* g = new QGroupBox(caption, parent);
    g->setObjectName(name);
    g->setGeometry(geometry);
    return g;
}

QLabel* label(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry,
              const QString& toolTip)
{
    auto* l = new QLabel(caption, parent);
    l->setObjectName(name);
    l->setGeometry(geometry);
    if (!toolTip.isEmpty())
        l->setToolTip(toolTip);
    return l;
}

QPushButton* button(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry,
                    const QString& toolTip)
{
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    b->setGeometry(geometry);
    if (!toolTip.isEmpty())
        b->setToolTip(toolTip);
    return b;
}

QRadioButton* radio(QWidget* parent, const QString& name, const QString& caption, const QRect& geometry)
{
    auto* r = new QRadioButton(caption, parent);
    r->setObjectName(name);
    r->setGeometry(geometry);
    return r;
}

void setTabChain(std::initializer_list<QWidget*> widgets)
{
    QWidget* previous = nullptr;
    for (QWidget* widget : widgets) {
        if (previous != nullptr)
            QWidget::setTabOrder(previous, widget);
        previous = widget;
    }
}

void setFontFamily(QWidget* widget, const QString& family)
{
    QFont font = widget->font();
    font.setFamily(family);
    widget->setFont(font);
}

} // namespace kesta::ui

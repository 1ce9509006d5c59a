#include "common/ui/Widgets.h"

#include <QAction>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>

namespace kesta::ui {

QString plainCaption(const QString& caption)
{
    QString plain = caption;
    plain.replace("&&", QString(QChar(0x1)));
    plain.remove('&');
    plain.replace(QString(QChar(0x1)), "&");
    return plain;
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

void setFontFamily(QWidget* widget, const QString& family)
{
    QFont font = widget->font();
    font.setFamily(family);
    widget->setFont(font);
}

} // namespace kesta::ui

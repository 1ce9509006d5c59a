#include "app/ui/ConfigWizard.h"

#include "app/core/Options.h"
#include "common/core/ErrorTrap.h"
#include "common/core/SafeFile.h"
#include "common/ui/Widgets.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

namespace kesta {

namespace {

constexpr int Width = 372;
constexpr int Height = 236;

constexpr const char* FinishNotice =
    "If you have modified the time per question, the change will take place upon loading a new chapter.\r\n\r\n"
    "If you have modified the font size, the change will take place when a new question is loaded.";

// The lists accept typed text as well as a choice, as the original lists did.
QComboBox* list(QWidget* parent, const char* name, const QRect& geometry)
{
    QComboBox* combo = ui::comboBox(parent, name, geometry);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    return combo;
}

void fill(QComboBox* combo, int last)
{
    for (int k = 0; k <= last; ++k)
        combo->addItem(QString::number(k));
}

void showValue(QComboBox* combo, Int16 value, int last)
{
    const std::string text = listText(value, last);
    combo->setCurrentIndex(text.empty() ? -1 : value);
    combo->setEditText(QString::fromStdString(text));
}

Int16 valueOf(const QComboBox* combo)
{
    return parseInt16(combo->currentText().toStdString());
}

} // namespace

Config_Wizard_01::Config_Wizard_01(App& app, QWidget* parent) : QDialog(parent), app_(app)
{
    setObjectName("Config_Wizard_01");
    setWindowTitle("Configuration Wizard");
    setFixedSize(Width, Height);

    Frame1 = ui::group(this, "Frame1", "Question Settings", QRect(12, 10, Width - 24, 166));
    Label1 = ui::label(Frame1, "Label1", "Time for Each Question", QRect(16, 26, 300, 20));
    Label2 = ui::label(Frame1, "Label2", "Hour", QRect(16, 50, 90, 18));
    Label3 = ui::label(Frame1, "Label3", "Minute", QRect(122, 50, 90, 18));
    Label4 = ui::label(Frame1, "Label4", "Second", QRect(228, 50, 90, 18));
    Combo1 = list(Frame1, "Combo1", QRect(16, 70, 90, 26));
    Combo2 = list(Frame1, "Combo2", QRect(122, 70, 90, 26));
    Combo3 = list(Frame1, "Combo3", QRect(228, 70, 90, 26));
    Label5 = ui::label(Frame1, "Label5", "Question Font Size", QRect(16, 114, 190, 22));
    Combo4 = list(Frame1, "Combo4", QRect(228, 112, 90, 26));

    Cancel = ui::button(this, "Cancel", "Cancel", QRect(Width - 236, Height - 46, 106, 30));
    Next = ui::button(this, "Next", "Finish", QRect(Width - 118, Height - 46, 106, 30));
    Next->setDefault(true);

    ui::labelFor(Label2, Combo1);
    ui::labelFor(Label3, Combo2);
    ui::labelFor(Label4, Combo3);
    ui::labelFor(Label5, Combo4);
    ui::setTabChain({Combo1, Combo2, Combo3, Combo4, Cancel, Next});
    ui::setFontFamily(this, "Arial");

    connect(Next, &QPushButton::clicked, this, [this] { Next_Click(); });
    connect(Cancel, &QPushButton::clicked, this, [this] { Cancel_Click(); });
    app_.windows.Config_Wizard_01 = this;
}

Config_Wizard_01::~Config_Wizard_01() = default;

void Config_Wizard_01::Form_Load()
{
    untrapped(app_.host, [&] {
        for (QComboBox* combo : {Combo1, Combo2, Combo3, Combo4})
            combo->clear();
        fill(Combo1, HoursLast);
        fill(Combo2, MinutesLast);
        fill(Combo3, SecondsLast);
        fill(Combo4, FontSizeLast);
        const UserOptions& options = app_.state.options;
        showValue(Combo1, options.values[3], HoursLast);
        showValue(Combo2, options.values[4], MinutesLast);
        showValue(Combo3, options.values[5], SecondsLast);
        showValue(Combo4, options.values[6], FontSizeLast);
    });
}

void Config_Wizard_01::Next_Click()
{
    untrapped(app_.host, [&] {
        UserOptions& options = app_.state.options;
        options.values[3] = valueOf(Combo1);
        options.values[4] = valueOf(Combo2);
        options.values[5] = valueOf(Combo3);
        options.values[6] = valueOf(Combo4);
        safefile::replace(optionsFilePath(app_.state.folders), formatOptions(options));
        app_.host.messageBox({AppTitle, FinishNotice, MessageIcon::None, MessageButtons::Ok});
        App::unload(this);
    });
}

void Config_Wizard_01::Cancel_Click()
{
    App::unload(this);
}

} // namespace kesta

#pragma once

#include "app/ui/App.h"

#include <QDialog>

class QComboBox;
class QGroupBox;
class QLabel;
class QPushButton;

namespace kesta {

// The options wizard: the time per question and the question font size.
// Its routines trap nothing: a typed text that is not a number, or a failure
// to write the options file, takes the default failure path and ends the
// program.
class Config_Wizard_01 final : public QDialog {
    Q_OBJECT

public:
    Config_Wizard_01(App& app, QWidget* parent);
    ~Config_Wizard_01() override;
    Config_Wizard_01(const Config_Wizard_01&) = delete;
    Config_Wizard_01& operator=(const Config_Wizard_01&) = delete;

    void Form_Load();   // fills the lists and shows the current options
    void Next_Click();  // "Finish": stores, rewrites the file, tells, closes
    void Cancel_Click();

    QGroupBox* Frame1 = nullptr;
    QLabel* Label1 = nullptr;
    QLabel* Label2 = nullptr;
    QLabel* Label3 = nullptr;
    QLabel* Label4 = nullptr;
    QLabel* Label5 = nullptr;
    QComboBox* Combo1 = nullptr; // hours
    QComboBox* Combo2 = nullptr; // minutes
    QComboBox* Combo3 = nullptr; // seconds
    QComboBox* Combo4 = nullptr; // font size
    QPushButton* Cancel = nullptr;
    QPushButton* Next = nullptr;

private:
    App& app_;
};

} // namespace kesta

#include "support/FakeHost.h"

#include <QDialog>
#include <QPushButton>
#include <QTest>

#include <stdexcept>

namespace kesta::test {

void FakeHost::execModal(QDialog& dialog)
{
    modals.push_back(dialog.objectName().toStdString());
    dialog.setModal(true);
    dialog.show();
    if (modalScripts.empty()) {
        dialog.reject();
        return;
    }
    ModalScript script = std::move(modalScripts.front());
    modalScripts.pop_front();
    script(dialog);
    if (dialog.isVisible())
        dialog.hide();
}

void clickButton(QDialog& dialog, const char* objectName)
{
    auto* button = dialog.findChild<QPushButton*>(objectName);
    if (button == nullptr)
        throw std::runtime_error(std::string("no button ") + objectName + " in " + dialog.objectName().toStdString());
    QTest::mouseClick(button, Qt::LeftButton);
}

FakeHost::ModalScript click(const char* objectName)
{
    return [name = std::string(objectName)](QDialog& dialog) { clickButton(dialog, name.c_str()); };
}

} // namespace kesta::test

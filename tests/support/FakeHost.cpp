#include "support/FakeHost.h"

#include <QDialog>
#include <QPushButton>
#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace kesta::test {

MessageAnswer FakeHost::messageBox(const MessageBoxRequest& request)
{
    messages.push_back(request);
    if (answers.empty())
        return request.buttons == MessageButtons::YesNo ? MessageAnswer::Yes : MessageAnswer::Ok;
    const MessageAnswer answer = answers.front();
    answers.pop_front();
    return answer;
}

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

void FakeHost::endProgram(int status)
{
    for (const auto& m : messages)
        std::fprintf(stderr, "MESSAGEBOX[%s|%d] %s\n", m.title.c_str(), static_cast<int>(m.icon), m.text.c_str());
    for (const auto& name : modals)
        std::fprintf(stderr, "MODAL %s\n", name.c_str());
    std::fprintf(stderr, "ENDED %d\n", status);
    std::fflush(nullptr);
    std::_Exit(status);
}

std::optional<std::string> FakeHost::knownFolder(std::int32_t folderId)
{
    if (folderId != 35)
        return std::nullopt;
    return appData;
}

bool FakeHost::startSystemInformation()
{
    if (!systemInformationAvailable)
        return false;
    ++systemInformationStarts;
    return true;
}

std::vector<std::string> FakeHost::messageTexts() const
{
    std::vector<std::string> texts;
    for (const auto& m : messages)
        texts.push_back(m.text);
    return texts;
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

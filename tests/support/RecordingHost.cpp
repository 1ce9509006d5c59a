#include "support/RecordingHost.h"

#include <cstdio>
#include <cstdlib>

namespace kesta::test {

MessageAnswer RecordingHost::messageBox(const MessageBoxRequest& request)
{
    messages.push_back(request);
    if (answers.empty())
        return request.buttons == MessageButtons::YesNo ? MessageAnswer::Yes : MessageAnswer::Ok;
    const MessageAnswer answer = answers.front();
    answers.pop_front();
    return answer;
}

void RecordingHost::execModal(QDialog&)
{
    std::fprintf(stderr, "a core test showed a dialog\n");
    std::abort();
}

void RecordingHost::endProgram(int status)
{
    for (const auto& m : messages)
        std::fprintf(stderr, "MESSAGEBOX[%s|%d] %s\n", m.title.c_str(), static_cast<int>(m.icon), m.text.c_str());
    for (const auto& name : modals)
        std::fprintf(stderr, "MODAL %s\n", name.c_str());
    std::fprintf(stderr, "ENDED %d\n", status);
    std::fflush(nullptr);
    std::_Exit(status);
}

std::optional<std::string> RecordingHost::knownFolder(std::int32_t folderId)
{
    if (folderId != 35)
        return std::nullopt;
    return appData;
}

bool RecordingHost::startSystemInformation()
{
    if (!systemInformationAvailable)
        return false;
    ++systemInformationStarts;
    return true;
}

std::vector<std::string> RecordingHost::messageTexts() const
{
    std::vector<std::string> texts;
    for (const auto& m : messages)
        texts.push_back(m.text);
    return texts;
}

} // namespace kesta::test

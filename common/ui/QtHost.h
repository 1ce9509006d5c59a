#pragma once

#include "common/core/Host.h"

#include <memory>

namespace kesta {

// The host of the real program: real message boxes, real modal dialogs, the
// system clock, the default printer and the platform's data folder.
class QtHost final : public Host {
public:
    QtHost();
    ~QtHost() override;

    MessageAnswer messageBox(const MessageBoxRequest& request) override;
    void execModal(QDialog& dialog) override;
    [[noreturn]] void endProgram(int status) override;
    std::chrono::system_clock::time_point now() override;
    std::uint64_t randomSeed() override;
    void beep() override;
    Printer* printer() override;
    std::optional<std::string> knownFolder(std::int32_t folderId) override;
    bool startSystemInformation() override;

private:
    std::uint64_t seedCounter_ = 0;
    std::unique_ptr<Printer> printer_;
};

} // namespace kesta

#pragma once

#include "common/core/Host.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace kesta::test {

// A printer that keeps what it was given.
class FakePrinter : public Printer {
public:
    void print(const std::string& text) override { texts.push_back(text); }
    int pageNumber() const override { return 1; }
    void endDoc() override { ++documents; }
    std::vector<std::string> texts;
    int documents = 0;
};

// A host for the core: every message box is recorded and answered OK (Yes), the
// clock stands still, and ending the program writes what was shown to stderr
// and exits, so a death test can check both.
class RecordingHost : public Host {
public:
    MessageAnswer messageBox(const MessageBoxRequest& request) override
    {
        messages.push_back(request);
        return request.buttons == MessageButtons::YesNo ? MessageAnswer::Yes : MessageAnswer::Ok;
    }
    void execModal(QDialog&) override { std::abort(); } // the core shows no dialog
    [[noreturn]] void endProgram(int status) override
    {
        for (const auto& m : messages)
            std::fprintf(stderr, "MESSAGEBOX[%s|%d] %s\n", m.title.c_str(), static_cast<int>(m.icon), m.text.c_str());
        std::fprintf(stderr, "ENDED %d\n", status);
        std::fflush(nullptr);
        std::_Exit(status);
    }
    std::chrono::system_clock::time_point now() override { return clock; }
    std::uint64_t randomSeed() override { return ++seed; }
    void beep() override { ++beeps; }
    Printer* printer() override { return printerInstalled ? &fakePrinter : nullptr; }
    std::optional<std::string> knownFolder(std::int32_t folderId) override
    {
        return folderId == 35 ? appData : std::nullopt;
    }
    bool startSystemInformation() override { return false; }

    std::vector<MessageBoxRequest> messages; // every message box shown
    std::chrono::system_clock::time_point clock = std::chrono::system_clock::from_time_t(1795000000);
    std::uint64_t seed = 0;
    int beeps = 0;
    bool printerInstalled = true;
    FakePrinter fakePrinter;
    std::optional<std::string> appData; // what the known-folder lookup answers
};

} // namespace kesta::test

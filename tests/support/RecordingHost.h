#pragma once

#include "common/core/Host.h"

#include <deque>
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

// A host for the core: message boxes are answered from a script and
// recorded, the clock stands still until moved, and ending the program
// writes what was shown to stderr and exits, so a death test can check both.
class RecordingHost : public Host {
public:
    MessageAnswer messageBox(const MessageBoxRequest& request) override;
    void execModal(QDialog& dialog) override;
    [[noreturn]] void endProgram(int status) override;
    std::chrono::system_clock::time_point now() override { return clock; }
    std::uint64_t randomSeed() override { return ++seed; }
    void beep() override { ++beeps; }
    Printer* printer() override { return printerInstalled ? &fakePrinter : nullptr; }
    std::optional<std::string> knownFolder(std::int32_t folderId) override;
    bool startSystemInformation() override;

    // Answers for the next message boxes, in order; Ok (Yes) when none is left.
    std::deque<MessageAnswer> answers;

    std::vector<MessageBoxRequest> messages; // every message box shown
    std::vector<std::string> modals;         // objectName of every modal dialog shown
    std::chrono::system_clock::time_point clock = std::chrono::system_clock::from_time_t(1795000000);
    std::uint64_t seed = 0;
    int beeps = 0;
    bool printerInstalled = true;
    FakePrinter fakePrinter;
    std::optional<std::string> appData; // what the known-folder lookup answers
    bool systemInformationAvailable = false;
    int systemInformationStarts = 0;

    // The texts of the message boxes shown so far.
    std::vector<std::string> messageTexts() const;
};

} // namespace kesta::test

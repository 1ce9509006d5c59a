#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

class QDialog; // only named here; the core never shows a dialog itself

namespace kesta {

// How a message box looks and which buttons it offers.
enum class MessageIcon { None, Critical, Question, Exclamation, Information };
enum class MessageButtons { Ok, OkCancel, YesNo };
enum class MessageAnswer { Ok, Cancel, Yes, No };

struct MessageBoxRequest {
    std::string title;
    std::string text;
    MessageIcon icon = MessageIcon::None;
    MessageButtons buttons = MessageButtons::Ok;
};

// A text printer: the three operations the program asks of the default printer.
class Printer {
public:
    virtual ~Printer() = default;
    virtual void print(const std::string& text) = 0;  // one text, line breaks allowed
    virtual int pageNumber() const = 0;                // the numeric property read per question
    virtual void endDoc() = 0;                         // send the document
    virtual void killDoc() {}                          // abandon the document printed so far
};

// Everything outside the program's own logic that tests must control or
// observe: message boxes, modal dialogs, ending the program, the clock, the
// random seed, the beep, the printer and the known-folder lookup. The
// production implementation uses the real thing; tests answer in advance and
// record what was shown.
class Host {
public:
    virtual ~Host() = default;

    // Shows a message box and waits for the user's answer.
    virtual MessageAnswer messageBox(const MessageBoxRequest& request) = 0;

    // Shows a dialog modally and returns when it has closed.
    virtual void execModal(QDialog& dialog) = 0;

    // Ends the process at once with the given status; no further code runs.
    [[noreturn]] virtual void endProgram(int status) = 0;

    // The local date and time.
    virtual std::chrono::system_clock::time_point now() = 0;

    // A seed for the random generator that differs from every earlier one,
    // even for two calls within the same clock tick.
    virtual std::uint64_t randomSeed() = 0;

    // The platform's default alert sound.
    virtual void beep() = 0;

    // The default printer, or nothing when none is installed.
    virtual Printer* printer() = 0;

    // The known folder of the given number (35: the all-users application
    // data folder), without a trailing separator; nothing when the lookup fails.
    virtual std::optional<std::string> knownFolder(std::int32_t folderId) = 0;

    // Starts a system-information tool; false when none can be found.
    virtual bool startSystemInformation() = 0;
};

} // namespace kesta

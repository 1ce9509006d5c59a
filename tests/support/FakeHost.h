#pragma once

#include "support/RecordingHost.h"

#include <functional>

namespace kesta::test {

// The host of the window tests: a recording host whose modal dialogs are
// handed to scripted handlers instead of waiting for a user.
class FakeHost : public RecordingHost {
public:
    using ModalScript = std::function<void(QDialog&)>;

    void execModal(QDialog& dialog) override;

    // Handlers for the next modal dialogs, in order; a dialog without one is rejected.
    std::deque<ModalScript> modalScripts;
};

// Clicks the named button of a dialog (by objectName).
void clickButton(QDialog& dialog, const char* objectName);

// A modal script that clicks the named button.
FakeHost::ModalScript click(const char* objectName);

} // namespace kesta::test

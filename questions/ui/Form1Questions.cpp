// Loading a question file into the main window.
#include "app/ui/Form1.h"

#include "app/ui/Trap.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"

#include <QProgressBar>

namespace kesta {

namespace {

// Shows a load on the main window's progress bar, status panel and page.
class FormLoadObserver final : public LoadObserver {
public:
    explicit FormLoadObserver(Form1& form) : form_(form) {}

    void progressShown(bool shown) override { form_.ProgressBar1->setVisible(shown); }
    void progress(int value) override { form_.ProgressBar1->setValue(value); }
    void status(const std::string& text) override { form_.setPanelText(3, text); }
    void introduction(const std::string& page) override { form_.showPage(page); }

private:
    Form1& form_;
};

} // namespace

std::string Form1::DecryptString(const std::string& sEncryptedText, const std::string& sEncryptionKey)
{
    std::string text;
    trap("DecryptString()", [&] { text = kesta::DecryptString(sEncryptedText, sEncryptionKey); });
    return text;
}

void Form1::ReadFile(const std::string& filename)
{
    trap("ReadFile()", [&] {
        FormLoadObserver observer(*this);
        // A line that cannot be deciphered is reported under this window's
        // DecryptString, as when that routine deciphers it.
        LineDecoder decoder(QuestionPassPhrase);
        const LineDecipher decipher = [&](std::string_view line, std::string& text) {
            trap("DecryptString()", [&] { decoder.decode(line, text); });
        };
        const LoadResult result = LoadQuestionFile(filename, state_.questions, observer, decipher);
        if (result.corrupt())
            app_.host.messageBox({AppTitle, CorruptText, MessageIcon::None, MessageButtons::Ok});
    });
}

} // namespace kesta

// One enciphered line: any bytes yield text or run-time error 9 or 13 (the
// fatal cases), and the processor's AES path gives what the round tables
// give. The same bytes taken as text must come back from EncryptString ->
// DecryptString as their UTF-16 units.
#include "FuzzTarget.h"
#include "questions/core/Cipher.h"

using namespace kesta;

void fuzz::target(std::string_view input)
{
    std::string text[2]; // by engine: the round tables, then the processor's
    int error[2];
    for (const bool hardware : { false, true }) {
        CRijndael::allowHardware(hardware);
        error[hardware] = raised([&] { text[hardware] = DecryptString(input, QuestionPassPhrase); },
            { err::SubscriptOutOfRange, err::TypeMismatch });
    }
    expect(text[0] == text[1] && error[0] == error[1], "the two cipher engines disagree", input);
    const std::string line = EncryptString(input, QuestionPassPhrase);
    const std::string back = line.empty() ? "" : DecryptString(line, QuestionPassPhrase);
    expect(EncryptString(back, QuestionPassPhrase) == line, "a text does not come back as its code units", back);
}

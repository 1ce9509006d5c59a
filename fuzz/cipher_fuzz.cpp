// One enciphered line: any bytes yield text or run-time error 9 or 13 (the
// fatal cases), and the processor's AES path gives what the round tables
// give. An input starting with 0x01 is instead text that must come back
// from EncryptString -> DecryptString as its UTF-16 units.
#include "FuzzTarget.h"
#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"

#include <optional>
#include <string>

using namespace kesta;

namespace {
std::string decode(std::string_view line, bool hardware)
{
    CRijndael::allowHardware(hardware);
    try {
        return "text " + DecryptString(line, QuestionPassPhrase);
    } catch (const RuntimeError& e) {
        fuzz::expect(e.number() == err::SubscriptOutOfRange || e.number() == err::TypeMismatch, "an unexpected error");
        return "error " + std::to_string(e.number());
    }
}
} // namespace

void fuzz::target(std::string_view input)
{
    if (!input.empty() && input.front() == '\x01') {
        const std::string line = EncryptString(input.substr(1), QuestionPassPhrase);
        const std::string back = line.empty() ? "" : DecryptString(line, QuestionPassPhrase);
        expect(EncryptString(back, QuestionPassPhrase) == line, "a text does not come back as its code units", back);
        return;
    }
    expect(decode(input, true) == decode(input, false), "the two cipher engines disagree", input);
}

#include "questions/core/Cipher.h"

#include "questions/core/QuestionLoader.h"
#include "support/BankWriter.h"
#include "support/Checks.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <limits>
#include <map>
#include <memory>

namespace kesta {
namespace {

using Bytes = CRijndael::Bytes;
using test::errorOf;

Bytes fromHex(const std::string& hex)
{
    Bytes out;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        out.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

CRijndael keyed(const Bytes& key, int nb = 8)
{
    CRijndael cipher;
    cipher.gentables();
    cipher.gkey(nb, static_cast<std::int32_t>(key.size() / 4), key);
    return cipher;
}

// The NESSIE vectors: "Set s, vector# n:" opens one, "name=HEX" holds a field
// whose second half is on the next line.
std::vector<std::map<std::string, std::string>> nessieVectors()
{
    std::ifstream in(std::string(KESTA_TESTDATA_DIR) + "/rijndael-256-256-nessie.txt");
    std::vector<std::map<std::string, std::string>> vectors;
    std::string line, more;
    while (std::getline(in >> std::ws, line)) {
        const auto eq = line.find('=');
        if (line.rfind("Set ", 0) == 0)
            vectors.push_back({{"name", line}});
        else if (eq != std::string::npos && eq > 0 && !vectors.empty() && std::getline(in >> std::ws, more))
            vectors.back()[line.substr(0, eq)] = line.substr(eq + 1) + more;
    }
    return vectors;
}

// Every vector on the default engine, every 16th on the round tables alone; the iterated values on a few.
TEST(RijndaelTest, AgreesWithThePublishedVectorsOnBothEngines)
{
    auto vectors = nessieVectors();
    ASSERT_EQ(vectors.size(), 1540u);
    for (const bool hardware : {true, false}) {
        CRijndael::allowHardware(hardware);
        for (std::size_t i = 0; i < vectors.size(); i += hardware ? 1 : 16) {
            auto& v = vectors[i];
            SCOPED_TRACE(v["name"]);
            const CRijndael cipher = keyed(fromHex(v["key"]));
            Bytes block = fromHex(v["plain"]);
            cipher.Encrypt(block);
            EXPECT_EQ(block, fromHex(v["cipher"]));
            cipher.Decrypt(block);
            EXPECT_EQ(block, fromHex(v["plain"]));
            for (int k = 1; i % 192 == 0 && v.contains("Iterated 1000 times") && k <= 1000; ++k) {
                cipher.Encrypt(block);
                if (k == 100 || k == 1000) {
                    EXPECT_EQ(block, fromHex(v["Iterated " + std::to_string(k) + " times"]));
                }
            }
        }
    }
    CRijndael::allowHardware(true);
}

// Sizes other than the three, short keys and blocks, and a cipher without a key raise.
TEST(RijndaelTest, MisuseRaises)
{
    Bytes block(32), shortBlock(31);
    CRijndael unkeyed;
    unkeyed.gentables();
    EXPECT_EQ(std::vector<int>({errorOf([&] { CRijndael().gkey(5, 8, block); }), errorOf([&] { CRijndael().gkey(8, 7, block); }),
                                errorOf([&] { CRijndael().gkey(8, 8, shortBlock); }), errorOf([&] { CRijndael().Decrypt(block); }),
                                errorOf([&] { unkeyed.Encrypt(block); }), errorOf([&] { keyed(block).Encrypt(shortBlock); }),
                                errorOf([&] { keyed(block).Decrypt(shortBlock); }),
                                errorOf([&] { CRijndael fresh; fresh.gkey(8, 8, block); fresh.Encrypt(block); })}),
              std::vector<int>({5, 5, 9, 5, 5, 9, 9, 0}));
}

// --- the message framing: a 4-byte length, the message, zero padding to whole blocks ---

const Bytes password = fromHex(std::string(80, '7') + "01"); // 41 bytes: cut at 32

// A 4-byte header, `fill` up to byte `end` and zeros after it, enciphered block by block under the framing key.
Bytes framed(std::int32_t header, std::size_t size, std::uint8_t fill, std::size_t end = SIZE_MAX)
{
    Bytes blocks(size, 0);
    std::fill(blocks.begin() + 4, blocks.begin() + static_cast<std::ptrdiff_t>(std::min(end, size)), fill);
    for (std::size_t i = 0; i < 4; ++i)
        blocks[i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(header) >> (8 * i));
    const CRijndael cipher = keyed(Bytes(password.begin(), password.begin() + 32));
    for (std::size_t p = 0; p < blocks.size(); p += 32)
        cipher.Encrypt(std::span(blocks).subspan(p, 32));
    return blocks;
}

std::string decrypt(const Bytes& cipher, const Bytes& pass = password)
{
    return test::outcome([&] {
        const Bytes message = CRijndael().DecryptData(cipher, pass);
        return std::string(message.begin(), message.end());
    });
}

TEST(RijndaelTest, FramingWritesHeaderMessageAndPaddingAndTheHeaderAndKeyDecideWhatComesBack)
{
    // Both engines frame alike, whatever number of blocks a message takes; partial blocks give nothing.
    for (const bool hardware : { true, false }) {
        CRijndael::allowHardware(hardware);
        for (const std::size_t length : { 1u, 27u, 28u, 29u, 60u, 200u }) {
            const Bytes sealed = CRijndael().EncryptData(Bytes(length, 0x5A), password);
            Bytes longer = sealed;
            longer.push_back(0);
            EXPECT_EQ(sealed, framed(static_cast<std::int32_t>(length), (length + 4 + 31) / 32 * 32, 0x5A, 4 + length));
            EXPECT_EQ(decrypt(sealed) + "|" + decrypt(Bytes(sealed.begin() + 1, sealed.end())) + "|" + decrypt(longer),
                std::string(length, 'Z') + "||");
        }
    }
    CRijndael::allowHardware(true);
    // A header up to the data's end gives the bytes after it, padding dropped whatever it holds; equal
    // blocks decipher alike (no chaining), so a long header runs on into the second block's header.
    Bytes twice = framed(40, 32, 0x10);
    const Bytes second = twice;
    twice.insert(twice.end(), second.begin(), second.end());
    const std::pair<Bytes, std::string> cases[] = {
        {framed(60, 64, 0x41), std::string(60, 'A')}, {framed(3, 32, 0xEE), "\xEE\xEE\xEE"},
        {twice, std::string(28, '\x10') + "(" + std::string(3, '\0') + std::string(8, '\x10')},
        {framed(61, 64, 0x41), ""}, {framed(std::numeric_limits<std::int32_t>::max(), 32, 0), ""},
        {framed(0, 32, 0), "error 9"}, {framed(-1, 32, 0), "error 9"},
        {framed(std::numeric_limits<std::int32_t>::min(), 32, 0), "error 9"}};
    for (const auto& [cipher, expected] : cases)
        EXPECT_EQ(decrypt(cipher), expected);

    // The key is cut at 32 bytes or zero-padded; no message or no password gives nothing.
    const Bytes message = fromHex("6d657373616765");
    Bytes otherTail = password, padded = fromHex("6162");
    otherTail[40] ^= 0xFF;
    padded.resize(32, 0);
    const Bytes valid = CRijndael().EncryptData(message, password);
    EXPECT_EQ(CRijndael().EncryptData(message, otherTail), valid);
    EXPECT_EQ(CRijndael().EncryptData(message, fromHex("6162")), CRijndael().EncryptData(message, padded));
    EXPECT_EQ(decrypt(valid, otherTail) + "|" + decrypt(valid, {}) + "|" + decrypt({}), "message||");
    EXPECT_TRUE(CRijndael().EncryptData(Bytes{}, password).empty() && CRijndael().EncryptData(message, Bytes{}).empty());
}

// --- the program's lines: text as UTF-16LE units, framed, enciphered and written in hex ---

std::string deciphered(const std::string& line, std::string_view key = QuestionPassPhrase)
{
    return test::outcome([&] { return DecryptString(line, key); });
}

// A line of any framed bytes, enciphered under the pass phrase's UTF-16LE bytes as the program's lines are.
std::string lineOf(const Bytes& message)
{
    Bytes key;
    for (const char c : QuestionPassPhrase)
        key.insert(key.end(), {static_cast<std::uint8_t>(c), 0});
    std::string hex;
    for (const std::uint8_t b : CRijndael().EncryptData(message, key))
        hex += {"0123456789ABCDEF"[b >> 4], "0123456789ABCDEF"[b & 15]};
    return hex;
}

// Text goes in as UTF-16LE code units and comes back the same; malformed
// UTF-8 becomes U+FFFD, an unpaired surrogate stays itself.
TEST(CipherTest, TextRoundTripsThroughItsUtf16Units)
{
    const std::string r = "\xEF\xBF\xBD"; // U+FFFD, the replacement character
    // "=": the text comes back as it went in. "\x41" is an "A" after a byte that may open a character.
    const std::pair<std::string, std::string> cases[] = {
        { "a", "=" }, { std::string(14, 'x'), "=" }, { std::string(15, 'x'), "=" }, { std::string(3000, 'q'), "=" },
        { "tab\there, CR LF\r\n \"q\"", "=" }, { "\xF0\x9F\x98\x80!", "=" }, // a surrogate pair
        { "ab\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD cd", "=" }, // é € 中 after ASCII
        { "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "=" }, // each length's bounds
        { "\xED\xA0\x80\x41 \xED\xB0\x80 \xED\xA0\x80", "=" }, // unpaired surrogates
        { "\xF5\x80\x80\x80", r + r + r + r }, // no lead byte past F4
        { "\xC3", r }, { "\xE2\x82", r + r }, { "\xF0\x9F\x98", r + r + r }, { "\xE2\x41\x80", r + "A" + r },
        { "\xF0\x9F\x98\x41", r + r + r + "A" }, { "\xF0\x9F\x41\x80", r + r + "A" + r },
        { "\xC3\xA9x\xE2\x82\x41", "\xC3\xA9x" + r + r + "A" }, // what precedes a lead byte is no part of it
        { "\xC3\xA9\xF0\x9F\x98\x41", "\xC3\xA9" + r + r + r + "A" }, // ... nor of a longer one
        { "\xC1\xBF", r + r }, { "\xE0\x9F\xBF", r }, // overlong forms
        { "\xF0\x8F\xBF\xBF", r }, { "\xF4\x90\x80\x80", r }, // below U+10000, past U+10FFFF
    };
    for (const auto& [text, back] : cases)
        EXPECT_EQ(deciphered(EncryptString(text, QuestionPassPhrase)), back == "=" ? text : back) << text;
    // "Hé" is 48 00 E9 00 in UTF-16LE, framed and written in upper-case hex.
    EXPECT_EQ(EncryptString("H\xC3\xA9", QuestionPassPhrase), lineOf({0x48, 0x00, 0xE9, 0x00}));
    EXPECT_EQ(EncryptString("", QuestionPassPhrase), "");
}

TEST(CipherTest, LinesDecipherToTheirTextNothingOrAFatalError)
{
    const std::string block = EncryptString("abcdefghijklmn", QuestionPassPhrase), valid = EncryptString("v", QuestionPassPhrase);
    std::string lower = block;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    const std::pair<std::string, std::string> cases[] = {
        {block, "abcdefghijklmn"}, {lower, "abcdefghijklmn"},
        {block.substr(0, 62), ""}, {block + "00", ""},          // 31 and 33 bytes: no whole block
        {lineOf({'A', 0, 'B'}), "A"},                          // a lone last byte is no character
        {"", "error 9"}, {"A", "error 9"}, {"G", "error 9"},    // fewer than two digits
        {valid + "0", "error 9"}, {valid + "G", "error 13"},    // the lone last digit is converted first
        {"ZZ" + valid, "error 13"}, {valid.substr(0, 9) + ":" + valid.substr(10), "error 13"},
        {valid.substr(0, 10) + "@" + valid.substr(11), "error 13"}, {valid.substr(0, 62) + "-1", "error 13"},
        {valid.substr(0, 11) + "g" + valid.substr(12), "error 13"}, {valid.substr(0, 12) + "`" + valid.substr(13), "error 13"},
        {valid.substr(0, 13) + "/" + valid.substr(14), "error 13"},
        {"09AFaf", ""}, {"00", ""}, {"0/", "error 13"}, {"0:", "error 13"}, {"0@", "error 13"}, {"0G", "error 13"},
        {"0`", "error 13"}, {"0g", "error 13"}, // the digits' bounds on lines too short for sixteen at a time
    };
    for (const auto& [line, expected] : cases)
        EXPECT_EQ(deciphered(line), expected) << line;

    // Only the first 16 characters of a pass phrase reach the cipher; none leaves no key.
    const std::string secret = EncryptString("secret", QuestionPassPhrase);
    EXPECT_EQ(deciphered(secret, "T#4kqw&mz%7bXupeZZZZ"), "secret");
    EXPECT_NE(deciphered(secret, "T#4kqw&mz%7bXupZ"), "secret");
    EXPECT_EQ(deciphered(secret, ""), "");
}

// --- the loader: a question file into the question records ---

using Lines = std::vector<std::string>;
using test::bankText;

// Records what a load shows: the first progress value, the last, and the rest in order.
struct RecordingObserver final : LoadObserver {
    void progressShown(bool shown) override { events += shown ? "shown " : "hidden "; }
    void progress(int value) override
    {
        if (values.empty())
            events += "progress " + std::to_string(value) + " ";
        values.push_back(value);
    }
    void status(const std::string& text) override { events += "[" + text + "] "; }
    void introduction(const std::string& text) override { events += "page " + text + " "; }
    std::string events;
    std::vector<int> values;
};

Lines withHeader(Lines body)
{
    body.insert(body.begin(), {"Title", "I1", "I2", "I3"});
    return body;
}

class QuestionLoaderTest : public ::testing::Test {
protected:
    // Loads the text into a list whose record 3 holds a question from before,
    // and describes the whole outcome: the count, the warnings, the title, the
    // records, the events, or the run-time error raised.
    // The file is also read from disk a few bytes at a time, which must give the same.
    std::string load(const std::string& content)
    {
        test::writeFile(dir / "bank.kqb", content);
        const std::string whole = load(content, 0);
        for (const std::size_t block : {1, 5})
            EXPECT_EQ(load(content, block), whole) << block;
        return whole;
    }
    std::string load(const std::string& content, std::size_t block)
    {
        list = std::make_unique<QuestionList>();
        list->Questions[3].Question = "earlier";
        observer = RecordingObserver();
        return test::outcome([&] {
            const LineDecipher decipher = decipherWith(QuestionPassPhrase);
            const LoadResult r = block == 0 ? LoadQuestionText(content, *list, observer, decipher)
                                            : LoadQuestionFile(dir / "bank.kqb", *list, observer, decipher, block);
            std::string out = std::to_string(list->QuestionCount) + (r.tooManyLines ? " lines" : "") +
                              (r.tooManyQuestions ? " questions" : "") + (r.tooLongAt ? " long@" + std::to_string(r.tooLongAt) : "") +
                              (r.corrupt() ? " corrupt" : "") + " bad";
            for (const int k : r.badAnswers)
                out += " " + std::to_string(k);
            out += " title " + r.title.value_or("none") + "\n";
            for (int k = 0; k <= std::min<int>(list->QuestionCount + 1, 3); ++k) {
                const QuestionRecord& q = list->Questions[k];
                out += q.Intro + "|" + q.Question + "|" + q.Explanation + "|" + q.Answer + "\n";
            }
            return out + observer.events;
        });
    }
    std::string load(const Lines& lines, const Lines& ends = {"\r\n"}, bool endLast = true)
    {
        return load(bankText(lines, ends, endLast));
    }

    test::TempDir dir;
    std::unique_ptr<QuestionList> list = std::make_unique<QuestionList>();
    RecordingObserver observer;
};

const std::string intro = "I1\r\n\r\nI2\r\n\r\nI3";
const std::string shown = "progress 1 shown [" + std::string(LoadingText) + "] page " + intro + " [Ready] hidden ";

TEST_F(QuestionLoaderTest, ReadsHeaderAndQuestionBlocksIntoRecords)
{
    const std::string longest(MaxFieldBytes, 'r'), cut(MaxFieldBytes - 1, 'q');
    const std::pair<Lines, std::string> cases[] = {
        {withHeader({"plain before a question", "#First", "a) one", "#Expl", "more", "#  b ", "after the answer",
                     "#Second", "#Why", "#c"}),
         "2 bad title Title\n|||\n" + intro + "|First\r\na) one|Expl\r\n\r\nmore|b\n|Second|Why|c\n|earlier||\n"},
        // A bare break explanation names the untrimmed answer, but not in the last question.
        {withHeader({"#Q1", "#<br><br>", "#b ", "#Q2", "#<br><br>", "#c"}),
         "2 bad title Title\n|||\n" + intro + "|Q1|The correct answer is b .<br><br>|b\n|Q2|<br><br>|c\n|earlier||\n"},
        // A file ending inside a block gives its last question what was read before.
        {withHeader({"#Q1", "#E1", "#a", "#Q2", "more"}),
         "2 bad title Title\n|||\n" + intro + "|Q1|E1|a\n|Q2\r\nmore|E1|a\n|earlier||\n"},
        // Empty lines are no header lines; marked header lines count; the title is only the first line.
        {{"", "Title", "#I1", "", "I2", "I3", "#Q", "", "#E", "#a"},
         "1 bad title none\n|||\n" + intro + "|Q|E|a\n|||\n"},
        {{"#Title", "I1", "I2", "I3", "plain body line"}, "0 bad title none\n|||\n" + intro + "|||\n"},
        {{}, "0 bad title none\n|||\n|||\n"},
        {withHeader({"#Q", "#E", "#ab", "#Q2", "#E", "#   ", "#Q3", "#E", "=#" + std::string(62, '0'), "#Q4", "#E",
                     "#\xF0\x9F\x98\x80", "#Q5", "#E", "#\xC3\xA9", "#Q6", "#E", "#a\xF0\x9F\x98\x80"}),
         "6 corrupt bad 1 2 3 4 6 title Title\n|||\n" + intro + "|Q|E|ab\n|Q2|E|\n|Q3|E|\n"},
        {withHeader({"#Q", "=#XYZ"}), "error 13"},
        // A text of MaxFieldBytes is whole, a longer one is cut where a character starts; a line too long for a
        // text is not deciphered (and one too long for the buffer keeps the lone CR that ends it).
        {withHeader({"#" + longest, "#E", "#a"}), "1 bad title Title\n|||\n" + intro + "|" + longest + "|E|a\n|||\n"},
        {withHeader({"#" + cut + "\xC3\xA9", "=#" + std::string(262142, 'A') + "\r#" + EncryptString("a", QuestionPassPhrase)}),
         "1 long@5 corrupt bad title Title\n|||\n" + intro + "|" + cut + "||a\n|||\n"},
    };
    for (const auto& [lines, expected] : cases) {
        SCOPED_TRACE(lines.size());
        std::string got = load(lines);
        EXPECT_EQ(got.substr(0, got.find("progress 1")), expected);
    }
    load(withHeader({"#Q", "#E", "#a"})); // the progress counts one step a line and one more, up to 100
    EXPECT_EQ(observer.events + std::to_string(observer.values.back()) + " " + std::to_string(observer.values.size()),
              shown + "9 9");
    // CR LF, CR and LF all end lines, mixed too; a tab widens only on the page.
    const std::string expected = "1 bad title Title\n|||\nI\tone\r\n\r\nI2\r\n\r\nI3|Q\r\na) x|E|a\n|||\n";
    for (const Lines& ends : {Lines{"\r\n"}, Lines{"\r"}, Lines{"\n"}, Lines{"\r\n", "\n", "\r", "\n\r\n"}})
        EXPECT_EQ(load({"Title", "I\tone", "I2", "I3", "#Q", "a) x", "", "#E", "#a"}, ends, ends.size() == 1),
                  expected + "progress 1 shown [" + LoadingText + "] page I   one\r\n\r\nI2\r\n\r\nI3 [Ready] hidden ");
}

TEST_F(QuestionLoaderTest, AThousandQuestionsLoadSilentlyAndMoreRunIntoTheLast)
{
    Lines lines = withHeader({});
    for (int k = 1; k <= 1001; ++k)
        lines.insert(lines.end(), {"#Q" + std::to_string(k), "a) " + std::to_string(k), "#E" + std::to_string(k), "#a"});
    lines.back() = "#b";
    const std::string more = load(lines), thousandth = list->Questions[1000].Question + "|" +
                                                        list->Questions[1000].Explanation + list->Questions[1000].Answer;
    lines.resize(lines.size() - 4);
    const std::string exact = load(lines);
    EXPECT_EQ(more.substr(0, more.find('\n')) + "|" + thousandth + "|" + exact.substr(0, exact.find('\n')),
              "1000 questions corrupt bad title Title|Q1000\r\na) 1000\r\na) 1001|E1001b|1000 bad title Title");
}

TEST_F(QuestionLoaderTest, OfTenThousandLinesOrMoreOnlyTheLastSurvivesPastLine9999)
{
    // After line 9999, the explanation: nothing, the last line, the last of four, an empty last line.
    const std::pair<Lines, std::string> cases[] = {
        {{}, "1 corrupt bad 1"}, {{"#a"}, "1 lines corrupt bad"}, {{"#lost", "lost too", "", "#z"}, "1 lines corrupt bad"},
        {{"#lost", ""}, "1 lines corrupt bad 1"}};
    for (const auto& [tail, expected] : cases) {
        Lines lines = withHeader({"#Q"});
        lines.resize(9998);
        lines.push_back("#E");
        lines.insert(lines.end(), tail.begin(), tail.end());
        const std::string got = load(lines);
        EXPECT_EQ(got.substr(0, got.find(" title")) + " " + list->Questions[1].Answer + std::to_string(observer.values.back()),
                  expected + " " + (tail.empty() || tail.back().empty() ? "" : tail.back().substr(1)) + "100");
    }
}

} // namespace
} // namespace kesta

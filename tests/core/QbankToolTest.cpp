#include "app/core/Catalogue.h"

#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/Interchange.h"
#include "questions/core/QuestionLoader.h"
#include "support/BankWriter.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>

namespace kesta {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::writeFile;

const std::string Head = "Title: T\nIntro: a\nIntro: b\nIntro: c\n";
const std::string Bom = "\xEF\xBB\xBF";

// The dump of the bank a source builds ("=" when that is the source itself), or "LINE: why" build refuses it.
std::string built(const std::string& source)
{
    try {
        const std::string dump = DumpBank(BuildBank(source, QuestionPassPhrase), QuestionPassPhrase);
        return dump == source ? "=" : dump;
    } catch (const BankSourceError& error) {
        return std::to_string(error.line()) + ": " + error.what();
    }
}

TEST(BankSourceTest, BuildAndDumpAreInversesAndBuildRefusesWhatWouldNotReadBack)
{
    const auto enc = [](const std::string& text) { return EncryptString(text, QuestionPassPhrase); };
    const std::pair<std::string, std::string> cases[] = {
        { "Title: KESTA Exam Demo 9\nIntro: Welcome, \"candidate\".\n\nIntro: \tTabbed\nIntro: \xE2\x80\x94 dash\n"
          "Question: Which?\na) one\n\\Answer: looks like a keyword\n\\answer: in any case\n\\\\starts with a "
          "backslash\n\\#: looks marked\n\\Raw: looks raw\n\\"
                + Bom
                + "hidden\nExplanation: Because.\n  indented  \n"
                  "Answer: b \nafter the answer\n\nQuestion: \xE4\xB8\xAD?\nExplanation: <br><br>\nAnswer: d\n",
            "=" },
        { "Title: T\nRaw: " + std::string(62, '0') + "\n", "=" },
        { Bom + "Title: T\r\nIntro: a", "Title: T\nIntro: a\n" }, // what editors add is dropped
        { "", "1: the source is empty; start it with 'Title: ' and the bank's title" },
        { "Intro: a\n",
            "1: the first line is the bank's title; write 'Title: ' and a title holding \"KESTA Exam "
            "Demo\" or \"KESTA Quiz Demo\"" },
        { "Title: T\nTitle: again\n",
            "2: only the first line is the title; write this line as 'Intro: ...' or as a plain line" },
        { "Title: T\n" + Bom + "Intro: a\n",
            "2: starts with a byte-order mark (an invisible character some editors write, U+FEFF); delete "
            "it" },
        { "Title: T\r\r\n", "1: holds a carriage return (CR) inside the line; delete it" },
        { Head + "\\needless escape\n", "5: needs no '\\' here; write 'needless escape'" },
        { "Title: T\nRaw: ZZZZ\n",
            "2: this 'Raw:' line cannot be deciphered: it holds a character that is not a hexadecimal digit" },
        { "Title: T\nRaw: #ABC\n",
            "2: this 'Raw:' line cannot be deciphered: it has an odd number of hexadecimal digits" },
        { "Title: T\nRaw: A\n",
            "2: this 'Raw:' line cannot be deciphered: it has an odd number of hexadecimal digits" },
        { "Title: T\nbad \xFF utf-8\n", "2: the text is not valid UTF-8; save the source as UTF-8" },
        { "Title: T\nIntro: a\nQuestion: q\n",
            "3: the program reads the three lines after the title as the introduction, and this as one of "
            "them; write three 'Intro:' lines before the first question" },
        { Head + "Intro: d\n", "5: the program reads this line as a plain line; write 'd'" },
        { Head + "#: x\n",
            "5: the program reads this line as Question: line (marked lines take turns: Question, "
            "Explanation, Answer); write 'Question: x'" },
        { Head + "Question: \n", "5: 'Question:' has no text; write the question after it" },
        { Head + "Explanation: e\n",
            "5: 'Explanation:' stands where a question begins; write 'Question: ...' before it" },
        { Head + "Question: q\nAnswer: a\n",
            "5: this question has no 'Explanation:' line; write one before its 'Answer:'" },
        { Head + "Question: q\nExplanation: e\nExplanation: f\n",
            "7: the question above has its explanation; write a further paragraph as a plain line, without "
            "'Explanation:'" },
        { Head + "Question: q\n\nQuestion: r\n",
            "5: this question has no 'Explanation:' and no 'Answer:' line; write both after it" },
    };
    for (const auto& [source, expected] : cases)
        EXPECT_EQ(built(source), expected) << source;

    // Texts no plain source line holds dump to escapes that build the same file again.
    std::string lower = enc("b");
    std::transform(
        lower.begin(), lower.end(), lower.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    const std::string odd = enc("Title") + "\r\n#" + enc("marked intro") + "\r\n" + std::string(62, '0') + "\r\n"
        + enc("two\r\nlines") + "\r\n#" + enc("Q\nLF") + "\r#" + lower + "\n" + enc("Raw: looks raw");
    const std::string source = DumpBank(odd, QuestionPassPhrase);
    EXPECT_EQ(source,
        "Title: Title\n#: marked intro\nRaw: " + std::string(62, '0') + "\nRaw: " + enc("two\r\nlines") + "\nRaw: #"
            + enc("Q\nLF") + "\nExplanation: b\n\\Raw: looks raw\n");
    EXPECT_EQ(built(source), "=");
}

class QbankToolTest : public ::testing::Test {
protected:
    // Runs the tool in the scratch folder with the words of `args` ("~" stands for a space in a word): its status,
    // its output and what it wrote to stderr.
    std::string qbank(const std::string& args)
    {
        std::string command = "cd '" + dir.path() + "' && '" KESTA_QBANK "'";
        std::istringstream words(args);
        for (std::string word; words >> word;)
            command += " '" + std::regex_replace(word, std::regex("~"), " ") + "'";
        const int raw = std::system((command + " >out 2>err </dev/null").c_str());
        return std::to_string(WIFEXITED(raw) ? WEXITSTATUS(raw) : -1) + "|" + readFile(dir / "out") + "|"
            + readFile(dir / "err");
    }

    // Writes `content` into the scratch folder; its name there.
    std::string file(const std::string& name, const std::string& content)
    {
        writeFile(dir / name, content);
        return name;
    }

    test::TempDir dir;
};

const std::string Quiz = "Title: KESTA Quiz Demo 1\nIntro: a\nIntro: b\nIntro: c\n";
const std::string Letter = "the answer 'e' is not one of the letters a to d; write 'Answer: ' and the letter of the "
                           "right choice\n";
const std::string NoMenu = "the title 'Networking' puts the bank in no menu; write \"KESTA Exam Demo\" or \"KESTA "
                           "Quiz Demo\" into it (in any case)\n";
const std::string NoAnswer = "this question has no 'Answer:' line; write 'Answer: ' and the letter of the right choice "
                             "after its explanation\n";
const std::string Past[] = {
    "the program loads at most 1000 questions; move this one and those after it into another bank\n",
    "the bank has 10007 lines, and the program reads at most 9999 (and the last); move questions into another bank\n"
};
const std::string NotWritten = "kesta-qbank: no bank written: the program could not use it (--allow-broken writes it "
                               "all the same)\n";

// Usage errors exit with 2, failures with 1 and a line naming the file and the line; a refused bank is not written.
TEST_F(QbankToolTest, EveryCommandAnswersWithItsOutputOrOneLineNamingFileAndLine)
{
    const std::string text = "Caf\xC3\xA9\"q\"", hex = EncryptString(text, QuestionPassPhrase);
    const std::string q = "Question: Q\nExplanation: E\n", no = "refused.kqb", kqb = "b.kqb";
    std::string past = std::string(7000, '\n'); // 1001 questions, more than 10,000 lines
    for (int k = 0; k < 1000; ++k)
        past = q + "Answer: a\n" + past;
    const std::string source = file("s.txt", Bom + Quiz + q + "Answer: a\n");
    file("e.txt", Quiz + q + "Answer: e\n" + past);
    file("a.aiken",
        "Which port?\nA) TCP 80\nB) TCP 443\nC) TCP 22\nD) TCP 25\nANSWER: B\n\nShort?\nA. yes\nB. no\nANSWER: A\n");
    file("menu.txt", "Title: Networking\nIntro: a\nIntro: b\nIntro: c\n" + q + "Answer: a\n");
    file("marked.kqb", "#" + hex + "\r\n");
    file("damaged.kqb", EncryptString("KESTA Quiz Demo 1", QuestionPassPhrase) + "\r\nABC\r\n");
    ::mkfifo((dir / "pipe").c_str(), 0600);
    fs::create_directories(dir / "folder");
    fs::create_symlink(source, dir / "link.txt");
    fs::create_hard_link(dir / source, dir / "hard.kqb");
    const std::string usage = "\nTry 'kesta-qbank --help'.\n",
                      notBank = ":1: not a question file: its lines are "
                                "not the enciphered text that 'kesta-qbank build' writes\n";
    const std::string damaged = ":2: this line is damaged: it has an odd number of hexadecimal digits; build the bank "
                                "again from its source\n";
    const std::string wrongKey
        = "b.kqb: cannot be deciphered with the pass phrase given by --key; give the one the bank was made with\n";
    const std::string import = "import --from aiken a.aiken --title KESTA~Quiz~Demo~7";
    const std::string itself = ", the input itself; give another file to write\n",
                      alsoBank = ": is also the bank (-o); give the source another file\n";
    const std::pair<std::string, std::string> cases[] = {
        { "encrypt-line " + text, "0|" + hex + "\n|" },
        { "--key K decrypt-line " + EncryptString(text, "K"), "0|" + text + "\n|" },
        { "build s.txt -o b.kqb", "0||" },
        { "check --json b.kqb",
            "0|{\"title\": \"KESTA Quiz Demo 1\", \"menus\": [\"Select Domain Quiz\"], \"intro\": "
            "\"a\\r\\n\\r\\nb\\r\\n\\r\\nc\", \"question_count\": 1, \"corrupt\": false, \"problems\": "
            "[], \"questions\": [{\"question\": \"Q\", \"explanation\": \"E\", \"answer\": \"a\"}]}\n|" },
        { "--version", "0|kesta-qbank (KESTA DEMO) 12.11.23\n|" },
        { "", "2||kesta-qbank: no command given" + usage },
        { "build s.txt", "2||kesta-qbank: build needs -o" + usage },
        { "help nothing", "2||kesta-qbank: there is no command nothing" + usage },
        { import + " -o b.kqb --seed x",
            "2||kesta-qbank: --seed takes a whole number from 0 to 18446744073709551615, not x" + usage },
        { "decrypt-line ZZ",
            "1||kesta-qbank: the line cannot be deciphered: it holds a character that is not a "
            "hexadecimal digit\n" },
        { "dump none.kqb", "1||none.kqb: no such file\n" },
        { "dump s.txt", "1||s.txt" + notBank },
        { "check s.txt", "1||s.txt" + notBank },
        { "check marked.kqb", "1||marked.kqb" + notBank },
        { "check damaged.kqb", "1||damaged.kqb" + damaged },
        { "dump damaged.kqb", "1||damaged.kqb" + damaged },
        { "--key K check b.kqb", "1||" + wrongKey },
        { "--key wrong dump b.kqb", "1||" + wrongKey }, // its title deciphers, to no text
        { "--key K dump " + file("k.kqb", EncryptString("T", "K") + "\r\n" + std::string(62, '0') + "\r\n"),
            "0|Title: T\nRaw: " + std::string(62, '0') + "\n|" }, // a line of no text under a right key
        { "check pipe", "1||pipe: not a regular file (a link, a pipe or a device); nothing was read\n" },
        { "build s.txt -o no/b.kqb", "1||no/b.kqb: cannot be written: no such folder\n" },
        { "build e.txt -o " + no,
            "1||e.txt:7: " + Letter + "e.txt:3005: " + Past[0] + "e.txt:10000: " + Past[1] + NotWritten },
        { "build " + file("B.txt", Quiz + q + "Answer: B)\n") + " -o " + no,
            "1||B.txt:7: the answer 'B)' is more than a letter; write 'Answer: B'\n" + NotWritten },
        { "build " + file("last.txt", Quiz + q + "Answer: a\n\n" + q) + " -o " + no,
            "1||last.txt:9: " + NoAnswer + NotWritten },
        { "build " + file("mid.txt", Quiz + q + "\n" + q + "Answer: a\n") + " -o " + no, "1||mid.txt:5: " + NoAnswer },
        { "build " + file("none.txt", Quiz) + " -o " + no,
            "1||none.txt: the bank has no question; write one or more, "
            "each a 'Question:', an 'Explanation:' and an 'Answer:' line\n"
                + NotWritten },
        { "build menu.txt -o " + no, "1||menu.txt:1: " + NoMenu + NotWritten },
        { "build "
                + file("long.txt", Quiz + "Question: " + std::string(17000, 'y') + "\n" + q.substr(12) + "Answer: a\n")
                + " -o " + no,
            "1||long.txt:5: the text passes the 16 KiB the program keeps of a question, an explanation or the "
            "introduction; shorten it or split the question in two\n"
                + NotWritten },
        { "build " + file("lower.txt", Quiz + "question: Q\n") + " -o " + no,
            "1||lower.txt:5: 'question:' is no keyword; write 'Question: Q' (or '\\question: Q' for a plain line)\n" },
        { "build " + file("space.txt", Quiz + q + "Answer:a\n") + " -o " + no,
            "1||space.txt:7: 'Answer:' takes one space before its text; write 'Answer: a'\n" },
        { "build e.txt -o e.kqb --allow-broken",
            "0||e.txt:7: " + Letter + "e.txt:3005: " + Past[0] + "e.txt:10000: " + Past[1] },
        { "check e.kqb",
            "1|Title: KESTA Quiz Demo 1\nMenu: Select Domain Quiz\nQuestions: 1000\nCorrupt: yes\ne.kqb: question 1: "
                + Letter + "e.kqb: question 1001: " + Past[0] + "e.kqb: " + Past[1] + "|" },
        // An output that is the input however named, or that cannot be replaced, is refused before anything is read.
        { "build s.txt -o s.txt", "1||s.txt: is s.txt" + itself },
        { "build link.txt -o ./s.txt", "1||./s.txt: is link.txt" + itself },
        { "build s.txt -o pipe",
            "1||pipe: is not a regular file (a device, a pipe or a socket); give a file to write\n" },
        { "build s.txt -o folder", "1||folder: is a folder; give the name of the file to write\n" },
        { import + " -o ./a.aiken", "1||./a.aiken: is a.aiken" + itself },
        { import + " -o " + no + " --source-out a.aiken", "1||a.aiken: is a.aiken" + itself },
        { import + " -o " + no + " --source-out ./" + no, "1||./" + no + alsoBank },
        { import + " -o s.txt --source-out hard.kqb", "1||hard.kqb" + alsoBank },
        { import + " -o a.kqb --source-out a.txt",
            "0|a.aiken: imported 1 question, skipped 1\n|a.aiken:8: skipped: 2 choices; the program shows four\n" },
        { import + " -o " + no + " --strict",
            "1||a.aiken:8: skipped: 2 choices; the program shows four\na.aiken: 1 question skipped; nothing written "
            "(--strict)\n" },
        { "import --from gift a.aiken --title KESTA~Quiz~Demo~7 -o " + no,
            "1||a.aiken:1: skipped: no answers in braces\na.aiken:8: skipped: no answers in braces\na.aiken: no "
            "question "
            "imported, and a bank needs one; is this GIFT text, as --from says?\n" },
        { "import --from aiken a.aiken --title Networking -o " + no,
            "1||a.aiken:8: skipped: 2 choices; the program shows four\na.aiken: " + NoMenu + NotWritten },
        { "export --to gift a.kqb", "0|[html]Which port? {\n~TCP 22\n=TCP 443\n~TCP 25\n~TCP 80\n}\n\n|" },
    };
    for (const auto& [args, expected] : cases)
        EXPECT_EQ(qbank(args), expected) << args;
    // A bank is installed as it is: readable by all, written by its owner; no temporary file stays, no refused bank is
    // made, the input stays as it was.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(fs::status(dir / kqb).permissions(), fs::perms(0666 & ~mask));
    for (const auto& entry : fs::directory_iterator(dir.path()))
        EXPECT_TRUE(entry.path().filename().string().front() != '.' && entry.path().filename() != no);
    EXPECT_EQ(readFile(dir / source), Bom + Quiz + q + "Answer: a\n");
    // Help goes to standard output, in the same words however asked.
    const std::string help = qbank("--help");
    EXPECT_EQ(std::vector({ help.substr(0, 58), qbank("-h"), qbank("help"), qbank("help dump") }),
        std::vector<std::string>({ "0|usage: kesta-qbank [--key PHRASE] COMMAND [ARGUMENTS]\n  ", help, help,
            "0|usage: kesta-qbank [--key PHRASE] dump BANK\n\nPrints the source "
            "BANK was built from; building it again gives the same bank.\n|" }));
}

// GIFT writes the right answer first: an import deals it over the letters, the same each time unless seeded; a
// choice that points at others keeps its question in order.
TEST_F(QbankToolTest, ImportDealsTheRightAnswersOverTheLetters)
{
    const std::string wxyz = " {=w ~x ~y ~z}\n\n";
    file("first.gift",
        "Q1" + wxyz + "Q2" + wxyz + "Q3 {=w ~x ~y ~All of the above}\n\nQ4" + wxyz + "Q5" + wxyz
            + "Q6 {=w ~x ~Both ~z}\n\nQ7" + wxyz + "Q8" + wxyz);
    const auto answers = [&](const std::string& options) {
        qbank("import --from gift first.gift --title KESTA~Quiz~Demo --source-out o " + options);
        std::string letters, out = readFile(dir / "o");
        for (std::size_t at = out.find("Answer: "); at != std::string::npos; at = out.find("Answer: ", at + 1))
            letters += out[at + 8];
        return letters;
    };
    EXPECT_EQ(std::vector({ answers(""), answers(""), answers("--seed 9"), answers("--keep-order") }),
        std::vector<std::string>({ "baadcabd", "baadcabd", "daacbadc", "aaaaaaaa" }));
}

// check DIR lists what the catalogue's own code lists for the folder, and says why the rest is left out.
TEST_F(QbankToolTest, CheckOfAFolderShowsWhatTheMenusShowAndWhy)
{
    const std::string folder = dir / "Q/";
    fs::copy(fs::path(KESTA_QBANK).parent_path() / "Questions", folder);
    for (int k = 1; k <= 9; ++k) // with the three demo quizzes, one more than the menu holds
        writeFile(folder + "x" + std::to_string(k) + ".kqb",
            test::numberedBank(
                k == 1 ? "KESTA Quiz Demo - Networking" : "KESTA Quiz Demo " + std::to_string(k), 1, "a"));
    writeFile(
        dir / "broken.kqb", test::numberedBank("KESTA Exam Demo 3", 1, "e")); // read through a link, as the program
    fs::create_symlink(dir / "broken.kqb", folder + "broken.kqb");
    fs::create_symlink(dir / "gone.kqb", folder + "gone.kqb"); // a dangling link is not listed
    writeFile(folder + "notes.kqb", test::numberedBank("Networking", 1, "a"));
    writeFile(folder + "empty.kqb", "");
    std::string menus[2] = { "Select Exam:\n", "Select Domain Quiz:\n" };
    for (const CatalogueHit& hit : classifyFiles(folder, listFolderFiles(folder), [](const std::string& path) {
             return path.ends_with("empty.kqb") ? "" : DecryptString(*titleLine(path), QuestionPassPhrase);
         }))
        menus[hit.kind == CatalogueKind::Quiz] += "  " + hit.fileName + ": " + hit.title + "\n";
    EXPECT_EQ(qbank("check Q"),
        "1|" + menus[0] + menus[1]
            + "Not listed:\n  empty.kqb: cannot be read: it is empty; "
              "the program stops at start with an error when it reads it\n  notes.kqb: no menu "
              "in its title 'Networking'\n  x9.kqb: past the 11 quizzes Select Domain Quiz "
              "shows\nProblems:\n  Q/broken.kqb: question 1: "
            + Letter + "  Q/notes.kqb: " + NoMenu
            + "  Q/x1.kqb: has the title of quiz01.kqb; the menus cannot tell them "
              "apart: give one of them another title\n|");
}

using Skips = std::vector<std::string>; // "LINE: reason"

Skips skips(const std::vector<SkippedQuestion>& skipped)
{
    Skips out;
    for (const SkippedQuestion& s : skipped)
        out.push_back(std::to_string(s.line) + ": " + s.reason);
    return out;
}

// Builds the source and loads the bank as the program does.
std::unique_ptr<QuestionList> load(const std::string& source)
{
    const test::TempDir dir;
    test::writeFile(dir / "bank.kqb", BuildBank(source, QuestionPassPhrase));
    auto list = std::make_unique<QuestionList>();
    LoadObserver quiet;
    LoadQuestionFile(dir / "bank.kqb", *list, quiet, decipherWith(std::string(QuestionPassPhrase)));
    return list;
}

// One question in the demo banks' layout.
std::string q(const std::string& stem, const std::string& a, const std::string& b, const std::string& c,
    const std::string& d, const std::string& explanation, char answer)
{
    return "\nQuestion: " + stem + "<br>\n<br>a) " + a + "\n<br>b) " + b + "\n<br>c) " + c + "\n<br>d) " + d
        + "\nExplanation: " + explanation + "\nAnswer: " + answer + "\n";
}

const ImportSettings Settings { "T", { "One", "Two", "Three" }, true };
const std::string None(NoExplanation);
const std::string Header = "Title: T\nIntro: One\nIntro: <br><br>Two\nIntro: <br><br>Three\n";
const std::string Abcd = "{=a ~b ~c ~d}\n\n";
const std::string Valid = "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xE2\x82\xAC\xED\x9F\xBF\xEF\xBF\xBF"
                          "\xF0\x90\x80\x80\xF3\xA0\x80\x81\xF4\x8F\xBF\xBF";

TEST(InterchangeTest, ImportKeepsWhatAPageShowsReportsTheRestAndRoundTrips)
{
    const struct {
        const char* name;
        QuestionFormat format;
        ImportSettings settings;
        std::string input, source;
        int imported;
        Skips skipped;
    } cases[] = {
        // imported counts one question per q() in the source
        { "aiken: BOM (and one opening the text), CR LF, both choice forms, wrapped lines, plain text",
            QuestionFormat::Aiken, Settings,
            "\xEF\xBB\xBF\xEF\xBB\xBFWhat is 1 < 2 & \"3\"?\r\nA) yes\r\nB. no\r\nC) maybe\r\n  wrapped\t\r\nD) "
            "never\r\n"
            "answer: a\r\nWhich\r\nwraps?\r\nA) 1\r\nB) 2\r\nC) 3\r\nD) 4\r\nANSWER: D\r\n\r\n \t\r\n"
            "Three\nA) 1\nB) 2\nC) 3\nANSWER: A\n\nNo answer\nA) 1\nB) 2\nC) 3\nD) 4\n\n"
            "Bad letter\nA) 1\nB) 2\nC) 3\nD) 4\nANSWER: E\nAt the end\nA) 1",
            Header
                + q("\xEF\xBB\xBFWhat is 1 &lt; 2 &amp; &quot;3&quot;?", "yes", "no", "maybe wrapped", "never", None,
                    'a')
                + q("Which wraps?", "1", "2", "3", "4", None, 'd'),
            2,
            { "17: 3 choices; the program shows four", "23: no ANSWER line", "29: the ANSWER letter names no choice",
                "35: no ANSWER line" } },
        { "aiken: default introduction", QuestionFormat::Aiken, { "Q&A", {}, true },
            "Only\nA. 1\nB. 2\nC. 3\nD. 4\nANSWER: B",
            "Title: Q&A\nIntro: <b>Q&amp;A</b>\n"
            "Intro: <br><br>It has 1 question, each with four choices and exactly one correct answer.\n"
            "Intro: <br><br>Choose an answer with the buttons or the keys A to D, then press Next Question.\n"
                + q("Only", "1", "2", "3", "4", None, 'b'),
            1, {} },
        { "gift: titles, comments, escapes, formats, feedback, a gap", QuestionFormat::Gift, Settings, R"(// comment
$CATEGORY: top
::Title\: one:\::two::What is
<b>bold</b>?{
=Right#Because.
~Wrong#No.
~a\~b \= c\#d\{e\}f\:g\nnew \d \\~multi
line\
}

[html]Line one
line two {~x ~y =z#fb ~w ####General <i>wins</i>}

[plain]1 < 2 & "3"
next {=a ~b ~c ~d}

[markdown]**B** *i* _u_ `c*d` 5 * 3 {=`<x>` ~*a `b*` ~c ~d}

::T::[moodle]The {~a =b ~c ~d ####<br><br>} gap.)",
            Header
                + q("What is<br><b>bold</b>?", "Right", "Wrong", "a~b = c#d{e}f:g<br>new \\d \\", "multi<br>line\\",
                    "Because.", 'a')
                + q("Line one line two", "x", "y", "z", "w", "General <i>wins</i>", 'c')
                + q("1 &lt; 2 &amp; &quot;3&quot;<br>next", "a", "b", "c", "d", None, 'a')
                + q("<strong>B</strong> <em>i</em> <em>u</em> <code>c*d</code> 5 * 3", "<code>&lt;x&gt;</code>",
                    "<em>a <code>b*</code></em>", "c", "d", None, 'a')
                + q("The _____ gap.", "a", "b", "c", "d", None, 'b'),
            5, {} },
        { "gift: what a page cannot show", QuestionFormat::Gift, Settings,
            "Numeric {#3.14:0.01}\n\nFalse {false#No#Yes}\n\nEssay {}\n\nMatch {=a -> 1 =b -> 2 =c -> 3}\n\n"
            "Short {=four =4}\n\nTwo {=a =b ~c ~d}\n\nNone {~a ~b ~c ~d}\n\nWeight {~%50%a ~%50%b ~c ~d}\n\n"
            "Three {=a ~b ~c}\n\n"
                + Abcd + "Empty {=a ~ ~c ~d}\n\nDescription only\n\nOpen {=a ~b\n\n\x80" + Abcd + "\xE0\x9F\xBF" + Abcd
                + "\xED\xA0\x80" + Abcd + "\xE2\x82(" + Abcd + Valid + Abcd,
            Header + q(Valid, "a", "b", "c", "d", None, 'a'), 1,
            { "1: a numeric question", "3: a true/false question", "5: no choices in the braces",
                "7: a matching question", "9: a short-answer question", "11: 2 right answers; the program needs one",
                "13: 0 right answers; the program needs one",
                "15: weighted answers (%); the program scores one right answer",
                "17: 3 choices; the program shows four", "19: no question text", "21: a choice has no text",
                "23: no answers in braces", "25: the answer braces are not closed", "27: not valid UTF-8",
                "29: not valid UTF-8", "31: not valid UTF-8", "33: not valid UTF-8" } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ImportResult result = importQuestions(c.format, c.input, c.settings);
        const ExportResult exported = exportQuestions(c.format, *load(result.source));
        EXPECT_EQ(std::tuple(result.source, result.imported, skips(result.skipped), exported.exported),
            std::tuple(c.source, c.imported, c.skipped, c.imported));
        EXPECT_EQ(importQuestions(c.format, exported.text, c.settings).source, result.source);
    }
}

TEST(InterchangeTest, ImportRefusesHeadersAFileCannotHoldAndStopsAtTheProgramsLimit)
{
    const ImportSettings bad[]
        = { { "", {} }, { "T\n", {} }, { "T\xE2\x82", {} }, { "T", { "" } }, { "T", { "1", "2", "3", "4" } } };
    for (const ImportSettings& settings : bad)
        EXPECT_THROW(importQuestions(QuestionFormat::Aiken, "", settings), std::invalid_argument);
    // A question of a fifth of the bank passes the bank's limit, and not the text's.
    std::string many = "Q" + std::string(MaxBankBytes / 4, 'x') + Abcd + "Q" + std::string(MaxBankBytes / 5, 'z') + Abcd
        + "Q" + std::string(MaxFieldBytes, 'y') + Abcd;
    for (int k = 0; k < 1001; ++k)
        many += "Q " + Abcd;
    const ImportResult result = importQuestions(QuestionFormat::Gift, many, Settings);
    EXPECT_EQ(std::pair(result.imported, skips(result.skipped)),
        std::pair(1000,
            Skips { "1: the bank would pass the 32 MiB the program reads; import the rest into another bank",
                "3: a question or explanation of more than the 16 KiB of text the program keeps",
                "5: a question or explanation of more than the 16 KiB of text the program keeps",
                "2007: the program loads at most 1000 questions" }));
}

TEST(InterchangeTest, ExportTakesRecordsApartAndWritesAikenAsPlainText)
{
    const auto list = load("Title: T\nIntro: 1\nIntro: 2\nIntro: 3\n"
                           "Question: Pick <b>one</b> of &#x41;&#66;&nbsp;or {x}:<br>\n"
                           "<br>a) &#127;&#x80;&#x7FF;&#x800;&#xFFFF;&#x10000;&#x1F600;&#x10FFFF;\n"
                           "<br>b) &#x110000;&#xD800;&bogus;&#;&amp\n<br>c) x<br/>y<P>z<li>w<i>i</i>\n"
                           "d) 1 &lt; 2 &amp; &quot;q&quot; &apos;s&apos; A&#10;B&#13;C 3 < 4\n"
                           "Explanation: Why a~b\\c=d?\n<br><br>Because.\nAnswer: a\n"
                           "Question: Bad answer\nExplanation: E\nAnswer: e\n"
                           "Question: Long answer\nExplanation: E\nAnswer: ab\n"
                           "Question: Too few<br>\n<br>a) 1\nExplanation: E\nAnswer: a\n"
                           "Question: a) no stem\n<br>b) 2\n<br>c) 3\n<br>d) 4\nExplanation: E\nAnswer: a\n"
                           "Question: Percent\n<br>a) %1\n<br>b) <img src=\"x\">\n<br>c) 3\n<br>d) 4\n"
                           "Explanation: E\nAnswer: d\n");
    // Aiken loses the markup, so what it keeps is compared here; GIFT keeps it and the import table round-trips it.
    const ExportResult result = exportQuestions(QuestionFormat::Aiken, *list);
    EXPECT_EQ(std::tuple(result.text, result.exported, skips(result.skipped)),
        std::tuple(
            std::string(
                "Pick one of AB\xC2\xA0or {x}:\nA) "
                "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\n"
                "B) &#x110000;&#xD800;&bogus;&#;&amp\nC) x y z wi\nD) 1 < 2 & \"q\" 's' A B C 3 < 4\nANSWER: A\n\n"),
            1,
            Skips { "2: the answer is not one letter a to d", "3: the answer is not one letter a to d",
                "4: no four choices a) to d) at its end", "5: no question text",
                "6: no text left once the HTML is taken out" }));
    EXPECT_EQ(skips(exportQuestions(QuestionFormat::Gift, *list).skipped).back(),
        "6: a choice starts with %, which GIFT reads as a weight");
}

} // namespace
} // namespace kesta

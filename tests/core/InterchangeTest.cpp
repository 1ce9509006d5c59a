#include "questions/core/Interchange.h"

#include "questions/core/BankSource.h"
#include "questions/core/Cipher.h"
#include "questions/core/QuestionLoader.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

namespace kesta {
namespace {

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
    std::string many = "Q" + std::string(MaxBankBytes / 4, 'x') + Abcd + "Q" + std::string(MaxFieldBytes, 'y') + Abcd;
    for (int k = 0; k < 1001; ++k)
        many += "Q " + Abcd;
    const ImportResult result = importQuestions(QuestionFormat::Gift, many, Settings);
    EXPECT_EQ(std::pair(result.imported, skips(result.skipped)),
        std::pair(1000,
            Skips { "1: the bank would pass the 32 MiB the program reads; import the rest into another bank",
                "3: a question or explanation of more than the 16 KiB of text the program keeps",
                "2005: the program loads at most 1000 questions" }));
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

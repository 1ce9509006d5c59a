#include "questions/core/QuestionLoader.h"

#include "common/core/SafeFile.h"
#include "questions/core/Cipher.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace kesta {

namespace {

constexpr std::string_view CrLf = "\r\n";

// The texts of the question being read, before trimming. The explanation and
// the answer outlive a stored record: a file that ends inside a block gives
// its last question the ones read before.
struct OpenQuestion {
    std::string question;
    std::string explanation;
    std::string answer;
};

// Trims leading and trailing spaces (only spaces), in place.
std::string trimmed(std::string text)
{
    text.erase(text.find_last_not_of(' ') + 1);
    text.erase(0, text.find_first_not_of(' '));
    return text;
}

std::string widenTabs(const std::string& text)
{
    std::string page;
    page.reserve(text.size());
    for (const char c : text) {
        if (c == '\t')
            page += "   ";
        else
            page += c;
    }
    return page;
}

// One pass over a file's lines as the program's loader reads them: up to
// 10000 rounds, a round per line, the last round reading the empty slot
// after the lines or, for a longer file, its last line.
class Loader {
public:
    Loader(QuestionList& list, LoadObserver& observer, const LineDecipher& decipher)
        : questions_(list.Questions), observer_(observer), decipher_(decipher)
    {
    }

    template <typename Lines> LoadResult run(Lines& lines, QuestionList& list)
    {
        std::string_view line;
        int count = 0;
        while (lines.next(line)) {
            if (++count < MaxQuestionLines)
                round(line);
            else
                last_.assign(line); // every line from the 10000th on lands in the last slot
        }
        result_.tooManyLines = count >= MaxQuestionLines;
        round(last_);

        // The final store keeps a bare break explanation as it stands.
        store(questions_[number_], false);
        list.QuestionCount = static_cast<Int16>(number_);
        observer_.introduction(widenTabs(questions_[1].Intro));
        observer_.status(ReadyText);
        observer_.progressShown(false);
        for (int k = 1; k <= number_; ++k) {
            if (Utf16Length(questions_[k].Answer) != 1)
                result_.badAnswers.push_back(k);
        }
        return std::move(result_);
    }

private:
    // Every non-empty line is deciphered, also one the test does not keep, so
    // that an undecipherable line fails wherever it stands; only one too long
    // to keep is not.
    void round(std::string_view raw)
    {
        ++rounds_;
        if (progress_ < 100)
            observer_.progress(++progress_);
        if (raw.empty())
            return;
        const bool marked = raw.front() == '#';
        const std::string_view line = raw.substr(marked ? 1 : 0);

        if (header_ <= 4) {
            // The title is read as the first header line and at once replaced by the second.
            std::string& intro = questions_[1].Intro;
            if (header_ <= 2)
                intro.clear();
            else
                intro.append(CrLf).append(CrLf);
            take(line, intro);
            if (rounds_ == 1 && !marked)
                result_.title = intro;
            ++header_;
            return;
        }
        if (marked) {
            section_ = section_ % 3 + 1;
            if (section_ == 1 && number_ < MaxQuestions) {
                store(questions_[number_], true);
                ++number_;
                into(open_.question, line);
            } else if (section_ == 1) {
                result_.tooManyQuestions = true; // the question goes on as the thousandth
                into(discarded_, line);
            } else {
                into(section_ == 2 ? open_.explanation : open_.answer, line);
            }
        } else if (section_ == 1) {
            take(line, open_.question.append(CrLf));
        } else if (section_ == 2) {
            take(line, open_.explanation.append(CrLf).append(CrLf));
        } else {
            into(discarded_, line);
        }
    }

    // The line's text replaces `text`.
    void into(std::string& text, std::string_view line)
    {
        text.clear();
        take(line, text);
    }

    // Appends the line's text to `text`, which keeps at most MaxFieldBytes,
    // cut where a character starts.
    void take(std::string_view line, std::string& text)
    {
        if (line.size() > MaxLineBytes)
            lost();
        else
            decipher_(line, text);
        if (text.size() > MaxFieldBytes) {
            std::size_t cut = MaxFieldBytes;
            while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
                --cut;
            text.resize(cut);
            lost();
        }
    }

    // A line past MaxLineBytes or a text past MaxFieldBytes: the rest is lost.
    void lost()
    {
        if (result_.tooLongAt == 0)
            result_.tooLongAt = rounds_;
    }

    void store(QuestionRecord& record, bool breakRule)
    {
        // An explanation of a bare break names the answer, untrimmed.
        if (breakRule && open_.explanation == "<br><br>")
            record.Explanation = "The correct answer is " + open_.answer + ".<br><br>";
        else
            record.Explanation = trimmed(open_.explanation);
        record.Question = trimmed(std::move(open_.question));
        record.Answer = trimmed(open_.answer);
        open_.question.clear();
    }

    FixedArray<QuestionRecord, 0, 1000>& questions_;
    LoadObserver& observer_;
    const LineDecipher& decipher_;
    LoadResult result_;
    int rounds_ = 0;
    std::string last_; // a copy: the view of a line read from a file ends with the next line
    int progress_ = 1;
    int header_ = 1;
    int section_ = 0;
    int number_ = 0;
    OpenQuestion open_;
    std::string discarded_;
};

void beginLoad(LoadObserver& observer)
{
    observer.progress(1);
    observer.progressShown(true);
    observer.status(LoadingText);
}

} // namespace

LineDecipher decipherWith(std::string_view passPhrase)
{
    auto decoder = std::make_shared<LineDecoder>(passPhrase);
    return [decoder](std::string_view line, std::string& text) { decoder->decode(line, text); };
}

std::size_t LineCutter::nextLf(const char* data, std::size_t end)
{
    if (lf_ != std::string::npos && lf_ >= begin)
        return lf_;
    // memchr finds the line ends far faster than a loop over every character.
    const std::size_t from = std::max(scanned_, begin);
    const void* found = std::memchr(data + from, '\n', end - from);
    if (found != nullptr)
        return lf_ = static_cast<std::size_t>(static_cast<const char*>(found) - data);
    lf_ = std::string::npos;
    return scanned_ = end;
}

bool LineCutter::cut(const char* data, std::size_t end, bool final, std::string_view& line)
{
    const std::size_t lf = nextLf(data, end);
    const void* cr = std::memchr(data + begin, '\r', lf - begin);
    const std::size_t stop = cr != nullptr ? static_cast<std::size_t>(static_cast<const char*>(cr) - data) : lf;
    // A CR at the end of the text may yet be followed by its LF.
    if (stop < end && (data[stop] == '\n' || stop + 1 < end || final)) {
        line = std::string_view(data + begin, stop - begin);
        begin = stop + 1 + (data[stop] == '\r' && stop + 1 < end && data[stop + 1] == '\n');
        return true;
    }
    if (!final || begin == end)
        return false;
    line = std::string_view(data + begin, end - begin);
    begin = end;
    return true;
}

void LineCutter::moved()
{
    lf_ = lf_ == std::string::npos || lf_ < begin ? std::string::npos : lf_ - begin;
    scanned_ = scanned_ > begin ? scanned_ - begin : 0;
    begin = 0;
}

std::size_t Utf16Length(std::string_view text)
{
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0) != 0x80)
            ++units;             // a lead byte or ASCII starts a character
        if (byte >= 0xF0)
            ++units;             // four-byte sequences need a surrogate pair
    }
    return units;
}

FileLines::FileLines(const std::string& path, std::size_t limit, std::size_t block, safefile::Links links)
    : reader_(path, limit, links), buffer_(std::max<std::size_t>(block, 1), '\0')
{
}

void FileLines::fill()
{
    if (cutter_.begin > 0) {
        std::memmove(buffer_.data(), buffer_.data() + cutter_.begin, end_ - cutter_.begin);
        end_ -= cutter_.begin;
        cutter_.moved();
    }
    if (end_ == buffer_.size() && end_ >= 2 * Longest) {
        // One line too long to read fills the buffer: its start stays, to
        // tell so, and the byte read last (a CR there may end it); the rest
        // is dropped as it comes.
        buffer_[Longest + 1] = buffer_[end_ - 1];
        end_ = Longest + 2;
        cutter_.dropped(end_);
    } else if (end_ == buffer_.size()) {
        buffer_.resize(2 * buffer_.size()); // one line longer than the buffer
    }
    const std::size_t n = reader_.read(buffer_.data() + end_, buffer_.size() - end_);
    end_ += n;
    atEnd_ = n == 0;
}

bool FileLines::next(std::string_view& line)
{
    while (!cutter_.cut(buffer_.data(), end_, atEnd_, line)) {
        if (atEnd_)
            return false;
        fill();
    }
    return ++number_, true;
}

LoadResult LoadQuestionText(std::string_view content, QuestionList& list, LoadObserver& observer,
                            const LineDecipher& decipher)
{
    beginLoad(observer);
    LineSplitter lines(content);
    return Loader(list, observer, decipher).run(lines, list);
}

LoadResult LoadQuestionLines(FileLines& lines, QuestionList& list, LoadObserver& observer, const LineDecipher& decipher)
{
    return Loader(list, observer, decipher).run(lines, list);
}

LoadResult LoadQuestionFile(const std::string& filename, QuestionList& list, LoadObserver& observer,
                            const LineDecipher& decipher, std::size_t block)
{
    beginLoad(observer);
    FileLines lines(filename, MaxBankBytes, block, safefile::Links::Follow);
    return LoadQuestionLines(lines, list, observer, decipher);
}

} // namespace kesta

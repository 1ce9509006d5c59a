#include "questions/core/QuestionLoader.h"

#include "common/core/RuntimeError.h"
#include "questions/core/Cipher.h"

#include <cerrno>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace kesta {

namespace {

constexpr std::string_view CrLf = "\r\n";

} // namespace

std::string ReadWholeFile(const std::string& filename)
{
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(filename.c_str(), "rb"), &std::fclose);
    if (!file) {
        switch (errno) {
        case ENOENT: throw err::make(err::FileNotFound);
        case ENOTDIR: throw err::make(err::PathNotFound);
        default: throw err::make(err::PathFileAccess);
        }
    }
    std::string content;
    char buffer[65536];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, file.get())) > 0)
        content.append(buffer, got);
    if (std::ferror(file.get()))
        throw err::make(err::PathFileAccess);
    return content;
}

namespace {

// The texts of the question being read, before trimming.
struct OpenQuestion {
    std::string question;
    std::string explanation;
    std::string answer;
};

void storeRecord(QuestionRecord& record, const OpenQuestion& open)
{
    record.Question = TrimSpaces(open.question);
    record.Explanation = TrimSpaces(open.explanation);
    record.Answer = TrimSpaces(open.answer);
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

} // namespace

LineDecipher decipherWith(std::string passPhrase)
{
    return [key = std::move(passPhrase)](const std::string& line) { return DecryptString(line, key); };
}

std::vector<std::string_view> SplitFileLines(std::string_view content)
{
    // memchr finds the line ends far faster than a loop over every character;
    // the next LF is remembered so that lone-CR files are not rescanned.
    std::vector<std::string_view> lines;
    const char* const begin = content.data();
    const char* const end = begin + content.size();
    const char* p = begin;
    const char* nextLf = nullptr;
    while (p < end) {
        if (nextLf == nullptr || nextLf < p) {
            nextLf = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
            if (nextLf == nullptr)
                nextLf = end;
        }
        const auto* cr = static_cast<const char*>(std::memchr(p, '\r', static_cast<std::size_t>(nextLf - p)));
        const char* lineEnd = cr != nullptr ? cr : nextLf;
        lines.emplace_back(p, static_cast<std::size_t>(lineEnd - p));
        if (lineEnd == end)
            break;
        p = lineEnd + 1;
        if (cr != nullptr && p < end && *p == '\n')
            ++p;
    }
    return lines;
}

std::string TrimSpaces(std::string_view text)
{
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    const auto last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
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

LoadResult LoadQuestionFile(const std::string& filename, QuestionList& list, LoadObserver& observer,
                            const LineDecipher& decipher)
{
    LoadResult result;
    int progress = 1;
    observer.progress(progress);
    observer.progressShown(true);
    observer.status(LoadingText);

    const std::string content = ReadWholeFile(filename);
    const std::vector<std::string_view> fileLines = SplitFileLines(content);

    // QuestionLines holds at most lines 1..10000; once full, every further
    // line lands in the last slot, so only the file's last line survives there.
    std::vector<std::string_view> lines(1); // slot 0 unused
    lines.reserve(std::min<std::size_t>(fileLines.size(), MaxQuestionLines) + 2);
    int last = 1;
    for (const std::string_view line : fileLines) {
        if (static_cast<int>(lines.size()) <= last)
            lines.push_back(line);
        else
            lines[static_cast<std::size_t>(last)] = line;
        if (last < MaxQuestionLines)
            ++last;
        else
            result.tooManyLines = true;
    }
    lines.resize(static_cast<std::size_t>(last) + 1); // the round past the last line reads an empty slot

    auto& questions = list.Questions;
    int header = 1;
    int section = 0;
    int number = 0;
    OpenQuestion open;
    std::string line;
    for (int j = 1; j <= last; ++j) {
        if (progress < 100)
            observer.progress(++progress);
        const std::string_view raw = lines[static_cast<std::size_t>(j)];
        if (raw.empty())
            continue;
        const bool marked = raw.front() == '#';
        line.assign(marked ? raw.substr(1) : raw);
        std::string text = decipher(line);

        if (header <= 2) {
            questions[1].Intro = std::move(text);
            ++header;
            continue;
        }
        if (header <= 4) {
            questions[1].Intro.append(CrLf).append(CrLf).append(text);
            ++header;
            continue;
        }

        if (marked) {
            section = section % 3 + 1;
            switch (section) {
            case 1:
                if (number < MaxQuestions) {
                    QuestionRecord& record = questions[number];
                    storeRecord(record, open);
                    if (open.explanation == "<br><br>")
                        record.Explanation = "The correct answer is " + open.answer + ".<br><br>";
                    open.question = std::move(text);
                    ++number;
                } else {
                    result.tooManyQuestions = true;
                }
                break;
            case 2: open.explanation = std::move(text); break;
            default: open.answer = std::move(text); break;
            }
        } else if (section == 1) {
            open.question.append(CrLf).append(text);
        } else if (section == 2) {
            open.explanation.append(CrLf).append(CrLf).append(text);
        }
    }
    storeRecord(questions[number], open);
    list.QuestionCount = static_cast<Int16>(number);

    observer.introduction(widenTabs(questions[1].Intro));
    observer.status(ReadyText);
    observer.progressShown(false);

    for (int k = 1; k <= number; ++k) {
        if (Utf16Length(questions[k].Answer) != 1)
            result.badAnswers.push_back(k);
    }
    return result;
}

} // namespace kesta

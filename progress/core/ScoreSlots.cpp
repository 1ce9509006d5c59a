#include "progress/core/ScoreSlots.h"

#include "common/core/ProgramData.h"
#include "common/core/SafeFile.h"

#include <filesystem>
#include <system_error>

namespace kesta {

namespace {

constexpr int Slots = 5;
constexpr const char* LockName = ".lock";
constexpr std::size_t TemporaryTail = 6; // the characters after a temporary file's prefix

std::string slotName(const std::string& baseName, int number)
{
    return baseName + ".score" + std::to_string(number);
}

// The new score of a rotation under way, named after the last step done
// (0: none; 1: slot 1 deleted; k: slot k moved to slot k - 1).
std::string stepName(const std::string& baseName, int done)
{
    return safefile::temporaryPrefix(slotName(baseName, Slots)) + "step" + std::to_string(done);
}

std::string folderOf(const std::string& path)
{
    return path.substr(0, path.size() - FileNameOf(path).size());
}

// Steps `from` + 1 to the end of the rotation of `baseName` in `folder`, the
// new score waiting under stepName(from). Each step is done, then recorded
// by renaming the waiting score, so a step met again after a kill finds its
// source gone and is skipped. With `data` (a rotation of this process) a
// missing slot is logged as the shared module logs it; a rotation finished
// for a killed copy logs nothing. A record that cannot be renamed stops the
// rotation where it stands (raising), to be finished from there later.
void rotate(ProgramData* data, const std::string& folder, const std::string& baseName, int from)
{
    std::error_code ignored;
    for (int step = from + 1; step <= Slots; ++step) {
        const std::string source = folder + slotName(baseName, step);
        const std::string target = folder + slotName(baseName, step - 1);
        if (data)
            step == 1 ? data->DeleteFile(source) : data->Move_File(source, target);
        else if (step == 1)
            std::filesystem::remove(source, ignored);
        else
            std::filesystem::rename(source, target, ignored);
        safefile::move(folder + stepName(baseName, step - 1), folder + stepName(baseName, step));
    }
    safefile::move(folder + stepName(baseName, Slots), folder + slotName(baseName, Slots));
}

// What a killed copy may have left of the tests `baseNames`: the temporary
// files of what is written only under the lock, and the waiting score of a
// rotation. Calls `found` with each one's name and, for a rotation, its test.
template <typename Found>
void leftovers(const std::string& folder, const std::vector<std::string>& baseNames, Found found)
{
    std::vector<std::string> prefixes { safefile::temporaryPrefix("usrdata.usr") };
    std::vector<std::pair<std::string, const std::string*>> waiting;
    for (const std::string& base : baseNames) {
        prefixes.push_back(safefile::temporaryPrefix(base));
        prefixes.push_back(safefile::temporaryPrefix(stepName(base, 0)));
        for (int k = 1; k <= Slots; ++k)
            prefixes.push_back(safefile::temporaryPrefix(slotName(base, k)));
        for (int k = 0; k <= Slots; ++k)
            waiting.emplace_back(stepName(base, k), &base);
    }
    const auto match = [&](const std::string& name) -> std::pair<bool, const std::string*> {
        for (const std::string& prefix : prefixes) {
            if (name.size() == prefix.size() + TemporaryTail && name.compare(0, prefix.size(), prefix) == 0)
                return { true, nullptr };
        }
        for (const auto& [step, base] : waiting) {
            if (name == step)
                return { true, base };
        }
        return { false, nullptr };
    };
    std::error_code code;
    for (const auto& entry : std::filesystem::directory_iterator(folder, code)) {
        const std::string name = entry.path().filename().string();
        if (const auto [left, base] = match(name); left)
            found(name, base);
    }
}

// settleScores with the lock held.
void settle(const std::string& folder, const std::vector<std::string>& baseNames)
{
    std::vector<std::pair<std::string, int>> rotations;
    std::error_code ignored;
    leftovers(folder, baseNames, [&](const std::string& name, const std::string* base) {
        if (base)
            rotations.emplace_back(*base, name.back() - '0');
        else
            std::filesystem::remove(folder + name, ignored);
    });
    for (const auto& [base, done] : rotations) {
        try {
            rotate(nullptr, folder, base, done);
        } catch (const RuntimeError&) {
            // Left as it stands for the next time.
        }
    }
}

} // namespace

void writeUserFile(const std::string& path, std::string_view text)
{
    safefile::Lock lock(folderOf(path) + LockName);
    safefile::replace(path, text);
}

std::string saveScore(ProgramData& data, const std::string& basePath, std::string_view score)
{
    const std::string folder = folderOf(basePath), base = FileNameOf(basePath);
    safefile::Lock lock(folder + LockName);
    if (lock.held())
        settle(folder, { base });
    const std::string last = folder + slotName(base, Slots);
    if (data.File_Exists(last)) {
        // Recorded on disk before the first slot is touched: from here on the rotation can always be finished.
        safefile::replace(folder + stepName(base, 0), score);
        rotate(&data, folder, base, 0);
        return last;
    }
    std::string next = folder + slotName(base, 1);
    for (int number = Slots - 1; number >= 1; --number) {
        if (data.File_Exists(folder + slotName(base, number))) {
            next = folder + slotName(base, number + 1);
            break;
        }
    }
    safefile::replace(next, score);
    return next;
}

void settleScores(const std::string& userFolder, const std::vector<std::string>& baseNames)
{
    bool any = false;
    leftovers(userFolder, baseNames, [&](const std::string&, const std::string*) { any = true; });
    if (!any)
        return;
    safefile::Lock lock(userFolder + LockName);
    if (lock.held())
        settle(userFolder, baseNames);
}

} // namespace kesta

#include "progress/core/ScoreSlots.h"

#include "common/core/ProgramData.h"

namespace kesta {

namespace {
std::string slot(const std::string& basePath, int number)
{
    return basePath + ".score" + std::to_string(number);
}
} // namespace

std::string NextScoreSlot(ProgramData& data, const std::string& basePath)
{
    if (data.File_Exists(slot(basePath, 5))) {
        data.DeleteFile(slot(basePath, 1));
        for (int number = 2; number <= 5; ++number)
            data.Move_File(slot(basePath, number), slot(basePath, number - 1));
        return slot(basePath, 5);
    }
    for (int number = 4; number >= 1; --number) {
        if (data.File_Exists(slot(basePath, number)))
            return slot(basePath, number + 1);
    }
    return slot(basePath, 1);
}

} // namespace kesta

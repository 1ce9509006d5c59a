#pragma once

#include <string>

namespace kesta {

class ProgramData;

// The five score slots of a test lie beside its progress file, named after
// it with ".score1" (oldest) to ".score5" (newest). Returns the slot to write
// next for the progress file name `basePath`: the one above the highest slot
// that exists, so a gap lower down stays unfilled. When slot 5 is taken, slot
// 1 is deleted, the others move down one and slot 5 is returned. File errors
// are the shared module's business: it logs them and carries on.
std::string NextScoreSlot(ProgramData& data, const std::string& basePath);

} // namespace kesta

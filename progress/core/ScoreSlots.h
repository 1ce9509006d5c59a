#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kesta {

class ProgramData;

// The five score slots of a test lie beside its progress file in the User
// folder, named after it with ".score1" (oldest) to ".score5" (newest).
//
// Every user of the machine shares the User folder, so two copies of the
// program may finish the same test at once, and either may be killed at any
// moment. A test's files there (progress, scores, the user data file) are
// therefore written only under one lock that every copy takes, and a
// rotation first records the new score under a name that tells how far the
// rotation has gone, so that the next rotation or start can finish it:
// whatever happens, the slots hold the old set or the new one.

// Writes `text` whole as the file at `path` in the User folder, under the lock.
void writeUserFile(const std::string& path, std::string_view text);

// Saves `score` in the slot to write next for the progress file `basePath`
// and returns that slot: the one above the highest slot that exists, so a
// gap lower down stays unfilled. When slot 5 is taken, slot 1 is deleted,
// the others move down one and the score goes to slot 5. A slot missing
// during the moves is the shared module's business: it logs it and carries
// on. The choice, the moves and the write are one step between processes.
// Raises RuntimeError when the score cannot be written; a rotation stopped
// by a failure is finished by the next start or rotation.
std::string saveScore(ProgramData& data, const std::string& basePath, std::string_view score);

// Finishes the rotations a killed copy left half done and removes the
// temporary files it left, for the progress files named `baseNames` (without
// folder) in `userFolder` (ending in the separator). Takes the lock only when
// there is something to do, and does nothing without it.
void settleScores(const std::string& userFolder, const std::vector<std::string>& baseNames);

} // namespace kesta

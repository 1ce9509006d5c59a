#pragma once

#include "common/core/Int16.h"
#include "progress/core/ProgressState.h"
#include "session/core/SessionState.h"

#include <string>

namespace kesta {

// The progress file: one snapshot of a session, written when progress or a
// score is saved and read back character by character when it is restored.
// Line 1 holds the countdown and the two positions in fixed places, line 2
// the question order, three digits a position, line 3 the answers as they
// stand, so an unanswered position leaves no mark at all.

// A value below 10 gets one "0" in front; anything else is written whole.
std::string pad2(Int16 value);
// A value below 10 gets "00" in front, 10 to 99 one "0"; anything else is written whole.
std::string pad3(Int16 value);

// The whole file text for `questionCount` positions, the three parts joined
// by CR LF with no line end after the last. Raises 9 when a position lies
// beyond the session's arrays.
std::string progressText(const SessionState& session, Int16 questionCount);

// Reads the file at `path` into saved.SavedChars from index 0, one character
// a slot, leaving spaces out, and sets SavedCharCount; reading stops at the
// first failure. Raises 53 for a missing file, 75 for one that cannot be read
// (a link, a pipe) and 9 when a 1002nd character would be stored or the
// file runs on past 16 MiB.
void readSavedChars(const std::string& path, SavedProgress& saved);

// Decodes the stored characters over the session for `questionCount`
// positions: line 1 by fixed places, line 2 from index 14, line 3 two
// characters after line 2. Answers are taken one character a position, so
// after an unanswered position the later ones shift forward and the last
// positions read the empty slots past the file. Raises 13 for a place that
// does not hold a digit and 9 for a read beyond the stored slots.
void decodeSavedProgress(const SavedProgress& saved, Int16 questionCount, SessionState& session);

} // namespace kesta

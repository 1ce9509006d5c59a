#pragma once

#include "app/core/Catalogue.h"
#include "common/core/DataFolders.h"
#include "common/core/UserOptions.h"
#include "progress/core/ProgressState.h"
#include "questions/core/QuestionList.h"
#include "session/core/SessionState.h"

namespace kesta {

// All program-wide state, one instance, owned by the application object and
// handed to the windows by reference.
struct ProgramState {
    DataFolders folders;
    UserOptions options;
    Catalogues catalogues;
    QuestionList questions;
    SessionState session;
    SavedProgress saved;
    ReviewState review;
};

// The application's title as the windows and messages show it.
inline constexpr const char* AppTitle = "KESTA DEMO";

} // namespace kesta

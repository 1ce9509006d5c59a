#pragma once

#include "common/core/FixedArray.h"

#include <string>

namespace kesta {

struct CatalogueEntry {
    std::string FileName; // the question file's name without folder
    std::string Title;    // its decrypted title line
};

// The tests found in the question folder, filled from index 0 without gaps;
// index i belongs to menu item i of the test's two menus.
struct Catalogues {
    FixedArray<CatalogueEntry, 0, 30> ExamCatalogue;
    FixedArray<CatalogueEntry, 0, 10> QuizCatalogue;
    bool FileFound = false; // set by Check_File
};

} // namespace kesta

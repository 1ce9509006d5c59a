#pragma once

#include "common/core/FixedArray.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

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

// Which of the two catalogues a test belongs to.
enum class CatalogueKind { Exam, Quiz };

// The number of tests each catalogue can offer; further files are ignored.
inline constexpr int ExamSlots = 31;
inline constexpr int QuizSlots = 11;

// One test found by a scan: the catalogue slot and the menu items it fills.
struct CatalogueHit {
    CatalogueKind kind;
    int index; // slot in its catalogue, counted separately for exams and quizzes
    std::string fileName;
    std::string title;
};

// The title of the file at a full path. Whatever it raises ends the scan.
using TitleReader = std::function<std::string(const std::string& path)>;

// The names of the regular files directly inside `folder`, in the order the
// usual file systems list them: by name without regard to case (then by byte
// value, so the order is total). A link counts as what it leads to: a link
// to a regular file is listed, a dangling one or one to anything else is
// not. Hidden files are left out, as the platform's listing of normal files
// leaves them out: temporary files are hidden. Raises RuntimeError 76 (Path
// not found) when the folder does not exist.
std::vector<std::string> listFolderFiles(const std::string& folder);

// Classifies the files `fileNames` of `folderspec` (ending in the separator)
// by their titles: a title holding "kesta exam demo" makes an exam, one
// holding "kesta quiz demo" a quiz, both make both, and a title with neither
// is skipped. Files past the 31st exam or the 11th quiz are skipped; a file
// is only read while one of the catalogues still has room.
std::vector<CatalogueHit> classifyFiles(const std::string& folderspec, const std::vector<std::string>& fileNames,
                                        const TitleReader& titleOf);

// Empties both catalogues, then stores every hit in its slot.
void fillCatalogues(Catalogues& catalogues, const std::vector<CatalogueHit>& hits);

// The enciphered title of a question file: its first line, read through a
// link as the loader reads it. A file the loader would refuse (not a regular
// file, larger than a question file may be, a first line longer than any
// title) has none, so it is offered as no test. Raises RuntimeError 53 for a missing file and 62
// (Input past end of file) for an empty one.
std::optional<std::string> titleLine(const std::string& path);

} // namespace kesta

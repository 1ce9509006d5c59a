// Saved progress and the score history of the main window.
#include "app/ui/Form1.h"

namespace kesta {

void Form1::Save_Progress_Click() {}
void Form1::Save_Score_Click() {}
void Form1::ch01_Click(int) {}
void Form1::r01_Click(int) {}
void Form1::Restore_PracticeExam(int) {}
void Form1::RestoreDomainQuiz(int) {}
void Form1::OpenSavedTest(const std::string&) {}
void Form1::ResetScoreMenu() {}
void Form1::Check_File_ViewScore(const std::string&, const std::string&) {}
void Form1::mnuScore01_Click(int) {}

} // namespace kesta

// The session routines of the main window.
#include "app/ui/Form1.h"

namespace kesta {

void Form1::Chapter1_Click(int) {}
void Form1::Review1_Click(int) {}
void Form1::Start_Test_Click() {}
void Form1::Option1_Click() {}
void Form1::Option2_Click() {}
void Form1::Option3_Click() {}
void Form1::Option4_Click() {}
void Form1::Form_KeyPress(int) {}
void Form1::Command2_Click() {}
void Form1::Back_Command1_Click() {}
void Form1::Timer1_Timer() {}
void Form1::Timer2_Timer() {}
void Form1::Finish_Click() {}
void Form1::EndExam_Click() {}
void Form1::ViewAnswer_Click() {}
void Form1::quitMenuItem_Click() {}
void Form1::PrintQuestions() {}

} // namespace kesta

// The test catalogue, its menus and the options. (Filled in by the catalogue work.)
#include "app/ui/Form1.h"

namespace kesta {

void Form1::Create_Menu() {}
void Form1::GetFolderList(const std::string&) {}
std::string Form1::GetTitle(const std::string&) { return {}; }
void Form1::Adjust_Menu() {}
void Form1::Enable_Mnu_Items() {}
void Form1::Check_File(const std::string&) {}
void Form1::ReadOptions() {}
void Form1::mnuOptions_Click() {}
void Form1::AboutItem_Click() {}

} // namespace kesta

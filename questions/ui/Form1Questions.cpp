// Loading a question file into the main window.
#include "app/ui/Form1.h"

namespace kesta {

std::string Form1::DecryptString(const std::string&, const std::string&) { return {}; }
void Form1::ReadFile(const std::string&) {}

} // namespace kesta

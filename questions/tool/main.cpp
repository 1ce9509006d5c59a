// kesta-qbank: the question-bank authoring tool. (Filled in by the question-bank work.)
int main() { return 2; }

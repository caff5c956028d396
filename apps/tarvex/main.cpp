// The program: everything behind it lives in a library, so that tests can call it.
#include "tarvex/command_line.h"

int main(int argc, char** argv) { return tarvex::app::RunProgram(argc, argv); }

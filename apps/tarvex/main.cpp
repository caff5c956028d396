#include "tarvex/command_line.h"

int main(int argc, char** argv) { return tarvex::app::RunProgram(argc, argv); }

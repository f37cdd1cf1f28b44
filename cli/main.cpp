// teskread.
#include "cli/CommandLine.h"

int main(int argc, char** argv) { return tesk::cli::RunCommandLine(argc, argv); }

// teskread.
#include "cli/CommandLine.h"
#include "platform/Platform.h"

int main(int argc, char** argv) {
  tesk::platform::ReserveStandardStreams();
  return tesk::cli::RunCommandLine(argc, argv);
}

#include <string>
#include <vector>

#include "cli/CommandLine.h"
#include "platform/Platform.h"

int main(int argc, char** argv) {
  tesk::platform::ReserveStandardStreams();
  const auto arguments = tesk::platform::CommandLineTexts(argc, argv);
  std::vector<const char*> texts;
  for (const std::string& argument : arguments) texts.push_back(argument.c_str());
  return tesk::cli::RunCommandLine(static_cast<int>(texts.size()), texts.data());
}

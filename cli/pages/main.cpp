// Writes the pages about the command line into a folder: teskread.1, teskread.bash, _teskread. Runs when the program
// is built.
//   teskread_pages FOLDER DATE     DATE is the release's, YYYY-MM-DD
#include <exception>
#include <fstream>
#include <iostream>
#include <string>

#include "cli/pages/CommandPages.h"

namespace {

void Write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file.exceptions(std::ios::badbit | std::ios::failbit);
  file << text;
  file.close();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    const std::string folder = argv[1];
    const auto manual = tesk::cli::ReadManual();
    Write(folder + "/teskread.1", tesk::cli::ManPage(manual, argv[2]));
    Write(folder + "/teskread.bash", tesk::cli::BashCompletion(manual));
    Write(folder + "/_teskread", tesk::cli::ZshCompletion(manual));
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "teskread_pages: " << error.what() << '\n';
    return 1;
  }
}

// The type library in the server against the committed text of it.
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "platform/windows/Text.h"
#include "tests/windows/Host.h"
#include "tests/windows/LibraryDump.h"

namespace tesk::test {
namespace {

std::string Committed() {
  std::ifstream file(platform::WideToUtf8(SourceFolder() + L"TeskReader99.tlb.txt"), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The first line that differs, for a message of bearable length.
std::string FirstDifference(const std::string& found, const std::string& expected) {
  std::istringstream foundLines(found);
  std::istringstream expectedLines(expected);
  std::string foundLine;
  std::string expectedLine;
  for (int number = 1;; ++number) {
    const bool more = static_cast<bool>(std::getline(foundLines, foundLine));
    const bool expectedMore = static_cast<bool>(std::getline(expectedLines, expectedLine));
    if (!more && !expectedMore) return "";
    if (more != expectedMore || foundLine != expectedLine) {
      return "line " + std::to_string(number) + "\n  found:    " + (more ? foundLine : "(end)") +
             "\n  expected: " + (expectedMore ? expectedLine : "(end)");
    }
  }
}

TEST(Library, TheBinaryInterfaceIsNeverChangedUnknowingly) {
  ComPtr<ITypeLib> library;
  ASSERT_EQ(S_OK, LoadTypeLibEx(ServerPath().c_str(), REGKIND_NONE, &library));
  const std::string found = DumpOf(library.Get());
  // Beside this program, to be compared with the committed one and put in its place after a wanted change.
  std::ofstream(platform::WideToUtf8(ProgramFolder() + L"TeskReader99.tlb.txt"), std::ios::binary) << found;
  EXPECT_EQ("", FirstDifference(found, Committed()));
}

// It knows no unsigned numbers, and hands arrays over by reference alone.
TEST(Library, VisualBasicCanCallEveryMember) {
  std::istringstream lines(Committed());
  for (std::string line; std::getline(lines, line);) {
    const std::string declared = line.substr(0, line.find('"'));
    for (const char* unknown : {"?", "(in SAFEARRAY", ", in SAFEARRAY"}) {
      EXPECT_EQ(std::string::npos, declared.find(unknown)) << line;
    }
  }
}

TEST(Library, TheInterfacesBeginBehindThoseOfTheSystem) {
  // A wrong base would shift every member for early-bound hosts while late-bound ones notice nothing.
  const std::string text = Committed();
  EXPECT_NE(std::string::npos, text.find("  28 1 get HRESULT Barcodes(")) << text.substr(0, 400);
}

}  // namespace
}  // namespace tesk::test

// teskread settings, scan --key, locate and firmware as a person types them.
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/process/Process.h"

namespace tesk::test {
namespace {

using testing::HasSubstr;
using Texts = std::vector<std::string>;

// A configuration folder of the test's own.
class ProcessSettings : public testing::Test {
 protected:
  ProcessSettings() { ::setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1); }
  ~ProcessSettings() override { ::unsetenv("XDG_CONFIG_HOME"); }

  // The exit status; the texts are kept.
  int Run(Texts arguments) {
    Process process(Teskread(std::move(arguments)));
    const int status = process.Wait();
    output = process.Output();
    error = process.Error();
    return status;
  }

  TemporaryDirectory folder_;
  std::string output;
  std::string error;
};

TEST_F(ProcessSettings, SavedSettingsAreShownChangedScannedWithAndDeleted) {
  ASSERT_EQ(Run({"settings", "save", "--key", "School\\Lab", "--reader", "13", "--set", "Port=3", "--set",
                 "TimeOut=7"}),
            0)
      << error;
  ASSERT_EQ(Run({"settings", "save", "--key", "School/Lab", "--set", "SleepTime=20"}), 0) << error;
  EXPECT_EQ(Run({"settings", "show", "--key", "School\\Lab"}), 0);
  EXPECT_THAT(output, HasSubstr("ScannerType              13\n"));
  EXPECT_THAT(output, HasSubstr("ScannerPort              3\n"));
  EXPECT_THAT(output, HasSubstr("SleepTime                20\n"));
  EXPECT_EQ(Run({"scan", "--key", "School\\Lab", "--port", "sim", "--side1", "20x48", "--max-sheets", "2",
                 "--format", "ndjson"}),
            0)
      << error;
  EXPECT_THAT(output, HasSubstr("{\"sheet\":2,\"reader\":13,"));
  EXPECT_EQ(Run({"settings", "delete", "--key", "School\\Lab"}), 0);
  EXPECT_EQ(Run({"settings", "show", "--key", "School\\Lab"}), 1);
  EXPECT_THAT(error, HasSubstr("nothing is saved"));
}

TEST_F(ProcessSettings, ChangeLeavesEverythingElseAsItIsStored) {
  ASSERT_EQ(Run({"settings", "save", "--key", "A", "--reader", "13", "--set", "Resolution=300", "--set",
                 "ColorDepth=2"}),
            0)
      << error;
  const std::string file = folder_ / "config/teskreader99/settings.conf";
  std::string expected = FileText(file);
  const std::string before = "\"TimeOut\" = \"10\"";
  ASSERT_NE(expected.find(before), std::string::npos) << expected;
  expected.replace(expected.find(before), before.size(), "\"TimeOut\" = \"30\"");
  EXPECT_EQ(Run({"settings", "save", "--key", "A", "--set", "TimeOut=30"}), 0) << error;
  EXPECT_EQ(FileText(file), expected);
  EXPECT_EQ(Run({"settings", "save", "--key", "A", "--set", "DuplexForm=True"}), 2);
  EXPECT_THAT(error, HasSubstr("DuplexForm is not kept among the settings"));
  EXPECT_EQ(FileText(file), expected);
}

TEST_F(ProcessSettings, KeysThatDoNotFitAreRefused) {
  EXPECT_EQ(Run({"scan", "--key", "None\\Here", "--port", "sim", "--side1", "20x48"}), 1);
  EXPECT_THAT(error, HasSubstr("no settings for a reader are saved under None\\Here"));
  EXPECT_EQ(Run({"settings", "save", "--key", "New", "--set", "Port=3"}), 2);
  EXPECT_THAT(error, HasSubstr("--reader: is required"));
  EXPECT_EQ(Run({"settings", "save", "--key", "\\", "--reader", "13"}), 2);
  EXPECT_EQ(Run({"settings", "save", "--key", "A", "--root", "Nowhere", "--reader", "13"}), 2);
  ASSERT_EQ(Run({"settings", "save", "--key", "A", "--reader", "13"}), 0);
  EXPECT_EQ(Run({"scan", "--key", "A", "--reader", "15", "--port", "sim", "--side1", "20x48"}), 1);
  EXPECT_THAT(error, HasSubstr("are for \"Scantron Scanmark 2500\", not for the Scantron Scanmark 5500"));
}

TEST_F(ProcessSettings, DamagedFileIsNamedWithItsLineAndLeftAlone) {
  ASSERT_EQ(Run({"settings", "save", "--key", "A", "--reader", "13"}), 0);
  const std::string file = folder_ / "config/teskreader99/settings.conf";
  const std::string damaged = FileText(file) + "oops\n";
  WriteFile(file, damaged);
  EXPECT_EQ(Run({"settings", "save", "--key", "A", "--reader", "13"}), 1);
  EXPECT_THAT(error, HasSubstr("damaged in line"));
  EXPECT_EQ(FileText(file), damaged);
}

TEST_F(ProcessSettings, ScannerIsLocatedAndSaysItsFirmware) {
  const std::string link = folder_ / "scanner";
  Process scanner(Teskread({"simulate", "--reader", "20", "--link", link}));
  ASSERT_THAT(scanner.ReadLine(), HasSubstr("listening on "));
  for (int port = 1; port <= 16; ++port) {
    const std::string path = port == 3 ? link : folder_ / "missing";
    ::setenv(("TESKREADER_PORT_" + std::to_string(port)).c_str(), path.c_str(), 1);
  }
  EXPECT_EQ(Run({"locate", "--reader", "20"}), 0) << error;
  EXPECT_EQ(output, "3\n");
  EXPECT_EQ(Run({"firmware", "--reader", "20", "--port", "3"}), 0) << error;
  EXPECT_EQ(output, "OMR-1100 - Version 1.04\n");
  EXPECT_EQ(Run({"locate", "--reader", "13"}), 1);
  EXPECT_THAT(error, HasSubstr("cannot be searched for"));
  for (int port = 1; port <= 16; ++port) ::unsetenv(("TESKREADER_PORT_" + std::to_string(port)).c_str());
}

}  // namespace
}  // namespace tesk::test

// teskread settings, scan --key, locate and firmware as a person types them.
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/process/Process.h"

namespace tesk::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A configuration folder of the test's own.
class ProcessSettings : public testing::Test {
 protected:
  ProcessSettings() { ::setenv("XDG_CONFIG_HOME", (folder_ / "config").c_str(), 1); }
  ~ProcessSettings() override { ::unsetenv("XDG_CONFIG_HOME"); }

  // The exit status; the texts are kept.
  int Run(const Texts& arguments) {
    const Ran ran = RunTeskread(arguments);
    output = ran.output;
    error = ran.error;
    return ran.status;
  }
  int Save(const Texts& more) { return Run(Joined({"settings", "save", "--key", "A"}, more)); }
  // Puts `stored` where `sound` stands in the file.
  void Spoil(const std::string& sound, const std::string& stored) {
    std::string text = FileText(file_);
    ASSERT_NE(text.find(sound), std::string::npos) << text;
    WriteFile(file_, text.replace(text.find(sound), sound.size(), stored));
  }

  TemporaryDirectory folder_;
  const std::string file_ = folder_ / "config/teskreader99/settings.conf";
  std::string output;
  std::string error;
};

TEST_F(ProcessSettings, SavedSettingsAreShownChangedScannedWithAndDeleted) {
  const Texts lab = {"--key", "School\\Lab"};
  ASSERT_EQ(Run(Joined({"settings", "save", "--reader", "13", "--set", "Port=3", "--set", "TimeOut=7"}, lab)),
            0);
  ASSERT_EQ(Run({"settings", "save", "--key", "School/Lab", "--set", "SleepTime=20"}), 0) << error;
  EXPECT_EQ(Run(Joined({"settings", "show"}, lab)), 0);
  EXPECT_THAT(output, AllOf(HasSubstr("ReaderType               ScannerType              13\n"),
                            HasSubstr("Port                     ScannerPort              3\n"),
                            HasSubstr("SleepTime                20\n")));
  EXPECT_EQ(Run({"settings", "list"}), 0);
  EXPECT_THAT(output, AllOf(StartsWith("\"School\\Lab\" "), HasSubstr("Scantron Scanmark 2500"),
                            HasSubstr(" port 3\n")));
  EXPECT_EQ(Run(Joined({"scan", "--port", "sim", "--side1", "20x48", "--max-sheets", "2"}, lab)), 0) << error;
  EXPECT_THAT(output, HasSubstr("{\"sheet\":2,\"reader\":13,"));
  EXPECT_EQ(Run(Joined({"settings", "delete"}, lab)), 0);
  EXPECT_EQ(Run(Joined({"settings", "show"}, lab)), 1);
  EXPECT_THAT(error, AllOf(HasSubstr("nothing is saved"), HasSubstr("settings list")));
}

// The example that the help shows, and what the list prints, given to a shell as they stand there.
TEST_F(ProcessSettings, KeysInTheHelpAndTheListSurviveAShell) {
  const auto shell = [](const std::string& line) {
    Process process({"/bin/sh", "-c", Teskread({}).front() + " " + line});
    EXPECT_EQ(process.Wait(), 0) << line << process.Error();
  };
  ASSERT_EQ(Run({"settings", "save", "--help"}), 0);
  const std::size_t at = output.find("settings save --key");
  shell(output.substr(at, output.find('\n', at) - at));
  EXPECT_THAT(FileText(file_), HasSubstr("[CurrentUser\\School\\Lab]"));
  ASSERT_EQ(Run({"settings", "delete", "--key", "School\\Lab"}), 0);
  for (const char* key : {"a b", "\xC3\x89t\xC3\xA9\\$HOME", "it's \"7\"", "`x`!", "$(x)'"}) {
    ASSERT_EQ(Run({"settings", "save", "--key", key, "--reader", "13"}), 0);
    ASSERT_EQ(Run({"settings", "list"}), 0);
    shell("settings delete --key " + output.substr(0, output.find(" Scantron Scanmark 2500")));
    EXPECT_EQ(Run({"settings", "show", "--key", key}), 1) << key;
  }
}

TEST_F(ProcessSettings, ADevicePathStandsBesideThePortUntilAPortIsChosen) {
  const std::string link = folder_ / "serial0";
  Scanner scanner({"--reader", "11", "--count", "2", "--link", link});
  ASSERT_EQ(Save({"--reader", "11", "--port", link}), 0) << error;
  EXPECT_EQ(Run({"settings", "list"}), 0);
  EXPECT_THAT(output, HasSubstr(" " + link + "\n"));
  EXPECT_EQ(Run({"settings", "show", "--key", "A"}), 0);
  EXPECT_THAT(output, AllOf(HasSubstr("--port                   ScannerDevice            " + link + "\n"),
                            HasSubstr("ScannerPort              1\n")));
  ::setenv("TESKREADER_PORT_5", link.c_str(), 1);
  for (const Texts& port : {Texts{}, {"--set", "Port=5"}}) {
    EXPECT_EQ(Run(Joined({"scan", "--key", "A", "--side1", "50x48", "--max-sheets", "1"}, port)), 0) << error;
    EXPECT_THAT(output, HasSubstr("{\"sheet\":1,\"reader\":11,"));
  }
  ::unsetenv("TESKREADER_PORT_5");
  for (const Texts& change : {Texts{"--port", "4"}, {"--set", "Port=4"}, {"--reader", "11"}}) {
    ASSERT_EQ(Save({"--port", "ttyACM0"}), 0) << error;
    EXPECT_THAT(FileText(file_), HasSubstr("\"ScannerDevice\" = \"/dev/ttyACM0\""));
    ASSERT_EQ(Save(change), 0) << error;
    EXPECT_THAT(FileText(file_), Not(HasSubstr("ScannerDevice")));
  }
}

TEST_F(ProcessSettings, WhatNoLineAndNotThisModelCanDoIsNotSaved) {
  const struct {
    const char* reader;
    const char* set;
    const char* says;  // empty: it is saved
  } cases[] = {
      {"11", "Port=17", "Port takes 1 to 16"},
      {"11", "Port=16", ""},
      {"11", "TimeOut=0", "1 to 600 seconds"},
      {"11", "TimeOut=+601", "1 to 600 seconds"},
      {"11", "TimeOut=600", ""},
      {"11", "SleepTime=-1", "0 to 60000 milliseconds"},
      {"11", "SleepTime=60000", ""},
      {"11", "BaudRate=4800", "a bit rate: 110 300"},
      {"11", "BaudRate=teskReaderBaudRate300", ""},
      {"11", "DataBits=9", "4 to 8"},
      {"11", "Parity=Even", "one of N E O M S"},
      {"11", "Parity= ", ""},
      {"11", "StopBits=3", "one of 1 1.5 2"},
      {"11", "StopBits=2.0", ""},
      {"11", "FlowControl=4", "0 none, 1 XON/XOFF"},
      {"11", "ColorDepth=3", "0 monochrome"},
      {"11", "ReaderType=47", "a number of the list of models"},
      {"11", "RecognitionThreshold=16", "0 to 15, the darkness scale of the Scantron Scanmark 2000"},
      {"24", "RecognitionThreshold=191", "192 to 254"},
      {"24", "RecognitionThreshold=254", ""},
      {"11", "Duplex=True", "the Scantron Scanmark 2000 reads one side only"},
      {"24", "Printer=True", "has no imprinter"},
      {"11", "Printer=True", ""},
      {"11", "Barcode=1", "reads no barcodes"},
      {"11", "DuplexForm=True", "DuplexForm is not kept among the settings"},
  };
  for (const auto& [reader, set, says] : cases) {
    EXPECT_EQ(Save({"--reader", reader, "--set", set}), *says ? 2 : 0) << set;
    EXPECT_THAT(error, HasSubstr(says)) << set;
    EXPECT_EQ(Run({"settings", "delete", "--key", "A"}), *says ? 1 : 0) << "what is saved of " << set;
  }
}

TEST_F(ProcessSettings, SavedTextsThatNobodyCanUseAreNamedWithWhatToDo) {
  const struct {
    std::string sound;
    std::string stored;
    const char* says;
    const char* help;
  } cases[] = {{"\"ScannerType\" = \"13\"", "\"ScannerType\" = \"99999\"",
                "for a reader \"99999\", which is none", "save --key A --reader R"},
               {"\"ScannerType\" = \"13\"", "\"ScannerType\" = \"47\"", "for a reader \"47\", which is none",
                "save --key A --reader R"},
               {"\"Duplex\" = \"True\"", "\"Duplex\" = \"yes\"", "its text is \"yes\"",
                "save --key A --set NAME=VALUE"},
               {"\"Duplex\" = \"True\"\n", "oops\n", "damaged in line", ""}};
  for (const auto& [sound, stored, says, help] : cases) {
    ASSERT_EQ(Save({"--reader", "13"}), 0) << error;
    Spoil(sound, stored);
    EXPECT_EQ(Run({"scan", "--key", "A", "--port", "sim", "--side1", "20x48"}), 1);
    EXPECT_THAT(error, AllOf(HasSubstr(says), HasSubstr(help), Not(HasSubstr("mismatch"))));
  }
  const std::string damaged = FileText(file_);
  EXPECT_EQ(Save({"--reader", "13"}), 1);
  EXPECT_EQ(FileText(file_), damaged);
}

TEST_F(ProcessSettings, ChangeLeavesEverythingElseAsItIsStored) {
  ASSERT_EQ(Save({"--reader", "13", "--set", "Resolution=300", "--set", "ColorDepth=2"}), 0) << error;
  const std::string before = FileText(file_);
  Spoil("\"TimeOut\" = \"10\"", "\"TimeOut\" = \"30\"");
  const std::string expected = FileText(file_);
  WriteFile(file_, before);
  EXPECT_EQ(Save({"--set", "TimeOut=30"}), 0) << error;
  EXPECT_EQ(FileText(file_), expected);
}

TEST_F(ProcessSettings, KeysThatDoNotFitAreRefused) {
  const Texts sheets = {"--port", "sim", "--side1", "20x48"};
  EXPECT_EQ(Run(Joined({"scan", "--key", "None\\Here"}, sheets)), 1);
  EXPECT_THAT(error, HasSubstr("no settings for a reader are saved under None\\Here"));
  EXPECT_EQ(Save({"--set", "Port=3"}), 2);
  EXPECT_THAT(error, HasSubstr("--reader: is required"));
  EXPECT_EQ(Run({"settings", "save", "--key", "\\", "--reader", "13"}), 2);
  EXPECT_EQ(Save({"--root", "Nowhere", "--reader", "13"}), 2);
  ASSERT_EQ(Save({"--reader", "13"}), 0);
  EXPECT_EQ(Run(Joined({"scan", "--key", "A", "--reader", "15"}, sheets)), 1);
  EXPECT_THAT(error, HasSubstr("are for \"Scantron Scanmark 2500\", not for the Scantron Scanmark 5500"));
}

TEST_F(ProcessSettings, ScannerIsLocatedAndSaysItsFirmware) {
  const std::string link = folder_ / "scanner";
  const std::string missing = folder_ / "missing";
  Scanner scanner({"--reader", "20", "--link", link});
  const auto port = [](int number) { return "TESKREADER_PORT_" + std::to_string(number); };
  for (int n = 1; n <= 16; ++n) ::setenv(port(n).c_str(), (n == 3 ? link : missing).c_str(), 1);
  const struct {
    Texts arguments;
    int status;
    std::string output;
    std::string error;  // a part of it
  } cases[] = {
      {{"locate"}, 0, "3\n", "\n  1 to 2 (" + missing + " to " + missing + "): "},
      {{"firmware", "--port", "3"}, 0, "OMR-1100 - Version 1.04\n", ""},
      {{"locate", "--port", missing, "--port", link},
       0,
       link + "\n",
       "could not be opened, so not asked:\n  " + missing + ": The device cannot "},
      {{"locate", "--port", "4", "--port", folder_ / "gone"},
       1,
       "",
       "\n  4 (" + missing + "): The device cannot"},
      {{"locate", "--port", "4"}, 1, "", "teskread locate: no scanner answered on these ports"},
      {{"locate", "--start", "3"}, 0, "3\n", ""},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Run(Joined(row.arguments, {"--reader", "20"})), row.status) << error;
    EXPECT_EQ(output, row.output);
    EXPECT_THAT(error, HasSubstr(row.error));
    EXPECT_EQ(error.empty(), row.error.empty()) << error;
  }
  for (int n = 1; n <= 16; ++n) ::unsetenv(port(n).c_str());
}

}  // namespace
}  // namespace tesk::test

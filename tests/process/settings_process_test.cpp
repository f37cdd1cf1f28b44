// teskread settings, scan --key, locate and firmware as a person types them.
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/process/Process.h"

namespace tesk::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
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
  EXPECT_THAT(output, HasSubstr("ReaderType               ScannerType              13\n"));
  EXPECT_THAT(output, HasSubstr("Port                     ScannerPort              3\n"));
  EXPECT_THAT(output, HasSubstr("SleepTime                20\n"));
  EXPECT_EQ(Run({"settings", "list"}), 0);
  EXPECT_THAT(output, AllOf(StartsWith("\"School\\Lab\" "), HasSubstr("Scantron Scanmark 2500"),
                            HasSubstr(" port 3\n")));
  EXPECT_EQ(Run({"scan", "--key", "School\\Lab", "--port", "sim", "--side1", "20x48", "--max-sheets", "2",
                 "--format", "ndjson"}),
            0)
      << error;
  EXPECT_THAT(output, HasSubstr("{\"sheet\":2,\"reader\":13,"));
  EXPECT_EQ(Run({"settings", "delete", "--key", "School\\Lab"}), 0);
  EXPECT_EQ(Run({"settings", "show", "--key", "School\\Lab"}), 1);
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
  EXPECT_THAT(FileText(folder_ / "config/teskreader99/settings.conf"),
              HasSubstr("[CurrentUser\\School\\Lab]"));
  ASSERT_EQ(Run({"settings", "delete", "--key", "School\\Lab"}), 0);
  for (const char* key : {"a b",
                          "\xC3\x89"
                          "cole\\$HOME",
                          "it's \"7\"", "`x`!", "$(x)'"}) {
    ASSERT_EQ(Run({"settings", "save", "--key", key, "--reader", "13"}), 0);
    ASSERT_EQ(Run({"settings", "list"}), 0);
    shell("settings delete --key " + output.substr(0, output.find(" Scantron Scanmark 2500")));
    EXPECT_EQ(Run({"settings", "show", "--key", key}), 1) << key;
  }
}

TEST_F(ProcessSettings, ADevicePathStandsBesideThePortUntilAPortIsChosen) {
  const std::string link = folder_ / "serial0";
  Process scanner(Teskread({"simulate", "--reader", "11", "--count", "2", "--link", link}));
  ASSERT_THAT(scanner.ReadLine(), HasSubstr("listening on "));
  ASSERT_EQ(Run({"settings", "save", "--key", "A", "--reader", "11", "--port", link}), 0) << error;
  EXPECT_EQ(Run({"settings", "list"}), 0);
  EXPECT_THAT(output, HasSubstr(" " + link + "\n"));
  EXPECT_EQ(Run({"settings", "show", "--key", "A"}), 0);
  EXPECT_THAT(output, AllOf(HasSubstr("--port                   ScannerDevice            " + link + "\n"),
                            HasSubstr("ScannerPort              1\n")));
  EXPECT_EQ(Run({"scan", "--key", "A", "--side1", "50x48", "--max-sheets", "1"}), 0) << error;
  EXPECT_THAT(output, HasSubstr("{\"sheet\":1,\"reader\":11,"));
  ::setenv("TESKREADER_PORT_5", link.c_str(), 1);
  EXPECT_EQ(Run({"scan", "--key", "A", "--set", "Port=5", "--side1", "50x48", "--max-sheets", "1"}), 0)
      << error;
  ::unsetenv("TESKREADER_PORT_5");
  const std::string file = folder_ / "config/teskreader99/settings.conf";
  for (const Texts& change : {Texts{"--port", "4"}, Texts{"--set", "Port=4"}, Texts{"--reader", "11"}}) {
    ASSERT_EQ(Run({"settings", "save", "--key", "A", "--port", "ttyACM0"}), 0) << error;
    EXPECT_THAT(FileText(file), HasSubstr("\"ScannerDevice\" = \"/dev/ttyACM0\""));
    Texts save{"settings", "save", "--key", "A"};
    save.insert(save.end(), change.begin(), change.end());
    ASSERT_EQ(Run(save), 0) << error;
    EXPECT_THAT(FileText(file), testing::Not(HasSubstr("ScannerDevice")));
  }
  ASSERT_EQ(Run({"settings", "save", "--key", "A", "--port", link}), 0) << error;
  EXPECT_EQ(Run({"settings", "delete", "--key", "A"}), 0);
  EXPECT_THAT(FileText(file), testing::Not(HasSubstr("Scanner")));
}

TEST_F(ProcessSettings, WhatNoLineAndNotThisModelCanDoIsNotSaved) {
  struct Case {
    const char* reader;
    const char* set;
    const char* says;  // empty: it is saved
  };
  for (const auto& [reader, set, says] :
       {Case{"11", "Port=17", "Port takes 1 to 16"},
        {"11", "Port=16", ""},
        {"11", "Port=+17", "Port takes 1 to 16"},
        {"11", "TimeOut=0", "1 to 600 seconds"},
        {"11", "TimeOut=+601", "1 to 600 seconds"},
        {"11", "TimeOut=600", ""},
        {"11", "SleepTime=-1", "0 to 60000 milliseconds"},
        {"11", "SleepTime=60000", ""},
        {"11", "BaudRate=4800", "a bit rate: 110 300"},
        {"11", "BaudRate=teskReaderBaudRate300", ""},
        {"11", "DataBits=9", "4 to 8"},
        {"11", "Parity=Even", "one of N E O M S"},
        {"11", "Parity=e", ""},
        {"11", "Parity= ", ""},
        {"11", "Parity=", "one of N E O M S"},
        {"11", "StopBits=3", "one of 1 1.5 2"},
        {"11", "StopBits=2.0", ""},
        {"11", "FlowControl=4", "0 none, 1 XON/XOFF"},
        {"11", "ColorDepth=3", "0 monochrome"},
        {"11", "ReaderType=47", "a number of the list of models"},
        {"11", "ReaderType=teskReaderTypeNone", "1 to 46"},
        {"11", "RecognitionThreshold=16", "0 to 15, the darkness scale of the Scantron Scanmark 2000"},
        {"24", "RecognitionThreshold=191", "192 to 254"},
        {"24", "RecognitionThreshold=254", ""},
        {"11", "Duplex=True", "the Scantron Scanmark 2000 reads one side only"},
        {"11", "Duplex=False", ""},
        {"24", "Printer=True", "has no imprinter"},
        {"11", "Printer=True", ""},
        {"11", "Barcode=1", "reads no barcodes"}}) {
    EXPECT_EQ(Run({"settings", "save", "--key", "A", "--reader", reader, "--set", set}), *says ? 2 : 0)
        << set;
    EXPECT_THAT(error, HasSubstr(says)) << set;
    EXPECT_EQ(Run({"settings", "delete", "--key", "A"}), *says ? 1 : 0) << "what is saved of " << set;
  }
}

TEST_F(ProcessSettings, SavedTextsThatNobodyCanUseAreNamedWithWhatToDo) {
  struct Case {
    std::string sound;
    std::string damaged;
    const char* says;
    const char* help;
  };
  for (const auto& [sound, damaged, says, help] :
       {Case{"\"ScannerType\" = \"13\"", "99999", "for a reader \"99999\", which is none",
             "save --key A --reader R"},
        {"\"ScannerType\" = \"13\"", "-3", "for a reader \"-3\", which is none", "save --key A --reader R"},
        {"\"ScannerType\" = \"13\"", "47", "for a reader \"47\", which is none", "save --key A --reader R"},
        {"\"ScannerPort\" = \"1\"", "99999", "its text is \"99999\"", "save --key A --set NAME=VALUE"},
        {"\"Duplex\" = \"True\"", "yes", "its text is \"yes\"", "save --key A --set NAME=VALUE"}}) {
    ASSERT_EQ(Run({"settings", "save", "--key", "A", "--reader", "13"}), 0) << error;
    const std::string file = folder_ / "config/teskreader99/settings.conf";
    std::string text = FileText(file);
    ASSERT_NE(text.find(sound), std::string::npos) << text;
    const std::string name = sound.substr(0, sound.find('=') + 1);
    WriteFile(file, text.replace(text.find(sound), sound.size(), name + " \"" + damaged + "\""));
    EXPECT_EQ(Run({"scan", "--key", "A", "--port", "sim", "--side1", "20x48"}), 1);
    EXPECT_THAT(error, AllOf(HasSubstr(says), HasSubstr(help), testing::Not(HasSubstr("Overflow")),
                             testing::Not(HasSubstr("Type mismatch"))));
    EXPECT_EQ(Run({"settings", "list"}), 0);
  }
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
  EXPECT_EQ(Run({"locate", "--reader", "20", "--port", folder_ / "missing", "--port", link}), 0) << error;
  EXPECT_EQ(output, link + "\n");
  EXPECT_THAT(
      error, HasSubstr("could not be opened, so not asked:\n  " + (folder_ / "missing: The device cannot ")));
  EXPECT_EQ(Run({"locate", "--reader", "20", "--port", "4", "--port", folder_ / "gone"}), 1);
  EXPECT_THAT(error, AllOf(HasSubstr("\n  4 (" + (folder_ / "missing): The device cannot")),
                           HasSubstr("\n  " + (folder_ / "gone: The device cannot")),
                           HasSubstr("teskread locate: no scanner answered on these ports"),
                           HasSubstr("\"teskread ports\" lists")));
  EXPECT_EQ(Run({"locate", "--reader", "20", "--start", "3"}), 0);
  EXPECT_EQ(error, "");
  EXPECT_EQ(Run({"locate", "--reader", "20"}), 0);
  EXPECT_THAT(error, HasSubstr("\n  1 to 2 (" + (folder_ / "missing to ") + (folder_ / "missing): ")));
  for (int port = 1; port <= 16; ++port) ::unsetenv(("TESKREADER_PORT_" + std::to_string(port)).c_str());
}

}  // namespace
}  // namespace tesk::test

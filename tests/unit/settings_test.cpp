// Saving and loading the engine's settings, and the rules of stored values.
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/SettingsStores.h"
#include "platform/SettingsText.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using platform::SettingsText;
using platform::StoredText;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A store in memory that can be told to fail.
class MemoryStore : public SettingsStore {
 public:
  bool SaveValues(teskReaderRegistryKey, const std::string& key,
                  const std::vector<StoredValue>& given) override {
    if (fails) throw RunTimeError(75, "No rights");
    ++writes;
    for (const auto& [name, text] : given) {
      values[key + "|" + name] = text;
      order.push_back(name);
    }
    return true;
  }
  std::optional<std::string> LoadValue(teskReaderRegistryKey, const std::string& key,
                                       const std::string& name) override {
    order.push_back(name);
    if (fails) throw RunTimeError(75, "No rights");
    const auto found = values.find(key + "|" + name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  bool DeleteValues(teskReaderRegistryKey, const std::string&, const std::vector<std::string>&) override {
    return false;
  }

  std::map<std::string, std::string> values;
  std::vector<std::string> order;
  int writes = 0;
  bool fails = false;
};

class SettingsTest : public ::testing::Test {
 protected:
  std::shared_ptr<clsTeskReader> NewReader() {
    auto time = std::make_shared<VirtualTime>();
    return CreateReader(ReaderParts{.serial = nullptr, .loop = time, .clock = time, .settings = store});
  }
  bool Load(clsTeskReader& reader, const std::string& key = "Lab") {
    return reader.LoadSettings(teskReaderRegistryKeyCurrentUser, key);
  }

  RecordingHost host;
  std::shared_ptr<MemoryStore> store = std::make_shared<MemoryStore>();
  std::shared_ptr<clsTeskReader> reader = NewReader();
};

TEST_F(SettingsTest, MissingKeyLeavesEveryPropertyAtItsMissingValue) {
  reader->LoadDefaults(teskReaderTypeSekonicSR8000Hybrid);
  EXPECT_TRUE(Load(*reader));
  EXPECT_EQ(reader->ReaderType(), teskReaderTypeNone);
  EXPECT_TRUE(reader->ImagingEnabled());
  EXPECT_EQ(reader->BaudRate(), 9600);
  EXPECT_EQ(reader->DataBits(), 7);
  EXPECT_EQ(reader->Parity(), "N");
  EXPECT_EQ(reader->Port(), 1);
  EXPECT_EQ(reader->StopBits(), 1);
  EXPECT_EQ(reader->SleepTime(), 50);
  EXPECT_EQ(reader->TimeOut(), 10);
  EXPECT_EQ(reader->Resolution(), -1);  // "200" goes through the Boolean rule
  EXPECT_FALSE(reader->Duplex() || reader->Feeder() || reader->Barcode() || reader->Image());
  EXPECT_EQ(reader->RecognitionThreshold(), 0);
}

TEST_F(SettingsTest, RoundTripKeepsEveryStoredProperty) {
  reader->LoadDefaults(teskReaderTypeNCSOpScan8);
  reader->SetPort(7);
  reader->SetBarcode(true);
  reader->SetDuplex(true);
  reader->SetImage(true);
  reader->SetReaderGrade(true);
  reader->SetContinuous(true);
  reader->SetWindowing(true);
  reader->Printer()->SetEnabled(true);
  reader->SetStopBits(1.5F);
  reader->SetSleepTime(70000);
  reader->SetTimeOut(99);
  reader->SetMarkCutOff(-3);
  reader->SetBaudRate(teskReaderBaudRate256000);
  ASSERT_TRUE(reader->SaveSettings(teskReaderRegistryKeyCurrentUser, "Lab"));
  EXPECT_EQ(store->order, SettingNames());
  EXPECT_EQ(store->writes, 1) << "in one go";
  const auto saved = store->values;
  EXPECT_EQ(saved.at("Lab|ScannerStopBits"), "1.5");
  EXPECT_EQ(saved.at("Lab|Duplex"), "True");
  EXPECT_EQ(saved.at("Lab|ScannerType"), "26");

  const auto other = NewReader();
  store->order.clear();
  ASSERT_TRUE(Load(*other));
  EXPECT_EQ(store->order.front(), "ScannerType");
  EXPECT_EQ(store->order.size(), SettingNames().size());
  EXPECT_TRUE(other->Printer()->Enabled());
  other->SetResolution(reader->Resolution());  // does not come back, see below
  store->values.clear();
  ASSERT_TRUE(other->SaveSettings(teskReaderRegistryKeyCurrentUser, "Lab"));
  EXPECT_EQ(store->values, saved);
}

TEST_F(SettingsTest, EmptyTextIsStoredAsOneBlankInTheCallersVariableToo) {
  reader->SetParity("");
  ASSERT_TRUE(reader->SaveSettings(teskReaderRegistryKeyCurrentUser, "Lab"));
  EXPECT_EQ(store->values["Lab|ScannerParity"], " ");
  std::string text;
  ASSERT_TRUE(reader->SaveValue(teskReaderRegistryKeyCurrentUser, "Lab", "X", text));
  EXPECT_EQ(text, " ");
}

TEST_F(SettingsTest, ColorDepthAndResolutionGoThroughTheBooleanRule) {
  for (const auto& [stored, depth, resolution] :
       {std::tuple{"0", 0, 0}, {"2", 0, -1}, {"300", 0, -1}, {"True", 0, -1}, {"False", 0, 0}}) {
    store->values = {{"Lab|ColorDepth", stored}, {"Lab|Resolution", stored}};
    ASSERT_TRUE(Load(*reader)) << stored;
    EXPECT_EQ(reader->ColorDepth(), depth) << stored;
    EXPECT_EQ(reader->Resolution(), resolution) << stored;
  }
}

struct HostileCase {
  const char* name;
  const char* value;
  std::int32_t error;
  const char* takes;
};

class HostileValues : public SettingsTest, public ::testing::WithParamInterface<HostileCase> {};

TEST_P(HostileValues, AreReportedAndKeepWhatWasAssignedBefore) {
  const HostileCase& c = GetParam();
  store->values = {{"Lab|ScannerType", "4"}, {std::string("Lab|") + c.name, c.value}, {"Lab|TimeOut", "33"}};
  EXPECT_FALSE(Load(*reader));
  EXPECT_EQ(reader->ReaderType(), teskReaderTypeNCSOpScan4);
  EXPECT_NE(reader->TimeOut(), 33) << "loading went on";
  EXPECT_THAT(host.Sources(), ElementsAre("clsTeskReader.LoadSettings"));
  EXPECT_EQ(host.errors[0].number, c.error);
  EXPECT_EQ(host.errors[0].message, "The saved setting " + std::string(c.name) +
                                        " cannot be used: it takes " + c.takes + ", but its text is \"" +
                                        c.value + "\".");
  EXPECT_EQ(host.errors[0].detail, "Choose the scanner's settings again in its setup, and save them.");
}

INSTANTIATE_TEST_SUITE_P(
    Values, HostileValues,
    ::testing::Values(HostileCase{"ScannerPort", "99999999999", 6, "a whole number from -32768 to 32767"},
                      HostileCase{"ScannerPort", "32768", 6, "a whole number from -32768 to 32767"},
                      HostileCase{"ScannerBaud", "1e300", 6, "a whole number from -2147483648 to 2147483647"},
                      HostileCase{"ScannerStopBits", "1e39", 6, "a number within single precision"},
                      HostileCase{"Duplex", "perhaps", 13, "True, False or a number"},
                      HostileCase{"Duplex", "%1%2", 13, "True, False or a number"},
                      HostileCase{"Duplex", "", 13, "True, False or a number"}),
    [](const auto& info) { return info.param.name + std::string("Case") + std::to_string(info.index); });

TEST_F(SettingsTest, LongTextThatDoesNotConvertIsShownInPart) {
  store->values = {{"Lab|Duplex", std::string(59, 'x') + "\xC3\xA4" + std::string(900, 'y')}};
  EXPECT_FALSE(Load(*reader));
  EXPECT_THAT(host.errors.at(0).message, ::testing::EndsWith("text is \"" + std::string(59, 'x') + "...\"."));
}

TEST_F(SettingsTest, TextThatConvertsIsNotBlamedForAnImprinterThatIsGone) {
  reader->SetPrinter(nullptr);
  EXPECT_FALSE(Load(*reader));
  EXPECT_EQ(host.errors.back().source, "Quillon Reader - clsTeskReader.LoadSettings");
  EXPECT_EQ(host.errors.back().message, "Object variable not set");
}

TEST_F(SettingsTest, FailingStoreIsReportedUnderTheValuesOwnSource) {
  store->fails = true;
  EXPECT_FALSE(reader->SaveSettings(teskReaderRegistryKeyCurrentUser, "Lab"));
  EXPECT_FALSE(Load(*reader));
  EXPECT_THAT(host.Sources(), ElementsAre("clsTeskReader.SaveValue", "clsTeskReader.LoadValue"));
}

// ---- The rules of stored values

TEST(StoredValues, TypesAreReadAsTheyAlwaysWere) {
  using namespace std::string_view_literals;
  const std::tuple<std::uint32_t, std::string_view, std::optional<std::string>> kCases[] = {
      {1, "text"sv, "text"},
      {1, "cut\0off"sv, "cut"},
      {1, "no terminator at all"sv, "no terminator at all"},
      {2, "%SystemRoot%\0"sv, "%SystemRoot%"},
      {4, "\x05\0\0\0"sv, "5"},
      {4, "\x34\x12\0\0"sv, "4660"},
      {4, "\x02\x01\0\0"sv, "18"},  // one digit each: not 258
      {4, "\0\x01\0\0"sv, ""},
      {4, "\xff\xff\xff\xff"sv, "-1"},
      {3, "binary"sv, std::nullopt},
      {7, "a\0b\0"sv, std::nullopt},
      {0, ""sv, std::nullopt},
  };
  for (const auto& [type, bytes, text] : kCases) EXPECT_EQ(StoredText(type, bytes), text) << type;
}

TEST(StoredValues, KeysArePathsAndNothingElse) {
  EXPECT_EQ(platform::CanonicalKey("School/Lab\\"), "School\\Lab");
  EXPECT_EQ(platform::CanonicalKey(""), "");
  for (const char* bad : {"a\nb", "\x7f"}) EXPECT_THROW(platform::CanonicalKey(bad), RunTimeError) << bad;
  EXPECT_THROW(platform::CanonicalKey(std::string(256, 'x')), RunTimeError);
  EXPECT_THROW(platform::RootName(static_cast<teskReaderRegistryKey>(7)), RunTimeError);
}

// ---- The settings file's text

TEST(SettingsFileText, AnyValueComesBackAsItWas) {
  SettingsText settings;
  std::string every;
  for (int c = 1; c < 256; ++c) every += static_cast<char>(c);
  settings.Set("CurrentUser\\A", "every byte", every);
  settings.Set("CurrentUser\\A", "blank", " ");
  settings.Set("CurrentUser\\B", "quote \"\\", "\\x41");
  const SettingsText back = SettingsText::Parse(settings.Text(), "f");
  EXPECT_EQ(back.Find("currentuser\\a", "EVERY BYTE"), every);
  EXPECT_EQ(back.Find("CurrentUser\\A", "blank"), " ");
  EXPECT_EQ(back.Find("CurrentUser\\B", "quote \"\\"), "\\x41");
  EXPECT_EQ(back.Find("CurrentUser\\C", "blank"), std::nullopt);
}

TEST(SettingsFileText, DamageIsRefusedWithItsLine) {
  const std::pair<const char*, int> kCases[] = {
      {"\"a\" = \"b\"\n", 1},        {"# c\n[G]\n\"a\" = \"b\n", 3}, {"[G]\na = b\n", 2},
      {"[G]\n\"a\" = \"b\" c\n", 2}, {"[G]\n\"a\" = \"\\q\"\n", 2},  {"[G]\n\"a\" = \"\\xZZ\"\n", 2},
      {"[G]\n\n\"a\" \"b\"\n", 3},   {"[G]\n\"\" = \"b\"\n", 2},     {"[G\n", 1},
  };
  for (const auto& [text, line] : kCases) {
    const auto error = Attempt([&] { SettingsText::Parse(text, "f"); });
    ASSERT_TRUE(error) << text;
    EXPECT_THAT(error->Description(), HasSubstr("line " + std::to_string(line))) << text;
  }
}

TEST(SettingsFileText, EveryCutOfAFileIsReadOrRefusedButNeverMisread) {
  SettingsText settings;
  settings.Set("CurrentUser\\A", "ScannerPort", "12");
  settings.Set("CurrentUser\\A", "TimeOut", "34");
  const std::string text = settings.Text();
  for (std::size_t cut = 0; cut < text.size(); ++cut) {
    std::optional<std::string> port;
    if (Attempt([&] {
          port = SettingsText::Parse(text.substr(0, cut), "f").Find("CurrentUser\\A", "ScannerPort");
        })) {
      continue;
    }
    EXPECT_TRUE(!port || port == "12") << cut;
  }
}

TEST(SettingsFileText, RemovingTheLastValueRemovesTheGroup) {
  SettingsText settings;
  settings.Set("CurrentUser\\A", "x", "1");
  EXPECT_FALSE(settings.Remove("CurrentUser\\A", "y"));
  EXPECT_TRUE(settings.Remove("CurrentUser\\a", "X"));
  EXPECT_THAT(settings.Text(), ::testing::Not(HasSubstr("[")));
}

}  // namespace
}  // namespace tesk::test

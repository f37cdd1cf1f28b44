// Saving and loading the engine's settings, and the rules of stored values.
#include "engine/settings.h"

#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/SettingsStores.h"
#include "platform/settingsText.h"
#include "tests/support/TestBench.h"

namespace tesk::test {
namespace {

using platform::SettingsText;
using platform::StoredText;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr auto kRoot = teskReaderRegistryKeyCurrentUser;

// A store in memory that can be told to fail.
class SettingsTest : public ::testing::Test, public SettingsStore {
 protected:
  bool SaveValues(teskReaderRegistryKey, const std::string& key,
                  const std::vector<StoredValue>& given) override {
    Ask("saved");
    for (const auto& [name, text] : given) {
      values[key + "|" + name] = text;
      Ask(name + "=" + text);
    }
    return true;
  }
  std::optional<std::string> LoadValue(teskReaderRegistryKey, const std::string& key,
                                       const std::string& name) override {
    Ask(name);
    const auto found = values.find(key + "|" + name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  bool DeleteValues(teskReaderRegistryKey, const std::string&, const std::vector<std::string>&) override {
    return false;
  }
  void Ask(const std::string& what) {
    if (fails) throw RunTimeError(75, "No rights");
    asked += what + " ";
  }

  std::shared_ptr<clsTeskReader> NewReader() {
    return CreateReader(
        ReaderParts{.serial = nullptr,
                    .loop = time,
                    .clock = time,
                    .settings = std::shared_ptr<SettingsStore>(std::shared_ptr<void>(), this)});
  }
  bool Load(clsTeskReader& given) { return given.LoadSettings(kRoot, "Lab"); }
  bool Save() { return reader->SaveSettings(kRoot, "Lab"); }

  std::map<std::string, std::string> values;
  std::string asked;
  bool fails = false;
  RecordingHost host;
  std::shared_ptr<VirtualTime> time = std::make_shared<VirtualTime>();
  std::shared_ptr<clsTeskReader> reader = NewReader();
};

// A value of the setting's kind that no other one has; the imprinter takes what a fitted one does.
SettingValue ValueAt(const EngineSetting& setting, std::size_t position) {
  const auto number = static_cast<std::int32_t>(position);
  switch (setting.kind) {
    case SettingKind::Boolean:
      return true;
    case SettingKind::Single:
      return static_cast<float>(number) + 0.5F;
    case SettingKind::Text:
      return "text " + std::to_string(number);
    default:
      // The scanner model decides about the imprinter; a color depth is stored only where it is one.
      return setting.name == "ReaderType"   ? teskReaderTypeNCSOpScan2
             : setting.name == "ColorDepth" ? 2
                                            : number + 100;
  }
}

TEST_F(SettingsTest, EverySettingIsKeptOnItsOwn) {
  const auto texts = [&] {
    std::vector<std::string> list;
    for (const EngineSetting& setting : EngineSettings()) list.push_back(SettingText(setting.get(*reader)));
    return list;
  };
  reader->SetReaderType(teskReaderTypeNCSOpScan2);
  reader->SetCancelScan(false);
  auto expected = texts();
  for (std::size_t i = 0; i < EngineSettings().size(); ++i) {
    const EngineSetting& setting = EngineSettings()[i];
    setting.set(*reader, ValueAt(setting, i));
    expected[i] = SettingText(ValueAt(setting, i));
    EXPECT_EQ(texts(), expected) << setting.name;
  }
  EXPECT_THROW(SettingNamed("Port").set(*reader, 32768), RunTimeError) << "more than 16 bits hold";
  EXPECT_THROW(AssignSaved(*reader, {"DuplexForm", "True"}), RunTimeError) << "is not saved";
}

// What hosts that read the registry themselves rely on. "200" dots go through the Boolean rule.
TEST_F(SettingsTest, AMissingKeyIsLoadedAndSavedAsHostsExpect) {
  reader->LoadDefaults(teskReaderTypeScantron8000);
  EXPECT_TRUE(Load(*reader));
  EXPECT_EQ(asked.find("ScannerType "), 0U) << "re-types the imprinter that \"Printer\" then sets";
  EXPECT_EQ(std::ranges::count(asked, ' '), 26);
  asked.clear();
  ASSERT_TRUE(Save());
  EXPECT_EQ(
      asked,
      "saved ImagingEnabled=True ReaderGrade=False Barcode=False Duplex=False Feeder=False FlowControl=0 "
      "Image=False MarkCutOff=0 MarkDiscrimination=0 Printer=False ScannerType=0 ErasureThreshold=0 "
      "RecognitionThreshold=0 RecognitionThresholdMax=0 Reject=False ScannerBaud=9600 "
      "ScannerDataBits=7 ScannerParity=N ScannerPort=1 ScannerStopBits=1 SleepTime=50 TimeOut=10 "
      "Continuous=False Windowing=False ColorDepth=0 Resolution=-1 ");
}

TEST_F(SettingsTest, RoundTripKeepsEveryStoredProperty) {
  reader->LoadDefaults(teskReaderTypeNCSOpScan8);
  for (const EngineSetting& setting : EngineSettings()) {
    if (setting.savedAs && setting.kind == SettingKind::Boolean) setting.set(*reader, true);
  }
  reader->SetPort(7);
  reader->SetStopBits(1.5F);
  reader->SetSleepTime(70000);
  reader->SetMarkCutOff(-3);
  reader->SetBaudRate(teskReaderBaudRate256000);
  reader->SetResolution(-1);  // nothing else comes back
  ASSERT_TRUE(Save());
  const auto other = NewReader();
  ASSERT_TRUE(Load(*other));
  EXPECT_EQ(SavedTexts(*other), SavedTexts(*reader));
  EXPECT_TRUE(other->Printer()->Enabled());
}

TEST_F(SettingsTest, EmptyTextIsStoredAsOneBlankInTheCallersVariableToo) {
  reader->SetParity("");
  ASSERT_TRUE(Save());
  EXPECT_EQ(values["Lab|ScannerParity"], " ");
  std::string text;
  ASSERT_TRUE(reader->SaveValue(kRoot, "Lab", "X", text));
  EXPECT_EQ(text, " ");
}

TEST_F(SettingsTest, ColorDepthAndResolutionGoThroughTheBooleanRule) {
  for (const auto& [stored, resolution] : {std::pair{"0", 0}, {"2", -1}, {"True", -1}, {"False", 0}}) {
    values = {{"Lab|ColorDepth", stored}, {"Lab|Resolution", stored}};
    EXPECT_TRUE(Load(*reader) && reader->ColorDepth() == 0) << stored;
    EXPECT_EQ(reader->Resolution(), resolution) << stored;
  }
}

TEST_F(SettingsTest, TextsThatDoNotConvertAreReportedAndKeepWhatWasAssignedBefore) {
  constexpr const char* kWhole16 = "a whole number from -32768 to 32767";
  constexpr const char* kBoolean = "True, False or a number";
  const std::string longText = std::string(59, 'x') + "\xC3\xA4" + std::string(900, 'y');
  const struct {
    const char* name;
    std::string value;
    std::int32_t error;
    const char* takes;
    std::string shown;
  } kCases[] = {{"ScannerPort", "99999999999", 6, kWhole16, "99999999999"},
                {"ScannerPort", "32768", 6, kWhole16, "32768"},
                {"ScannerBaud", "1e300", 6, "a whole number from -2147483648 to 2147483647", "1e300"},
                {"ScannerStopBits", "1e39", 6, "a number within single precision", "1e39"},
                {"Resolution", "x", 13, kBoolean, "x"},
                {"Duplex", "%1%2", 13, kBoolean, "%1%2"},
                {"Duplex", "", 13, kBoolean, ""},
                {"Duplex", std::string(60, 'x'), 13, kBoolean, std::string(60, 'x')},
                {"Duplex", longText, 13, kBoolean, std::string(59, 'x') + "..."}};
  for (const auto& c : kCases) {
    host.errors.clear();
    reader = NewReader();
    values = {{"Lab|ScannerType", "4"}, {std::string("Lab|") + c.name, c.value}};
    EXPECT_FALSE(Load(*reader));
    EXPECT_TRUE(asked.ends_with(std::string(c.name) + " ")) << "loading went on";
    EXPECT_EQ(reader->ReaderType(), teskReaderTypeNCSOpScan4);
    ASSERT_THAT(host.Sources(), ElementsAre("clsTeskReader.LoadSettings"));
    EXPECT_EQ(host.errors[0].number, c.error);
    EXPECT_EQ(host.errors[0].message, "The saved setting " + std::string(c.name) +
                                          " cannot be used: it takes " + c.takes + ", but its text is \"" +
                                          c.shown + "\".");
    EXPECT_EQ(host.errors[0].detail, "Choose the scanner's settings again in its setup, and save them.");
  }
}

TEST_F(SettingsTest, TextsAreNotBlamedForAStoreThatFailsOrAnImprinterThatIsGone) {
  fails = true;
  EXPECT_FALSE(Save());
  EXPECT_FALSE(Load(*reader));
  fails = false;
  reader->SetPrinter(nullptr);
  EXPECT_FALSE(Load(*reader));
  EXPECT_THAT(host.Sources(), ElementsAre("clsTeskReader.SaveValue", "clsTeskReader.LoadValue",
                                          "clsTeskReader.ReaderType", "clsTeskReader.LoadSettings"));
  EXPECT_EQ(host.errors.back().message, "Object variable not set");
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
      {0, ""sv, std::nullopt}};
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
      {"[G]\n\n\"a\" \"b\"\n", 3},   {"[G]\n\"\" = \"b\"\n", 2},     {"[G\n", 1}};
  for (const auto& [text, line] : kCases) {
    const auto error = Attempt([&] { SettingsText::Parse(text, "f"); });
    ASSERT_TRUE(error) << text;
    EXPECT_THAT(error->Description(), HasSubstr("line " + std::to_string(line))) << text;
  }
}

TEST(SettingsFileText, EveryCutOfAFileIsReadOrRefusedButNeverMisread) {
  SettingsText settings;
  for (const char* name : {"ScannerPort", "TimeOut"}) settings.Set("A", name, "12");
  const std::string text = settings.Text();
  for (std::size_t cut = 0; cut < text.size(); ++cut) {
    Attempt([&] {
      const auto port = SettingsText::Parse(text.substr(0, cut), "f").Find("A", "ScannerPort");
      EXPECT_EQ(port.value_or("12"), "12") << cut;
    });
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

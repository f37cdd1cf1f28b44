// The setup dialog's spin fields, its reader-grade box and its search button.
#include <array>
#include <map>
#include <tuple>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "setup/optionControls.h"
#include "setup/optionsLayout.h"
#include "setup/spinField.h"
#include "simulator/Simulators.h"
#include "tests/support/OptionsBench.h"

namespace tesk::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using enum ControlId;

// ---- The reader-grade box

TEST(ReaderGrade, HandsTheThresholdsOverToTheReadersThatScoreThemselves) {
  for (const auto& [type, scores] :
       std::map<teskReaderType, bool>{{teskReaderTypeNCSOpScan3, true},
                                      {teskReaderTypeNCSOpScaniNSIGHT4, true},
                                      {teskReaderTypeAppersonAdvantageLink, false}}) {
    Dialog dialog(type);
    dialog.Load();
    const int drawn = dialog.view.refreshed;
    dialog.form.Click(chkReaderGrade);
    EXPECT_EQ(dialog.view.refreshed, drawn + (scores ? 1 : 0));
    EXPECT_EQ(dialog.view.calls.size(), scores ? 1U : 0U);
    for (const ControlId id : {txtRecognitionThreshold, txtMarkDiscrimination, txtMarkCutOff}) {
      EXPECT_EQ(dialog[id].enabled, !scores) << ControlName(id);
      EXPECT_EQ(dialog[*LabelOf(id)].enabled, !scores) << ControlName(id);
    }
    EXPECT_TRUE(dialog[txtErasureThreshold].enabled);
    dialog.form.Click(chkReaderGrade);
    EXPECT_EQ(dialog.view.calls.size(), scores ? 1U : 0U) << "clearing says nothing";
    EXPECT_TRUE(dialog[txtMarkCutOff].enabled);
  }
}

TEST(ReaderGrade, IsLoadedWithoutANoteAndHasNoSayWhereNobodyCanClearIt) {
  Dialog dialog(teskReaderTypeNCSOpScan2);
  dialog.reader->SetReaderGrade(true);
  dialog.Load();
  EXPECT_THAT(dialog.view.calls, IsEmpty());
  EXPECT_FALSE(dialog[txtMarkCutOff].enabled);
  dialog.form.Click(chkReaderGrade);
  dialog.form.Click(chkReaderGrade);
  EXPECT_THAT(
      dialog.view.calls,
      ElementsAre(
          "information|Scanner Settings|Note: SelfScore uses predefined values for recognition "
          "threshold, mark discrimination, and discrimination cut-off. To return the scanner settings "
          "to the default values, click the Defaults button."));
  dialog.form.Click(cmdDefaults);
  EXPECT_TRUE(dialog[txtMarkCutOff].enabled);
  // It has no say where nobody can clear it.
  for (const auto type : {teskReaderTypeNCSEZData, teskReaderTypeNCSOpScan5, teskReaderTypeNCSOpScan8}) {
    Dialog fixed(type);
    fixed.reader->SetReaderGrade(true);
    fixed.Load();
    EXPECT_TRUE(fixed[txtRecognitionThreshold].enabled) << type;
  }
}

// ---- Spin fields

TEST(SpinField, IsCorrectedToItsBoundsAndDecimals) {
  const std::tuple<const char*, std::int32_t, std::int32_t, std::size_t, char, const char*> cases[] = {
      {"40", 0, 15, 0, '.', "15"},     {"-1", 0, 15, 0, '.', "0"},
      {"1", 192, 254, 0, '.', "192"},  {"15.0", 0, 15, 1, '.', "15.0"},
      {"0.0", 0, 15, 1, '.', "0.0"},   {"1.25", 0, 15, 1, '.', "1.2"},
      {"1.2", 0, 15, 1, '.', "1.2"},   {"1,25", 0, 15, 1, ',', "1,2"},
      {"1.25", 0, 15, 3, '.', "1.25"}, {"7.9", 0, 15, 0, '.', "7"},
      {"7.", 0, 15, 0, '.', "7."},     {"15.01", 0, 15, 1, '.', "15"},
      {"15,01", 0, 15, 1, ',', "15"},  {"99999999999999", 0, 600, 0, '.', "600"},
      {"", 1, 600, 0, '.', "1"},       {"-12.345", -20, 0, 2, '.', "-12.34"}};
  for (const auto& [text, minimum, maximum, decimals, separator, expected] : cases) {
    Control field{.kind = ControlKind::SpinField,
                  .text = text,
                  .minimum = minimum,
                  .maximum = maximum,
                  .decimals = decimals,
                  .separator = separator};
    EXPECT_EQ(CorrectSpinText(field), std::string(text) != expected) << text;
    EXPECT_EQ(field.text, expected) << text;
  }
}

TEST(SpinField, NeverHoldsAMinimumAboveItsMaximum) {
  using Bounds = std::pair<std::int32_t, std::int32_t>;
  const std::array<Bounds, 3> cases[] = {
      // before, asked for, afterwards
      {{{0, 15}, {192, 254}, {192, 254}}}, {{{192, 254}, {0, 15}, {0, 15}}}, {{{0, 0}, {0, 0}, {0, 0}}},
      {{{0, 15}, {15, 31}, {15, 31}}},     {{{0, 15}, {9, 4}, {9, 9}}},      {{{0, 15}, {30, 20}, {20, 20}}},
      {{{10, 15}, {20, 5}, {5, 5}}},       {{{0, 31}, {1, 8}, {1, 8}}},      {{{0, 0}, {1, 1}, {1, 1}}}};
  for (const auto& [before, asked, after] : cases) {
    Control field{.kind = ControlKind::SpinField, .minimum = before.first, .maximum = before.second};
    // The control refuses bounds that cross, so the wrong order would throw.
    EXPECT_NO_THROW(SetSpinMinMax(field, asked.first, asked.second)) << asked.first;
    EXPECT_EQ(Bounds(field.minimum, field.maximum), after);
  }
  Control field{.maximum = 15};
  EXPECT_THROW(SetSpinMinimum(field, 16), RunTimeError);
  field.minimum = 3;
  EXPECT_THROW(SetSpinMaximum(field, 2), RunTimeError);
}

TEST(SpinField, TakesOnlyTheCharactersOfItsNumbers) {
  const Control whole{.kind = ControlKind::SpinField, .maximum = 15};
  const Control fine{
      .kind = ControlKind::SpinField, .minimum = -1, .maximum = 1, .decimals = 1, .separator = ','};
  for (const char c : std::string("0123456789"))
    EXPECT_TRUE(TakesCharacter(whole, c) && TakesCharacter(fine, c));
  for (const char c : std::string("-,")) EXPECT_TRUE(!TakesCharacter(whole, c) && TakesCharacter(fine, c));
  for (const char c : std::string(".e+ a")) EXPECT_FALSE(TakesCharacter(whole, c) || TakesCharacter(fine, c));
}

TEST(SpinField, BeepsForWhatItChangesAndOnlyThen) {
  Dialog dialog(teskReaderTypeNCSOpScan2);
  dialog.Load();
  const std::string longest = std::string(19, '0') + "9";  // of which a number may have so many characters
  for (const auto& [typed, left, beeps] : {std::tuple<std::string, std::string, int>{"4", "4", 0},
                                           {"40", "15", 1},
                                           {"15", "15", 1},
                                           {"-4", "0", 2},
                                           {longest, longest, 2}}) {
    dialog.form.Type(txtRecognitionThreshold, typed);
    EXPECT_EQ(dialog[txtRecognitionThreshold].text, typed) << "checked before it is left";
    dialog.form.Leave(txtRecognitionThreshold);
    EXPECT_EQ(dialog[txtRecognitionThreshold].text, left);
    EXPECT_EQ(dialog.view.beeps, beeps) << typed;
  }
  dialog.form.Type(txtMarkCutOff, "99");
  dialog.form.ValidateSpinValue(txtMarkCutOff, true);
  EXPECT_EQ(dialog[txtMarkCutOff].text, "15");
  EXPECT_EQ(dialog.view.beeps, 2) << "silent";
}

TEST(SpinField, GivesWhatIsNoNumberBack) {
  for (const char* text : {"", "-", "abc", "1-2", "..", "1.2.3", "999999999999999999999"}) {
    Dialog dialog(teskReaderTypeNCSOpScan2);
    dialog.Load();
    dialog.form.Type(txtRecognitionThreshold, text);
    dialog.form.Leave(txtRecognitionThreshold);
    EXPECT_EQ(dialog[txtRecognitionThreshold].text, "7") << text;
    EXPECT_EQ(dialog.view.beeps, 1) << text;
  }
}

TEST(SpinField, SpinsWithinItsBoundsAndIsCheckedWhenEnterConfirmsTheDialog) {
  Dialog dialog(teskReaderTypeNCSOpScan2);
  dialog.Load();
  std::string texts;
  for (const std::int32_t steps : {1, 100, -2'000'000'000}) {
    dialog.form.Spin(txtRecognitionThreshold, steps);
    texts += dialog[txtRecognitionThreshold].text + " ";
  }
  EXPECT_EQ(texts, "8 15 0 ");
  const int drawn = dialog.view.refreshed;
  dialog.form.Type(txtRecognitionThreshold, "99");
  dialog.form.Spin(txtRecognitionThreshold, -1);
  EXPECT_EQ(dialog[txtRecognitionThreshold].text, "14") << "what is typed is corrected before it is spun";
  EXPECT_EQ(dialog.view.refreshed, drawn + 2);
  dialog.form.Spin(txtRecognitionThreshold, -14);
  EXPECT_EQ(dialog.view.refreshed, drawn + 3);
  dialog[txtRecognitionThreshold].enabled = false;
  dialog.form.Spin(txtRecognitionThreshold, 1);
  dialog.form.Type(txtRecognitionThreshold, "3");
  EXPECT_EQ(dialog[txtRecognitionThreshold].text, "0") << "disabled";
  EXPECT_EQ(dialog.view.beeps, 0);
  dialog[txtRecognitionThreshold].enabled = true;
  dialog.form.Type(txtRecognitionThreshold, "32000");
  dialog.form.Type(txtReaderTimeout, "0");
  EXPECT_EQ(dialog.ChangesOnceConfirmed(), "RecognitionThreshold=15 TimeOut=1 ");
  EXPECT_EQ(dialog.view.beeps, 2);
}

// ---- Lists

TEST(ListOfNumbers, TakesAnUnusualOneInAndNothingThatIsNone) {
  Control list;
  list.entries = {{"9600 baud", "9600"}, {"110 baud", "110"}};
  const auto choose = [&](const char* value) {
    ChooseNumber(list, value, " baud");
    return std::pair(list.chosen, list.entries.size());
  };
  EXPECT_EQ(choose("110"), std::pair(1, std::size_t{2}));
  for (const char* none : {"0", "-5", "x"}) EXPECT_EQ(choose(none), std::pair(-1, std::size_t{2})) << none;
  EXPECT_EQ(choose("123"), std::pair(2, std::size_t{3}));
  EXPECT_EQ(list.entries[2].text, "123 baud");
}

// ---- The search button

constexpr const char* kLocated = "information|Scanner Located|The scanner was located on port: 3";
constexpr const char* kNotLocated =
    "warning|Scanner Not Located|The scanner was not located. Please check to ensure that the scanner has "
    "power and is "
    "properly connected to the computer.";

std::shared_ptr<simulator::Scanner> Identifying() {
  return simulator::CreateScanner(teskReaderTypeChatsworthOMR1100, {});
}

TEST(LocateButton, ChoosesThePortAndLeavesTheEngineAsItWas) {
  Dialog dialog(teskReaderTypeScanningSystemsSR601, Identifying());
  dialog.reader->Printer()->SetDistance(31);
  dialog.reader->SetDataBits(teskReaderDataBits5);
  dialog.reader->SetStopBits(2);
  dialog.Load();
  dialog.ChooseReader(teskReaderTypeChatsworthOMR1100);
  dialog.Choose(cboBaud, "19200");
  const int drawn = dialog.view.refreshed;
  dialog.form.Click(cmdLocate);
  EXPECT_EQ(dialog.view.refreshed, drawn + 1);
  EXPECT_THAT(dialog.serial->asked, ElementsAre(2, 1, 2, 3));
  EXPECT_EQ(dialog.serial->settings.bitRate, 19200) << "the dialog's choices, not the engine's";
  EXPECT_THAT(dialog.view.calls, ElementsAre("hourglass", kLocated, "arrow"));
  EXPECT_EQ(dialog.Chosen(cboPort).value, "3");
  EXPECT_EQ(dialog.Changes(), "");
  EXPECT_EQ(dialog.view.unloaded, 0);
  dialog.form.Click(cmdOK);
  EXPECT_EQ(dialog.reader->Port(), 3) << "reaches the engine when the dialog is confirmed";
}

TEST(LocateButton, WarnsWhenNobodyAnsweredAfterTheEngineIsAsItWas) {
  Dialog dialog(teskReaderTypeScanningSystemsSR601, nullptr);
  dialog.serial->port = 0;
  dialog.Load();
  dialog.ChooseReader(teskReaderTypeNCSEZData);
  dialog.form.Select(cboPort, -1);
  std::string atWarning = "none";
  dialog.view.onWarning = [&] { atWarning = dialog.Changes(); };
  dialog.form.Click(cmdLocate);
  EXPECT_EQ(dialog.serial->asked.size(), 16U) << "no start port";
  EXPECT_THAT(dialog.view.calls, ElementsAre("hourglass", kNotLocated, "arrow"));
  EXPECT_EQ(atWarning + dialog.Changes(), "");
  EXPECT_EQ(dialog.Chosen(cboPort).value, "-");
}

TEST(LocateButton, SaysWhyNothingCanBeLookedForAndIsNotThereForReadersThatCannotBeLocated) {
  Dialog dialog(teskReaderTypeChatsworthOMR1100, Identifying());
  dialog.Load();
  dialog.reader->fComm()->mscComm()->SetCommPort(3);
  dialog.reader->fComm()->mscComm()->SetPortOpen(true);
  dialog.form.Click(cmdLocate);
  ASSERT_EQ(dialog.host.errors.size(), 1U);
  EXPECT_EQ(dialog.host.errors[0].message, "The scanner cannot be asked while its port is open");
  EXPECT_EQ(dialog.host.errors[0].detail, "Stop reading sheets, then try again.");
  EXPECT_THAT(dialog.view.calls, ElementsAre("hourglass", kNotLocated, "arrow"));
  Dialog other(teskReaderTypeNCSOpScan2, Identifying());
  other.Load();
  other.form.Click(cmdLocate);
  EXPECT_THAT(other.serial->asked, IsEmpty());
  EXPECT_THAT(other.view.calls, IsEmpty());
}

TEST(LocateButton, LetsTheUserEndTheSearchAndNothingElseMeanwhile) {
  Dialog dialog(teskReaderTypeChatsworthOMR1100,
                simulator::CreateScanner(teskReaderTypeChatsworthOMR1100,
                                         {.faults = {{simulator::FaultKind::SilenceIdentify}}}));
  dialog.reader->SetPort(3);
  dialog.Load();
  dialog.time->onMessages = [&](int turn) {
    dialog.form.Click(cmdOK);
    dialog.form.Click(cmdLocate);
    dialog.Choose(cboPort, "9");
    if (turn == 5) dialog.form.Click(cmdCancel);
  };
  dialog.form.Click(cmdLocate);
  EXPECT_THAT(dialog.serial->asked, ElementsAre(3));
  EXPECT_THAT(dialog.view.calls, ElementsAre("hourglass", "arrow")) << "cancelling shows no message";
  EXPECT_EQ(dialog.view.unloaded, 0);
  EXPECT_FALSE(dialog.form.Confirmed());
  EXPECT_EQ(dialog.Chosen(cboPort).value, "3");
  EXPECT_EQ(dialog.Changes(), "");
  dialog.form.Click(cmdCancel);
  EXPECT_EQ(dialog.view.unloaded, 1);
}

}  // namespace
}  // namespace tesk::test

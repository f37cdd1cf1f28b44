// The setup dialog without its window: what every reader of the catalogue shows, loading, saving, cancelling.
#include <map>
#include <set>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/readerNames.h"
#include "setup/optionValues.h"
#include "setup/optionsLayout.h"
#include "tests/support/OptionsBench.h"

namespace tesk::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using enum ControlId;
using P = clsTeskReaderProfile;

// ---- Every reader of the catalogue

// What is hidden, and what is shown and cannot be changed.
std::string Limits(const OptionControls& controls) {
  std::string hidden, fixed;
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const auto id = static_cast<ControlId>(i);
    const auto label = LabelOf(id);
    if (label) {
      EXPECT_EQ(controls[*label].visible, controls[id].visible) << ControlName(id);
      EXPECT_EQ(controls[*label].enabled, controls[id].enabled) << ControlName(id);
    }
    if (controls[id].kind == ControlKind::Label) continue;
    if (!controls[id].visible) hidden += std::string(ControlName(id)) + " ";
    if (controls[id].visible && !controls[id].enabled) fixed += std::string(ControlName(id)) + " ";
  }
  return "hidden: " + hidden + "fixed: " + fixed;
}

TEST(SetupDialog, HidesWhatAReaderDoesNotHaveAndFixesWhatCannotBeChanged) {
  const std::string noImages =
      "hidden: cmdLocate fraImageSettings cboColorDepth cboResolution chkContinuous fixed: ";
  for (const auto& [type, limits] : std::map<teskReaderType, std::string>{
           {teskReaderTypeNCSOpScan2,
            "hidden: cmdLocate fraImageSettings cboColorDepth cboResolution chkWindowing chkContinuous "
            "fixed: chkFeeder chkRejecter "},
           {teskReaderTypeScantron8000,
            noImages + "chkReaderGrade chkBarcode chkPrinter chkRejecter chkWindowing "},
           {teskReaderTypeScantronScanMark5500, noImages + "chkReaderGrade chkBarcode chkDuplex chkFeeder "},
           {teskReaderTypeSekonicSR3500Hybrid,
            "hidden: cmdLocate chkContinuous fixed: frmComPort cboPort cboBaud cboDataBits cboParity "
            "cboStopBits cboFlowControl chkReaderGrade chkFeeder chkWindowing "},
           {teskReaderTypePDIVMR138,
            noImages + "chkReaderGrade chkBarcode chkDuplex chkFeeder chkPrinter chkWindowing "}}) {
    Dialog dialog;
    dialog.Load();
    dialog.ChooseReader(type);
    EXPECT_EQ(Limits(dialog.form.Controls()), limits) << type;
  }
}

TEST(EveryReader, ShowsItsProposalsAndItsBounds) {
  ForEveryReader([](teskReaderType type, const P& p) {
    Dialog dialog;
    dialog.Load();
    dialog.ChooseReader(type);
    const std::set<int> selfScore{2, 3, 4, 5, 6, 25, 26, 31, 32, 23};
    EXPECT_EQ(dialog[chkReaderGrade].caption,
              selfScore.contains(type) ? "SelfSco&re option installed" : "Use scanne&r grade features");
    EXPECT_TRUE(ShowsProposals(dialog.form.Controls(), p));
    EXPECT_EQ(dialog.Chosen(cboPort).value, "2") << "no reader proposes a port";
    const auto low = p.RecognitionThresholdMinimum(), high = p.RecognitionThresholdMaximum();
    for (const auto& [id, least, most] : {std::tuple<ControlId, int, int>{txtRecognitionThreshold, low, high},
                                          {txtErasureThreshold, low, high},
                                          {txtMarkDiscrimination, 0, high},
                                          {txtMarkCutOff, low, high},
                                          {txtReaderTimeout, 1, 600},
                                          {txtSystemPause, 0, 60'000}}) {
      EXPECT_EQ(std::pair(dialog[id].minimum, dialog[id].maximum), std::pair(least, most)) << ControlName(id);
    }
  });
}

TEST(EveryReader, ComesThroughTheDialogUnchanged) {
  ForEveryReader([](teskReaderType type, const P& profile) {
    Dialog dialog(type);
    dialog.reader->SetWindowing(true);
    dialog.reader->SetTimeOut(600);
    dialog.reader->SetReaderGrade(true);
    dialog.reader->Printer()->SetDistance(77);
    dialog.Load();
    for (const ControlId id : TabOrder()) dialog.form.Leave(id);
    EXPECT_THAT(dialog.ChangesOnceConfirmed(),
                ::testing::AnyOf("", "Image=" + BooleanText(profile.Imaging()) + " "));
    EXPECT_EQ(dialog.view.beeps, 0);
  });
}

// What a registry may hold. A number that its reader lets nobody change, on a scale without extent, is its own.
TEST(EveryReader, LosesWhatIsOutOfBoundsWhenConfirmedThoughNobodyTyped) {
  ForEveryReader([](teskReaderType type, const P& p) {
    for (const bool high : {false, true}) {
      Dialog dialog(type);
      const std::int16_t stored = high ? 32'000 : -32'000;
      dialog.reader->SetRecognitionThreshold(stored);
      dialog.reader->SetMarkDiscrimination(stored);
      dialog.reader->SetSleepTime(high ? 2'147'483'647 : -1);
      dialog.reader->SetTimeOut(high ? 2'147'483'647 : -2'147'483'647);
      dialog.reader->SetReaderGrade(true);
      dialog.Load();
      dialog.form.Click(cmdOK);
      const std::int16_t least = p.RecognitionThresholdMinimum(), most = p.RecognitionThresholdMaximum();
      const bool scale = least < most;
      EXPECT_EQ(dialog.reader->RecognitionThreshold(), !scale ? stored : high ? most : least);
      EXPECT_EQ(dialog.reader->MarkDiscrimination(), !scale ? stored : high ? most : 0);
      EXPECT_EQ(dialog.reader->SleepTime(), high ? 60'000 : 0);
      EXPECT_EQ(dialog.reader->TimeOut(), high ? 600 : 1);
      EXPECT_THAT(dialog.host.Sources(), IsEmpty());
    }
  });
}

// Chosen and confirmed with no more than a port, a reader is what LoadDefaults makes it.
TEST(EveryReader, BecomesItsDefaultsWhenItAloneIsChosen) {
  ForEveryReader([](teskReaderType type, const P& p) {
    const auto other =
        type == teskReaderTypeNCSOpScan2 ? teskReaderTypeScantron8000 : teskReaderTypeNCSOpScan2;
    Dialog dialog(other), expected(other);
    dialog.Load();
    dialog.ChooseReader(type);
    dialog.Choose(cboPort, "11");
    dialog.form.Click(cmdOK);
    expected.reader->LoadDefaults(type);
    auto settings = Settings(*expected.reader);
    if (p.PortEnabled()) settings["Port"] = "11";
    settings["Windowing"] = BooleanText(p.Windowing());
    settings["Continuous"] = BooleanText(p.Continuous());
    EXPECT_EQ(Settings(*dialog.reader), settings);
  });
}

// ---- Loading

TEST(SetupDialog, ListsEveryReaderInTheCataloguesOrder) {
  Dialog dialog(teskReaderTypeChatsworthACF100);
  for (int shown = 1; shown <= 2; ++shown) dialog.Load();
  std::vector<ListEntry> readers;
  ForEveryReader([&](teskReaderType type, const P&) {
    readers.push_back({ReaderName(type), NumberText(type)});
  });
  EXPECT_EQ(dialog[cboReaderType].entries, readers);
  EXPECT_EQ(dialog.Chosen(cboReaderType).text, "Chatsworth Data ACP-100");
  EXPECT_EQ(dialog.form.Caption(), "Scanner Settings");
}

TEST(SetupDialog, ShowsTheEnginesSettingsNotTheProposals) {
  Dialog dialog(teskReaderTypeSekonicSR6500Hybrid);
  clsTeskReader& r = *dialog.reader;
  r.SetBarcode(true);
  r.SetDuplex(false);
  r.Printer()->SetEnabled(true);
  r.SetBaudRate(teskReaderBaudRate300);
  r.SetParity("M");
  r.SetStopBits(1.5F);
  r.SetDataBits(teskReaderDataBits5);
  r.SetFlowControl(teskReaderFlowControlBoth);
  r.SetColorDepth(teskReaderColorDepthColor);
  r.SetResolution(240);
  r.SetRecognitionThreshold(11);
  r.SetTimeOut(33);
  dialog.Load();
  EXPECT_TRUE(dialog[chkBarcode].checked && dialog[chkPrinter].checked && !dialog[chkDuplex].checked);
  std::string shown = dialog[txtRecognitionThreshold].text + "|" + dialog[txtReaderTimeout].text + "|";
  for (const auto list :
       {cboBaud, cboParity, cboStopBits, cboDataBits, cboFlowControl, cboColorDepth, cboResolution})
    shown += dialog.Chosen(list).text + "|";
  EXPECT_EQ(shown, "11|33|300|Mark|1.5|5|Both|Color|240 DPI|");
}

TEST(SetupDialog, ShowsTheProposalWhereTheStoredLineOrResolutionIsNone) {
  const std::tuple<std::int32_t, std::int32_t, float, const char*, std::int32_t> lines[] = {
      {4800, 0, 0.F, "X", 9},
      {0, 32'767, 7.5F, "rubbish", -1},
      {2'147'483'647, -3, 3.4e38F, "", 2'000'000'000}};
  for (const auto& [baud, bits, stop, parity, flow] : lines) {
    Dialog dialog;
    clsTeskReader& r = *dialog.reader;
    r.SetBaudRate(static_cast<teskReaderBaudRate>(baud));
    r.SetDataBits(static_cast<teskReaderDataBits>(bits));
    r.SetStopBits(stop);
    r.SetParity(parity);
    r.SetFlowControl(static_cast<teskReaderFlowControl>(flow));
    dialog.Load();
    EXPECT_EQ(dialog.ChangesOnceConfirmed(), "BaudRate=38400 DataBits=7 FlowControl=2 Parity=O StopBits=2 ");
    EXPECT_THAT(dialog.host.Sources(), IsEmpty());
  }
  for (const auto& [stored, shown] :
       std::map<std::int16_t, const char*>{{-1, "200 DPI200"}, {0, "200 DPI200"}, {1, "1 DPI1"}}) {
    Dialog dialog(teskReaderTypeSekonicSR3500Hybrid);
    dialog.reader->SetResolution(stored);
    dialog.Load();
    dialog.form.Click(cmdOK);
    EXPECT_EQ(dialog.Chosen(cboResolution).text + NumberText(dialog.reader->Resolution()), shown);
  }
}

TEST(SetupDialog, ReadsParityAsSerialLinesDo) {
  for (const auto& [parity, shown] : std::map<std::string, std::string>{
           {"n", "None"}, {"S", "Space"}, {"s", "Space"}, {" ", "Space"}, {"e", "Even"}, {"O", "Odd"}}) {
    Dialog dialog;
    dialog.reader->SetParity(parity);
    dialog.Load();
    EXPECT_EQ(dialog.Chosen(cboParity).text, shown);
    EXPECT_TRUE(dialog.form.SaveValues());
    EXPECT_EQ(dialog.Changes(), "") << "only the user changes it";
    const std::string other = shown == "Space" ? "M" : " ";
    dialog.Choose(cboParity, other);
    EXPECT_EQ(dialog.ChangesOnceConfirmed(), "Parity=" + other + " ");
  }
}

TEST(SetupDialog, StaysHarmlessForAReaderThatTheCatalogueDoesNotHave) {
  Dialog dialog;
  dialog.reader->SetReaderType(teskReaderTypeDatawinHemeraC);
  dialog.reader->SetPort(17);
  dialog.Load();
  EXPECT_EQ(dialog.Chosen(cboReaderType).value, "-");
  for (const ControlId id : TabOrder()) {
    const bool works = id == cboReaderType || id == cmdOK || id == cmdCancel;
    EXPECT_EQ(IsUsable(dialog.form.Controls(), id), works) << ControlName(id);
    if (id != cmdOK && id != cmdCancel) dialog.form.Click(id);
  }
  dialog.form.cmdLocate_Click();
  dialog.form.cmdDefaults_Click();
  EXPECT_EQ(dialog.ChangesOnceConfirmed(), "");
  EXPECT_THAT(dialog.host.messages, IsEmpty());
}

TEST(SetupDialog, TranslatesEverythingItShows) {
  Dialog dialog(teskReaderTypeSekonicSR3500Hybrid);
  const std::vector<std::string>& lookedUp = dialog.host.lookedUp;
  dialog.host.lookedUp.clear();
  const frmOptions form(*dialog.reader, dialog.view);
  std::set<std::string> shown{"Scanner Settings"};
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const Control& control = form.Controls()[static_cast<ControlId>(i)];
    if (!control.caption.empty()) shown.insert(control.caption);
    for (const ListEntry& entry : control.entries) shown.insert(entry.text);
  }
  for (const std::string& text : shown) EXPECT_THAT(lookedUp, Contains(text));
}

// ---- Saving

TEST(SetupDialog, SavesWhatTheUserChose) {
  Dialog dialog(teskReaderTypeSekonicSR8000Hybrid);
  dialog.reader->SetImage(false);
  dialog.Load();
  for (const ControlId id : {chkBarcode, chkDuplex, chkPrinter, chkRejecter, chkContinuous})
    dialog.form.Click(id);
  dialog.Choose(cboResolution, "300");
  dialog.Choose(cboColorDepth, "2");
  dialog.form.Type(txtRecognitionThreshold, "4");
  dialog.form.Type(txtErasureThreshold, "2");
  dialog.form.Type(txtMarkDiscrimination, "1");
  dialog.form.Type(txtMarkCutOff, "9");
  EXPECT_EQ(dialog.ChangesOnceConfirmed(),
            "Barcode=False ColorDepth=2 Continuous=True Duplex=False ErasureThreshold=2 Image=True "
            "MarkCutOff=9 MarkDiscrimination=1 Printer=False RecognitionThreshold=4 Rejecter=False "
            "Resolution=300 ");
  EXPECT_EQ(dialog.view.unloaded, 1);
}

TEST(SetupDialog, SavesTheLineOfSerialReadersOnly) {
  Dialog dialog;
  dialog.Load();
  dialog.Choose(cboPort, "16");
  dialog.Choose(cboBaud, "256000");
  dialog.Choose(cboDataBits, "4");
  dialog.Choose(cboStopBits, "1.5");
  dialog.Choose(cboFlowControl, "1");
  dialog.Choose(cboParity, "M");
  dialog.form.Type(txtReaderTimeout, "600");
  dialog.form.Type(txtSystemPause, "0");
  const std::string line =
      "BaudRate=256000 DataBits=4 FlowControl=1 Parity=M Port=16 SleepTime=0 StopBits=1.5 TimeOut=600 ";
  ASSERT_TRUE(dialog.form.SaveValues());
  EXPECT_EQ(dialog.Changes(), line);
  dialog.ChooseReader(teskReaderTypeSekonicSR2300);
  dialog.form.Click(chkDuplex);
  EXPECT_THAT(dialog.ChangesOnceConfirmed(), AllOf(HasSubstr("BaudRate=256000 "), HasSubstr("DataBits=4 "),
                                                   HasSubstr("Parity=M "), HasSubstr("ReaderType=30 ")))
      << "the line stays what it was when a USB reader is set up";
}

TEST(SetupDialog, KeepsWhatWasTypedForANewReader) {
  Dialog dialog(teskReaderTypeNCSOpScan2);
  dialog.Load();
  dialog.ChooseReader(teskReaderTypePDIVMR138);
  dialog.form.Type(txtRecognitionThreshold, "200");
  dialog.Choose(cboBaud, "19200");
  dialog.form.Click(cmdOK);
  const clsTeskReader& r = *dialog.reader;
  EXPECT_EQ(r.ReaderType(), teskReaderTypePDIVMR138);
  EXPECT_EQ(r.RecognitionThresholdMax(), 254) << "has no control and must not stay the old reader's";
  EXPECT_EQ(std::tuple(r.RecognitionThreshold(), r.ErasureThreshold(), r.BaudRate()),
            std::tuple(200, 190, teskReaderBaudRate19200));
}

TEST(SetupDialog, AsksForAPortBeforeItSaves) {
  const std::tuple<teskReaderType, std::int16_t, bool> cases[] = {{teskReaderTypeNCSOpScan2, 17, true},
                                                                  {teskReaderTypeNCSEZData, 0, true},
                                                                  {teskReaderTypeNCSOpScan2, 16, false},
                                                                  {teskReaderTypeSekonicSR2300, 0, false},
                                                                  {teskReaderTypeNone, 0, false}};
  const std::vector<RecordingHost::Message> prompt{
      {"Scanner Port", "Please select a port for your OMR Scanner."}};
  for (const auto& [type, port, asks] : cases) {
    Dialog dialog(type);
    dialog.reader->SetPort(port);
    dialog.Load();
    EXPECT_EQ(dialog.ChangesOnceConfirmed(), asks ? "not confirmed " : "");
    EXPECT_EQ(dialog.view.unloaded, asks ? 0 : 1);
    EXPECT_EQ(dialog.host.messages, asks ? prompt : std::vector<RecordingHost::Message>{});
    EXPECT_EQ(dialog.view.focus, asks ? std::optional(cboPort) : std::nullopt);
    if (!asks) continue;
    dialog.Choose(cboPort, "4");
    EXPECT_EQ(dialog.ChangesOnceConfirmed(), "Port=4 ");
  }
}

TEST(SetupDialog, CancelChangesNothing) {
  Dialog dialog;
  dialog.Load();
  const int drawn = dialog.view.refreshed;
  dialog.ChooseReader(teskReaderTypeSekonicSR8000Hybrid);
  EXPECT_EQ(dialog.view.refreshed, drawn + 1);
  dialog.form.Type(txtMarkCutOff, "99");
  dialog.form.Leave(txtMarkCutOff, cmdCancel);
  dialog.form.Click(cmdCancel);
  dialog.form.Leave(txtMarkCutOff);  // the window goes, and its focus with it
  EXPECT_EQ(dialog[txtMarkCutOff].text, "99") << "who cancels wants nothing checked";
  EXPECT_EQ(dialog.view.beeps, 0);
  EXPECT_FALSE(dialog.form.Confirmed());
  EXPECT_EQ(dialog.view.unloaded, 1);
  EXPECT_EQ(dialog.Changes(), "");
}

TEST(SetupDialog, DefaultsRestoreTheChosenReadersProposals) {
  Dialog dialog(teskReaderTypeScantron8000);
  const auto proposed = [&] {
    return ShowsProposals(dialog.form.Controls(), *dialog.reader->Profiles()->Item("16"));
  };
  dialog.Load();
  dialog.Choose(cboPort, "7");
  EXPECT_TRUE(proposed()) << "a port is nobody's proposal";
  dialog.form.Click(chkDuplex);
  EXPECT_FALSE(proposed());
  dialog.form.Click(chkDuplex);
  dialog.form.Select(cboBaud, Control::kNothingChosen);
  EXPECT_FALSE(proposed());
  dialog.form.Type(txtRecognitionThreshold, "98");
  dialog.form.Click(cmdDefaults);
  EXPECT_TRUE(proposed());
  EXPECT_EQ(dialog.Chosen(cboPort).value, "7");
  EXPECT_EQ(dialog.Changes(), "") << "nothing is saved before OK";
  EXPECT_EQ(dialog.view.unloaded, 0);
}

TEST(SetupDialog, ReportsAnErrorStaysOpenAndSavesNothingByHalves) {
  Dialog dialog;
  dialog.Load();
  dialog.form.Click(chkDuplex);
  dialog.Choose(cboBaud, "110");
  const auto printer = dialog.reader->Printer();
  dialog.reader->SetPrinter(nullptr);
  dialog.form.Click(cmdOK);
  dialog.reader->SetPrinter(printer);
  EXPECT_EQ(dialog.Changes(), "");
  EXPECT_FALSE(dialog.form.Confirmed());
  EXPECT_EQ(dialog.view.unloaded, 0);
  dialog.reader->SetProfiles(nullptr);
  dialog.form.LoadValues();
  EXPECT_THAT(dialog.host.Sources(), ElementsAre("frmOptions.SaveValues", "frmOptions.LoadValues"));
}

}  // namespace
}  // namespace tesk::test

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

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using enum ControlId;

// ---- Every reader of the catalogue

class EveryReader : public ::testing::TestWithParam<teskReaderType> {
 protected:
  std::shared_ptr<clsTeskReaderProfile> Profile(const Dialog& dialog) const {
    return dialog.reader->Profiles()->Item(NumberText(GetParam()));
  }
};

void ExpectState(Dialog& dialog, ControlId id, bool enabled, bool visible) {
  EXPECT_EQ(dialog[id].enabled, enabled) << ControlName(id);
  EXPECT_EQ(dialog[id].visible, visible) << ControlName(id);
  if (const auto label = LabelOf(id)) {
    EXPECT_EQ(dialog[*label].enabled, enabled) << ControlName(*label);
    EXPECT_EQ(dialog[*label].visible, visible) << ControlName(*label);
  }
}

using P = clsTeskReaderProfile;

// What a profile says of a control and its label.
struct Shown {
  ControlId id;
  bool (P::*enabled)() const;
  bool (P::*visible)() const;
};

constexpr Shown kShown[] = {
    {chkReaderGrade, &P::ReaderGradeEnabled, &P::ReaderGradeVisible},
    {chkBarcode, &P::BarcodeEnabled, &P::BarcodeVisible},
    {chkDuplex, &P::DuplexEnabled, &P::DuplexVisible},
    {chkFeeder, &P::FeederEnabled, &P::FeederVisible},
    {chkPrinter, &P::PrinterEnabled, &P::PrinterVisible},
    {chkRejecter, &P::RejecterEnabled, &P::RejecterVisible},
    {chkWindowing, &P::WindowingEnabled, &P::WindowingVisible},
    {chkContinuous, &P::ContinuousEnabled, &P::ContinuousVisible},
    {cboPort, &P::PortEnabled, &P::PortVisible},
    {cboBaud, &P::BaudRateEnabled, &P::BaudRateVisible},
    {cboDataBits, &P::DataBitsEnabled, &P::DataBitsVisible},
    {cboParity, &P::ParityEnabled, &P::ParityVisible},
    {cboStopBits, &P::StopBitsEnabled, &P::StopBitsVisible},
    {cboFlowControl, &P::FlowControlEnabled, &P::FlowControlVisible},
    {cboColorDepth, &P::ColorDepthEnabled, &P::ColorDepthVisible},
    {cboResolution, &P::ResolutionEnabled, &P::ResolutionVisible},
    {fraImageSettings, &P::ImagingEnabled, &P::ImagingVisible},
    {txtRecognitionThreshold, &P::RecognitionThresholdEnabled, &P::RecognitionThresholdVisible},
    {txtErasureThreshold, &P::RecognitionThresholdEnabled, &P::RecognitionThresholdVisible},
    {txtMarkDiscrimination, &P::MarkDiscriminationEnabled, &P::MarkDiscriminationVisible},
    {txtMarkCutOff, &P::MarkDiscriminationEnabled, &P::MarkDiscriminationVisible},
    {txtReaderTimeout, &P::TimeOutEnabled, &P::TimeOutVisible},
    {txtSystemPause, &P::SleepTimeEnabled, &P::SleepTimeVisible},
    {fraTiming, &P::TimeOutEnabled, &P::TimeOutVisible}};

TEST_P(EveryReader, ShowsWhatItHasAndLetsItBeChangedWhereItCanBe) {
  Dialog dialog;
  dialog.Load();
  dialog.ChooseReader(GetParam());
  const auto p = Profile(dialog);
  for (const auto& [id, enabled, visible] : kShown)
    ExpectState(dialog, id, ((*p).*enabled)(), ((*p).*visible)());
  ExpectState(dialog, frmComPort, p->PortEnabled(), true);
  EXPECT_EQ(dialog[cmdLocate].visible, p->LocateEnabled());
  const std::set<int> selfScore{2, 3, 4, 5, 6, 25, 26, 31, 32, 23};
  EXPECT_EQ(dialog[chkReaderGrade].caption,
            selfScore.contains(GetParam()) ? "SelfSco&re option installed" : "Use scanne&r grade features");
  EXPECT_TRUE(ShowsProposals(dialog.form.Controls(), *p));
  EXPECT_EQ(dialog.Value(cboPort), "2") << "no reader proposes a port";
  const auto low = p->RecognitionThresholdMinimum(), high = p->RecognitionThresholdMaximum();
  for (const auto& [id, least, most] : {std::tuple<ControlId, int, int>{txtRecognitionThreshold, low, high},
                                        {txtErasureThreshold, low, high},
                                        {txtMarkDiscrimination, 0, high},
                                        {txtMarkCutOff, low, high},
                                        {txtReaderTimeout, 1, 600},
                                        {txtSystemPause, 0, 60'000}}) {
    EXPECT_EQ(dialog[id].minimum, least) << ControlName(id);
    EXPECT_EQ(dialog[id].maximum, most) << ControlName(id);
  }
}

TEST_P(EveryReader, ComesThroughTheDialogUnchanged) {
  Dialog dialog(GetParam());
  dialog.reader->SetWindowing(true);
  dialog.reader->SetTimeOut(600);
  dialog.reader->SetReaderGrade(true);
  dialog.reader->Printer()->SetDistance(77);
  const auto before = Settings(*dialog.reader);
  dialog.Load();
  for (const ControlId id : TabOrder()) dialog.form.Leave(id);
  dialog.form.Click(cmdOK);
  EXPECT_TRUE(dialog.form.Confirmed());
  EXPECT_EQ(dialog.view.beeps, 0);
  const auto image = "Image=" + BooleanText(Profile(dialog)->Imaging());
  EXPECT_THAT(Changed(before, Settings(*dialog.reader)), ::testing::AnyOf(IsEmpty(), ElementsAre(image)));
}

// What a registry may hold. A number that its reader lets nobody change, on a scale without extent, is its own.
TEST_P(EveryReader, LosesWhatIsOutOfBoundsWhenConfirmedThoughNobodyTyped) {
  for (const bool high : {false, true}) {
    Dialog dialog(GetParam());
    const std::int16_t stored = high ? 32'000 : -32'000;
    dialog.reader->SetRecognitionThreshold(stored);
    dialog.reader->SetMarkDiscrimination(stored);
    dialog.reader->SetSleepTime(high ? 2'147'483'647 : -1);
    dialog.reader->SetTimeOut(high ? 2'147'483'647 : -2'147'483'647);
    dialog.reader->SetReaderGrade(true);
    dialog.Load();
    dialog.form.Click(cmdOK);
    const auto p = Profile(dialog);
    const bool scale = p->RecognitionThresholdMinimum() < p->RecognitionThresholdMaximum();
    const std::int16_t low = p->RecognitionThresholdMinimum();
    EXPECT_EQ(dialog.reader->RecognitionThreshold(), !scale ? stored
                                                     : high ? p->RecognitionThresholdMaximum()
                                                            : low);
    EXPECT_EQ(dialog.reader->MarkDiscrimination(), !scale ? stored
                                                   : high ? p->RecognitionThresholdMaximum()
                                                          : 0);
    EXPECT_EQ(dialog.reader->SleepTime(), high ? 60'000 : 0);
    EXPECT_EQ(dialog.reader->TimeOut(), high ? 600 : 1);
    EXPECT_THAT(dialog.host.Sources(), IsEmpty());
  }
}

// Chosen and confirmed with no more than a port, a reader is what LoadDefaults makes it.
TEST_P(EveryReader, BecomesItsDefaultsWhenItAloneIsChosen) {
  const auto other =
      GetParam() == teskReaderTypeNCSOpScan2 ? teskReaderTypeScantron8000 : teskReaderTypeNCSOpScan2;
  Dialog dialog(other);
  dialog.Load();
  dialog.ChooseReader(GetParam());
  dialog.Choose(cboPort, "11");
  dialog.form.Click(cmdOK);
  Dialog expected(other);
  expected.reader->LoadDefaults(GetParam());
  auto settings = Settings(*expected.reader);
  const auto p = Profile(dialog);
  if (p->PortEnabled()) settings["Port"] = "11";
  settings["Windowing"] = BooleanText(p->Windowing());
  settings["Continuous"] = BooleanText(p->Continuous());
  EXPECT_EQ(Settings(*dialog.reader), settings);
}

INSTANTIATE_TEST_SUITE_P(Catalogue, EveryReader, ::testing::ValuesIn(CatalogueTypes()),
                         [](const auto& info) { return "Type" + std::to_string(info.param); });

// ---- Loading

TEST(SetupDialog, ListsEveryReaderInTheCataloguesOrder) {
  Dialog dialog(teskReaderTypeChatsworthACF100);
  dialog.Load();
  const auto types = CatalogueTypes();
  ASSERT_EQ(dialog[cboReaderType].entries.size(), types.size());
  for (std::size_t i = 0; i < types.size(); ++i) {
    EXPECT_EQ(dialog[cboReaderType].entries[i], (ListEntry{ReaderName(types[i]), NumberText(types[i])}));
  }
  EXPECT_EQ(dialog.Text(cboReaderType), "Chatsworth Data ACP-100");
  EXPECT_EQ(dialog.form.Caption(), "Scanner Settings");
}

TEST(SetupDialog, ShowsTheEnginesSettingsNotTheProposals) {
  Dialog dialog(teskReaderTypeSekonicSR6500Hybrid);
  for (const auto& [name, value] : std::map<std::string, SettingValue>{{"Barcode", true},
                                                                       {"Duplex", false},
                                                                       {"Printer", true},
                                                                       {"BaudRate", 300},
                                                                       {"Parity", "M"},
                                                                       {"StopBits", 1.5F},
                                                                       {"DataBits", 5},
                                                                       {"FlowControl", 3},
                                                                       {"ColorDepth", 2},
                                                                       {"Resolution", 240},
                                                                       {"RecognitionThreshold", 11},
                                                                       {"TimeOut", 33}}) {
    SettingNamed(name).set(*dialog.reader, value);
  }
  dialog.Load();
  EXPECT_TRUE(dialog[chkBarcode].checked && dialog[chkPrinter].checked && !dialog[chkDuplex].checked);
  std::string shown;
  for (const auto list :
       {cboBaud, cboParity, cboStopBits, cboDataBits, cboFlowControl, cboColorDepth, cboResolution})
    shown += dialog.Text(list) + "|";
  EXPECT_EQ(shown, "300|Mark|1.5|5|Both|Color|240 DPI|");
  EXPECT_EQ(dialog[txtRecognitionThreshold].text + " " + dialog[txtReaderTimeout].text, "11 33");
  EXPECT_EQ(dialog[txtRecognitionThreshold].maximum, 15);
  EXPECT_TRUE(dialog[fraImageSettings].visible);
}

TEST(SetupDialog, ShowsTheProposalWhereTheStoredLineIsNone) {
  struct Case {
    std::int32_t baud, bits;
    float stop;
    std::string parity;
    std::int32_t flow;
  };
  for (const Case& c : {Case{4800, 0, 0, "X", 9}, Case{0, 32'767, 7.5F, "rubbish", -1},
                        Case{2'147'483'647, -3, 3.4e38F, "", 2'000'000'000}}) {
    Dialog dialog;
    clsTeskReader& r = *dialog.reader;
    r.SetBaudRate(static_cast<teskReaderBaudRate>(c.baud));
    r.SetDataBits(static_cast<teskReaderDataBits>(c.bits));
    r.SetStopBits(c.stop);
    r.SetParity(c.parity);
    r.SetFlowControl(static_cast<teskReaderFlowControl>(c.flow));
    const auto before = Settings(r);
    dialog.Load();
    dialog.form.Click(cmdOK);
    EXPECT_TRUE(dialog.form.Confirmed());
    EXPECT_THAT(Changed(before, Settings(r)),
                ElementsAre("BaudRate=38400", "DataBits=7", "FlowControl=2", "Parity=O", "StopBits=2"));
    EXPECT_THAT(dialog.host.Sources(), IsEmpty());
  }
}

TEST(SetupDialog, ProposesAResolutionWhereTheStoredOneIsNone) {
  Dialog dialog(teskReaderTypeSekonicSR3500Hybrid);
  dialog.reader->SetResolution(-1);
  dialog.Load();
  dialog.form.Click(cmdOK);
  EXPECT_EQ(dialog.Text(cboResolution) + NumberText(dialog.reader->Resolution()), "200 DPI200");
}

TEST(SetupDialog, ReadsParityAsSerialLinesDo) {
  for (const auto& [parity, shown] : std::map<std::string, std::string>{
           {"n", "None"}, {"S", "Space"}, {"s", "Space"}, {" ", "Space"}, {"e", "Even"}, {"O", "Odd"}}) {
    Dialog dialog;
    dialog.reader->SetParity(parity);
    dialog.Load();
    EXPECT_EQ(dialog.Text(cboParity), shown);
    dialog.form.Click(cmdOK);
    EXPECT_EQ(dialog.reader->Parity(), parity) << "only the user changes it";
  }
  Dialog dialog;
  dialog.Load();
  dialog.Choose(cboParity, " ");
  dialog.form.Click(cmdOK);
  EXPECT_EQ(dialog.reader->Parity(), " ");
}

TEST(SetupDialog, StaysHarmlessForAReaderThatTheCatalogueDoesNotHave) {
  Dialog dialog;
  dialog.reader->SetReaderType(teskReaderTypeDatawinHemeraC);
  dialog.reader->SetPort(17);
  const auto before = Settings(*dialog.reader);
  dialog.Load();
  EXPECT_EQ(dialog.Value(cboReaderType), "-");
  for (const ControlId id : TabOrder()) {
    const bool works = id == cboReaderType || id == cmdOK || id == cmdCancel;
    EXPECT_EQ(IsUsable(dialog.form.Controls(), id), works) << ControlName(id);
    if (id != cmdOK && id != cmdCancel) dialog.form.Click(id);
  }
  dialog.form.cmdLocate_Click();
  dialog.form.cmdDefaults_Click();
  dialog.form.Click(cmdOK);
  EXPECT_TRUE(dialog.form.Confirmed());
  EXPECT_EQ(Settings(*dialog.reader), before);
  EXPECT_THAT(dialog.host.messages, IsEmpty());
}

TEST(SetupDialog, TranslatesEverythingItShows) {
  Dialog dialog(teskReaderTypeSekonicSR3500Hybrid);
  const std::vector<std::string>& lookedUp = dialog.host.lookedUp;
  dialog.host.lookedUp.clear();
  const frmOptions form(*dialog.reader, dialog.view);
  for (std::size_t i = 0; i < kControlCount; ++i) {
    const Control& control = form.Controls()[static_cast<ControlId>(i)];
    if (!control.caption.empty()) {
      EXPECT_THAT(lookedUp, ::testing::Contains(control.caption));
    }
    for (const ListEntry& entry : control.entries) EXPECT_THAT(lookedUp, ::testing::Contains(entry.text));
  }
  EXPECT_THAT(lookedUp, ::testing::Contains("Scanner Settings"));
}

// ---- Saving

TEST(SetupDialog, SavesWhatTheUserChose) {
  Dialog dialog(teskReaderTypeSekonicSR8000Hybrid);
  dialog.reader->SetImage(false);
  const auto before = Settings(*dialog.reader);
  dialog.Load();
  for (const ControlId id : {chkBarcode, chkDuplex, chkPrinter, chkRejecter, chkContinuous})
    dialog.form.Click(id);
  dialog.Choose(cboResolution, "300");
  dialog.Choose(cboColorDepth, "2");
  dialog.form.Type(txtRecognitionThreshold, "4");
  dialog.form.Type(txtErasureThreshold, "2");
  dialog.form.Type(txtMarkDiscrimination, "1");
  dialog.form.Type(txtMarkCutOff, "9");
  dialog.form.Click(cmdOK);
  EXPECT_EQ(dialog.view.unloaded, 1);
  EXPECT_THAT(Changed(before, Settings(*dialog.reader)),
              ElementsAre("Barcode=False", "ColorDepth=2", "Continuous=True", "Duplex=False",
                          "ErasureThreshold=2", "Image=True", "MarkCutOff=9", "MarkDiscrimination=1",
                          "Printer=False", "RecognitionThreshold=4", "Rejecter=False", "Resolution=300"));
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
  const auto before = Settings(*dialog.reader);
  ASSERT_TRUE(dialog.form.SaveValues());
  EXPECT_THAT(Changed(before, Settings(*dialog.reader)),
              ElementsAre("BaudRate=256000", "DataBits=4", "FlowControl=1", "Parity=M", "Port=16",
                          "SleepTime=0", "StopBits=1.5", "TimeOut=600"));
  // The line stays what it was when a USB reader is set up.
  dialog.ChooseReader(teskReaderTypeSekonicSR2300);
  dialog.form.Click(chkDuplex);
  ASSERT_TRUE(dialog.form.SaveValues());
  EXPECT_EQ(dialog.reader->BaudRate(), 256000);
  EXPECT_EQ(dialog.reader->Parity(), "M");
}

TEST(SetupDialog, KeepsWhatWasTypedForANewReader) {
  Dialog dialog(teskReaderTypeNCSOpScan2);
  dialog.Load();
  dialog.ChooseReader(teskReaderTypePDIVMR138);
  dialog.form.Type(txtRecognitionThreshold, "200");
  dialog.Choose(cboBaud, "19200");
  dialog.form.Click(cmdOK);
  EXPECT_EQ(dialog.reader->ReaderType(), teskReaderTypePDIVMR138);
  EXPECT_EQ(dialog.reader->RecognitionThreshold(), 200);
  EXPECT_EQ(dialog.reader->BaudRate(), 19200);
  EXPECT_EQ(dialog.reader->RecognitionThresholdMax(), 254)
      << "has no control and must not stay the old reader's";
  EXPECT_EQ(dialog.reader->ErasureThreshold(), 190);
}

TEST(SetupDialog, AsksForAPortBeforeItSaves) {
  struct Case {
    teskReaderType type;
    std::int16_t port;
    bool asks;
  };
  const Case cases[] = {{teskReaderTypeNCSOpScan2, 17, true},
                        {teskReaderTypeNCSEZData, 0, true},
                        {teskReaderTypeNCSOpScan2, 16, false},
                        {teskReaderTypeSekonicSR2300, 0, false},
                        {teskReaderTypeNone, 0, false}};
  for (const Case& c : cases) {
    Dialog dialog(c.type);
    dialog.reader->SetPort(c.port);
    const auto before = Settings(*dialog.reader);
    dialog.Load();
    dialog.form.Click(cmdOK);
    EXPECT_EQ(dialog.form.Confirmed(), !c.asks);
    EXPECT_EQ(dialog.view.unloaded, c.asks ? 0 : 1);
    EXPECT_EQ(Settings(*dialog.reader), before);
    const std::vector<RecordingHost::Message> prompt{
        {"Scanner Port", "Please select a port for your OMR Scanner."}};
    EXPECT_EQ(dialog.host.messages, c.asks ? prompt : std::vector<RecordingHost::Message>{});
    EXPECT_EQ(dialog.view.focus, c.asks ? std::optional(cboPort) : std::nullopt);
    if (!c.asks) continue;
    dialog.Choose(cboPort, "4");
    dialog.form.Click(cmdOK);
    EXPECT_TRUE(dialog.form.Confirmed());
    EXPECT_EQ(dialog.reader->Port(), 4);
  }
}

TEST(SetupDialog, CancelChangesNothing) {
  Dialog dialog;
  const auto before = Settings(*dialog.reader);
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
  EXPECT_EQ(Settings(*dialog.reader), before);
}

TEST(SetupDialog, DefaultsRestoreTheChosenReadersProposals) {
  Dialog dialog(teskReaderTypeScantron8000);
  dialog.reader->SetMarkCutOff(1);
  dialog.reader->SetDuplex(false);
  dialog.reader->SetBaudRate(teskReaderBaudRate110);
  dialog.Load();
  dialog.form.Type(txtRecognitionThreshold, "98");
  dialog.Choose(cboPort, "7");
  EXPECT_FALSE(ShowsProposals(dialog.form.Controls(), *dialog.reader->Profiles()->Item("16")));
  dialog.form.Click(cmdDefaults);
  EXPECT_TRUE(ShowsProposals(dialog.form.Controls(), *dialog.reader->Profiles()->Item("16")));
  EXPECT_EQ(dialog.Value(cboPort), "7");
  EXPECT_EQ(dialog.reader->MarkCutOff(), 1) << "nothing is saved before OK";
  EXPECT_EQ(dialog.view.unloaded, 0);
}

TEST(SetupDialog, ReportsAnErrorStaysOpenAndSavesNothingByHalves) {
  Dialog dialog;
  dialog.Load();
  dialog.form.Click(chkDuplex);
  dialog.Choose(cboBaud, "110");
  auto before = Settings(*dialog.reader);
  const auto printer = dialog.reader->Printer();
  dialog.reader->SetPrinter(nullptr);
  dialog.form.Click(cmdOK);
  dialog.reader->SetPrinter(printer);
  EXPECT_EQ(Settings(*dialog.reader), before);
  EXPECT_FALSE(dialog.form.Confirmed());
  EXPECT_EQ(dialog.view.unloaded, 0);
  dialog.reader->SetProfiles(nullptr);
  dialog.form.LoadValues();
  EXPECT_THAT(dialog.host.Sources(), ElementsAre("frmOptions.SaveValues", "frmOptions.LoadValues"));
}

}  // namespace
}  // namespace tesk::test

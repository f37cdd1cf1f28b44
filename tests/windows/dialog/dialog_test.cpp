// The setup dialog's window, used as a person uses it.
#include <algorithm>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/conversions.h"
#include "tests/windows/dialog/DialogUser.h"

namespace tesk::test {
namespace {

using enum ControlId;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using Flag = bool (clsTeskReaderProfile::*)() const;

struct ProfileRow {
  ControlId id;
  Flag enabled;
  Flag visible;
};

using P = clsTeskReaderProfile;
constexpr ProfileRow kRows[] = {
    {cboPort, &P::PortEnabled, &P::PortVisible},
    {cboBaud, &P::BaudRateEnabled, &P::BaudRateVisible},
    {cboParity, &P::ParityEnabled, &P::ParityVisible},
    {chkDuplex, &P::DuplexEnabled, &P::DuplexVisible},
    {chkPrinter, &P::PrinterEnabled, &P::PrinterVisible},
    {chkWindowing, &P::WindowingEnabled, &P::WindowingVisible},
    {txtErasureThreshold, &P::RecognitionThresholdEnabled, &P::RecognitionThresholdVisible},
    {txtReaderTimeout, &P::TimeOutEnabled, &P::TimeOutVisible},
    {txtSystemPause, &P::SleepTimeEnabled, &P::SleepTimeVisible},
};

void ExpectProfile(const DialogUser& user, const clsTeskReaderProfile& profile) {
  SCOPED_TRACE(profile.ReaderName());
  EXPECT_EQ(user.Text(cboReaderType), profile.ReaderName());
  for (const ProfileRow& row : kRows) {
    SCOPED_TRACE(std::string(ControlName(row.id)));
    EXPECT_EQ(user.Visible(row.id), (profile.*row.visible)());
    EXPECT_EQ(user.Enabled(row.id), (profile.*row.visible)() && (profile.*row.enabled)());
  }
  EXPECT_EQ(user.Visible(cmdLocate), profile.LocateEnabled() && profile.PortVisible());
  EXPECT_EQ(user.Checked(chkDuplex), profile.Duplex());
  EXPECT_EQ(user.Text(txtReaderTimeout), NumberText(profile.TimeOut()));
  EXPECT_EQ(user.Text(cboBaud), profile.BaudRate() > 0 ? NumberText(profile.BaudRate()) : "");
}

using SetupDialog = DialogTest;

TEST_F(SetupDialog, EveryReaderOfTheCatalogueShowsWhatItsProfileProposes) {
  const auto& profiles = *reader->Profiles();
  ASSERT_EQ(profiles.Count(), 46);
  const bool confirmed = Use([&](DialogUser& user) {
    for (std::int32_t position = 1; position <= profiles.Count(); ++position) {
      user.Choose(cboReaderType, position - 1);
      ExpectProfile(user, *profiles.Item(static_cast<double>(position)));
    }
    user.Press(cmdOK);
    user.WaitForEnd();
  });
  EXPECT_TRUE(confirmed);
  EXPECT_EQ(reader->ReaderType(), profiles.Item(46.0)->ReaderType());
  EXPECT_THAT(host.Sources(), IsEmpty());
}

TEST_F(SetupDialog, WhatIsOutOfBoundsBecomesTheBoundAndReachesTheEngine) {
  reader = NewReader(teskReaderTypeNCSOpScan6);
  reader->SetReaderGrade(true);  // by a box that is disabled: the thresholds are not its
  reader->SetMarkCutOff(300);
  const bool confirmed = Use([&](DialogUser& user) {
    user.Type(txtRecognitionThreshold, "40");
    EXPECT_TRUE(user.HasFocus(txtRecognitionThreshold)) << "disabled";
    user.Focus(txtErasureThreshold);
    EXPECT_EQ(user.Text(txtRecognitionThreshold), "15");
    user.Type(txtReaderTimeout, "601");
    user.Focus(txtSystemPause);
    EXPECT_EQ(user.Text(txtReaderTimeout), "600");
    user.Type(txtSystemPause, "99999");  // the Enter key leaves it no time to lose the focus
    user.Key(VK_RETURN);
    user.WaitForEnd();
  });
  EXPECT_TRUE(confirmed);
  EXPECT_EQ(reader->RecognitionThreshold(), 15);
  EXPECT_EQ(reader->MarkCutOff(), 15) << "nobody typed there";
  EXPECT_EQ(reader->TimeOut(), 600);
  EXPECT_EQ(reader->SleepTime(), 60'000);
}

TEST_F(SetupDialog, EveryControlReachesTheEngine) {
  reader->SetRejecter(false);
  const bool confirmed = Use([](DialogUser& user) {
    user.Choose(cboPort, "16");
    user.Choose(cboBaud, "38400");
    user.Choose(cboDataBits, "7");
    user.Choose(cboParity, "Even");
    user.Choose(cboStopBits, "1.5");
    user.Choose(cboFlowControl, "Both");
    user.Click(chkRejecter);
    user.Click(chkPrinter);
    user.Type(txtReaderTimeout, "5");
    user.ClickArrow(txtReaderTimeout, true);
    EXPECT_EQ(user.Text(txtReaderTimeout), "6");
    user.Type(txtSystemPause, "0");
    user.ClickArrow(txtSystemPause, false);
    EXPECT_EQ(user.Text(txtSystemPause), "0") << "stepped below the minimum";
    user.Press(cmdOK);
    user.WaitForEnd();
  });
  EXPECT_TRUE(confirmed);
  EXPECT_EQ(reader->Port(), 16);
  EXPECT_EQ(reader->BaudRate(), 38400);
  EXPECT_EQ(reader->DataBits(), 7);
  EXPECT_EQ(reader->Parity(), "E");
  EXPECT_EQ(reader->StopBits(), 1.5F);
  EXPECT_EQ(reader->FlowControl(), 3);
  EXPECT_TRUE(reader->Rejecter());
  EXPECT_TRUE(reader->Printer()->Enabled());
  EXPECT_EQ(reader->TimeOut(), 6);
}

TEST_F(SetupDialog, TheEscapeKeyTheCancelButtonAndTheCloseBoxChangeNothing) {
  const std::function<void(DialogUser&)> exits[] = {
      [](DialogUser& user) { user.Key(VK_ESCAPE); },
      [](DialogUser& user) { user.Press(cmdCancel); },
      [](DialogUser& user) { PostMessageW(user.Dialog(), WM_SYSCOMMAND, SC_CLOSE, 0); },
  };
  for (const auto& leave : exits) {
    const bool confirmed = Use([&](DialogUser& user) {
      user.Choose(cboReaderType, 3);
      user.Choose(cboPort, "9");
      user.Type(txtReaderTimeout, "601");
      user.Focus(cmdCancel);
      EXPECT_EQ(user.Text(txtReaderTimeout), "601") << "who cancels wants nothing checked";
      leave(user);
      EXPECT_TRUE(user.WaitForEnd());
    });
    EXPECT_FALSE(confirmed);
    EXPECT_EQ(reader->ReaderType(), teskReaderTypeScantronScanMark5500);
    EXPECT_EQ(reader->Port(), 3);
    EXPECT_EQ(reader->TimeOut(), 10);
  }
}

TEST_F(SetupDialog, TheSearchSaysThatNoPortAnswersAndLeavesTheEngineAsItWas) {
  Use([](DialogUser& user) {
    user.Choose(cboReaderType, "Chatsworth Data OMR1100");
    user.Press(cmdLocate);
    EXPECT_THAT(user.CloseBox("Scanner Not Located"), StartsWith("The scanner was not located."));
    EXPECT_TRUE(user.IsOpen());
    EXPECT_TRUE(user.Enabled(cmdLocate));
  });
  EXPECT_EQ(reader->ReaderType(), teskReaderTypeScantronScanMark5500);
  EXPECT_EQ(reader->Port(), 3);
}

TEST_F(SetupDialog, TickingSelfScoreExplainsItselfAndTakesTheThresholdsAway) {
  reader = NewReader(teskReaderTypeNCSOpScan4);
  reader->SetReaderGrade(false);
  Use([](DialogUser& user) {
    EXPECT_EQ(user.Text(chkReaderGrade), "SelfSco&re option installed");
    user.Press(chkReaderGrade);
    EXPECT_THAT(user.CloseBox("Scanner Settings"), StartsWith("Note: SelfScore uses predefined values"));
    EXPECT_TRUE(user.Checked(chkReaderGrade));
    EXPECT_FALSE(user.Enabled(txtMarkCutOff));
    EXPECT_FALSE(user.Enabled(lblMarkCutOff));
    EXPECT_TRUE(user.Enabled(txtErasureThreshold));
    user.Click(chkReaderGrade);
    EXPECT_TRUE(user.Enabled(txtMarkCutOff));
  });
}

TEST_F(SetupDialog, WithoutAPortItStaysOpenWithTheFocusOnThePorts) {
  reader->SetPort(0);
  Use([](DialogUser& user) {
    user.Press(cmdOK);
    user.Settle();
    EXPECT_TRUE(user.IsOpen());
    EXPECT_TRUE(user.HasFocus(cboPort));
  });
  EXPECT_THAT(host.messages, ElementsAre(RecordingHost::Message{
                                 "Scanner Port", "Please select a port for your OMR Scanner."}));
}

TEST_F(SetupDialog, TheKeyboardReachesEverythingInOrderAndScreenReadersFindItsLabel) {
  reader->SetRejecter(false);
  Use([](DialogUser& user) {
    user.Focus(cboReaderType);
    for (const ControlId id : TabOrder()) {
      const auto label = LabelOf(id);
      EXPECT_TRUE(!label || GetWindow(user.Window(id), GW_HWNDPREV) == user.Window(*label))
          << ControlName(id);
      EXPECT_NE(user.Text(label.value_or(id)), "") << ControlName(id);
      if (!user.Visible(id) || !user.Enabled(id)) continue;
      EXPECT_TRUE(user.HasFocus(id)) << ControlName(id) << ", not " << user.FocusName();
      user.Key(VK_TAB);
    }
    EXPECT_TRUE(user.HasFocus(cboReaderType));
    user.AccessKey('b');
    EXPECT_TRUE(user.HasFocus(cboBaud));
    user.AccessKey('n');
    EXPECT_TRUE(user.HasFocus(txtReaderTimeout));
    user.AccessKey('j');
    EXPECT_TRUE(user.Checked(chkRejecter));
    user.Focus(cboBaud);
    user.Choose(cboReaderType, "Chatsworth Data ACP-100");
    EXPECT_FALSE(user.Visible(cboBaud));
    EXPECT_TRUE(user.HasFocus(cboReaderType)) << user.FocusName();
  });
}

TEST_F(SetupDialog, AChoiceIsTakenBackByTheEscapeKeyInItsListAndByTheDefaultsButton) {
  Use([](DialogUser& user) {
    user.Choose(cboBaud, "300");
    user.Type(txtReaderTimeout, "77");
    user.Click(cmdDefaults);
    EXPECT_EQ(user.Text(cboBaud) + " " + user.Text(txtReaderTimeout) + " " + user.Text(cboPort),
              "19200 10 3");
    user.Focus(cboReaderType);
    const std::string before = user.Text(cboReaderType);
    SendMessageW(user.Window(cboReaderType), CB_SHOWDROPDOWN, TRUE, 0);
    for (int i = 0; i < 5; ++i) user.Key(VK_UP);
    user.Key(VK_ESCAPE);
    EXPECT_TRUE(user.IsOpen());
    EXPECT_EQ(user.Text(cboReaderType), before);
    EXPECT_TRUE(user.Visible(chkRejecter));
    user.Key(VK_DOWN);
    EXPECT_NE(user.Text(cboReaderType), before);
  });
}

// ---- The host's windows and messages

class OwnerWindow : public HostObject {
 public:
  OwnerWindow() {
    window_ = CreateWindowExW(0, L"STATIC", L"Host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 100, 700, 500,
                              nullptr, nullptr, nullptr, nullptr);
  }
  ~OwnerWindow() override { DestroyWindow(window_); }
  std::intptr_t WindowHandle() const override { return reinterpret_cast<std::intptr_t>(window_); }
  HWND Get() const { return window_; }

 private:
  HWND window_;
};

TEST_F(SetupDialog, TheHostsWindowOwnsItAndIsDisabledMeanwhile) {
  const auto owner = std::make_shared<OwnerWindow>();
  Use(
      [&](DialogUser& user) {
        EXPECT_EQ(GetWindow(user.Dialog(), GW_OWNER), owner->Get());
        EXPECT_FALSE(IsWindowEnabled(owner->Get()));
      },
      owner);
  EXPECT_TRUE(IsWindowEnabled(owner->Get()));
}

TEST_F(SetupDialog, AProgramThatIsToEndGetsItsRequestBack) {
  const DWORD thread = GetCurrentThreadId();
  const bool confirmed = Use([&](DialogUser& user) {
    user.Choose(cboPort, "9");
    PostThreadMessageW(thread, WM_QUIT, 7, 0);
    EXPECT_TRUE(user.WaitForEnd());
  });
  EXPECT_FALSE(confirmed);
  EXPECT_EQ(reader->Port(), 3);
  MSG message{};
  EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
  EXPECT_EQ(message.wParam, 7U);
}

TEST_F(SetupDialog, HelpThatIsNotThereHarmsNothing) {
  for (const char* file : {"C:\\none\\help.chm", "C:\\windows"}) {
    reader->SetHelpFile(file);
    Use([](DialogUser& user) {
      user.Key(VK_F1);
      EXPECT_TRUE(user.IsOpen());
    });
  }
  EXPECT_THAT(host.Sources(), IsEmpty());
}

}  // namespace
}  // namespace tesk::test

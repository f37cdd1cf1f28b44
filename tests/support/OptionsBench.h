// The setup dialog on a bench: a view that keeps what it is told, and the engine's settings as text. Knows setup/
// and the reader's bench.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/conversions.h"
#include "engine/settings.h"
#include "setup/frmOptions.h"
#include "tests/support/TestBench.h"

namespace tesk::test {

class RecordingView : public OptionsView {
 public:
  void Refresh() override { ++refreshed; }
  void SetFocus(ControlId id) override { focus = id; }
  void Beep() override { ++beeps; }
  void SetHourglass(bool on) override { calls.emplace_back(on ? "hourglass" : "arrow"); }
  void ShowInformation(const std::string& title, const std::string& text) override {
    calls.push_back("information|" + title + "|" + text);
  }
  void ShowWarning(const std::string& title, const std::string& text) override {
    calls.push_back("warning|" + title + "|" + text);
    if (onWarning) onWarning();
  }
  void Unload() override { ++unloaded; }

  int refreshed = 0;
  int beeps = 0;
  int unloaded = 0;
  std::optional<ControlId> focus;
  std::vector<std::string> calls;
  std::function<void()> onWarning;
};

// Everything that is set in the engine, as text.
inline std::map<std::string, std::string> Settings(const clsTeskReader& reader) {
  std::map<std::string, std::string> texts{{"Distance", NumberText(reader.Printer()->Distance())}};
  for (const EngineSetting& setting : EngineSettings()) {
    texts[std::string(setting.name)] = SettingText(setting.get(reader));
  }
  return texts;
}

// A dialog over an engine that is set to `type` and port 2.
struct Dialog : Bench {
  explicit Dialog(teskReaderType type = teskReaderTypeNCSOpScan2,
                  std::shared_ptr<simulator::Scanner> scanner = nullptr)
      : Bench(type, std::move(scanner)), form(*reader, view) {
    reader->SetPort(2);
  }

  void Load() {
    before = Settings(*reader);
    form.LoadValues();
  }
  // The settings of the engine that are others than before the dialog was loaded.
  std::string Changes() const {
    std::string changes;
    for (const auto& [name, value] : Settings(*reader)) {
      if (before.at(name) != value) changes += name + "=" + value + " ";
    }
    return changes;
  }
  std::string ChangesOnceConfirmed() {
    form.Click(ControlId::cmdOK);
    return form.Confirmed() ? Changes() : "not confirmed " + Changes();
  }
  Control& operator[](ControlId id) { return form.Controls()[id]; }
  ListEntry Chosen(ControlId list) {
    const ListEntry* entry = ChosenEntry((*this)[list]);
    return entry == nullptr ? ListEntry{"-", "-"} : *entry;
  }
  void Choose(ControlId list, const std::string& value) {
    const auto& entries = (*this)[list].entries;
    const auto found = std::ranges::find(entries, value, &ListEntry::value);
    ASSERT_NE(found, entries.end()) << value;
    form.Select(list, static_cast<std::int32_t>(found - entries.begin()));
  }
  void ChooseReader(teskReaderType type) { Choose(ControlId::cboReaderType, NumberText(type)); }

  RecordingView view;
  frmOptions form;
  std::map<std::string, std::string> before;
};

// Calls check(type, profile) with every reader of the catalogue in its order.
template <class Check>
void ForEveryReader(Check check) {
  const clsTeskReaderProfiles profiles;
  for (std::int32_t position = 1; position <= profiles.Count(); ++position) {
    const auto profile = profiles.Item(static_cast<double>(position));
    SCOPED_TRACE(::testing::Message() << "reader type " << profile->ReaderType());
    check(profile->ReaderType(), *profile);
  }
}

}  // namespace tesk::test

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
    if (onMessage) onMessage();
  }
  void ShowWarning(const std::string& title, const std::string& text) override {
    calls.push_back("warning|" + title + "|" + text);
    if (onMessage) onMessage();
  }
  void Unload() override { ++unloaded; }

  int refreshed = 0;
  int beeps = 0;
  int unloaded = 0;
  std::optional<ControlId> focus;
  std::vector<std::string> calls;
  std::function<void()> onMessage;
};

// A dialog over an engine that is set to `type` and port 2.
struct Dialog : Bench {
  explicit Dialog(teskReaderType type = teskReaderTypeNCSOpScan2,
                  std::shared_ptr<simulator::Scanner> scanner = nullptr)
      : Bench(type, std::move(scanner)), form(*reader, view) {
    reader->SetPort(2);
  }

  frmOptions& Load() {
    form.LoadValues();
    return form;
  }
  Control& operator[](ControlId id) { return form.Controls()[id]; }
  std::string Value(ControlId list) {
    const ListEntry* entry = ChosenEntry((*this)[list]);
    return entry == nullptr ? "-" : entry->value;
  }
  std::string Text(ControlId list) {
    const ListEntry* entry = ChosenEntry((*this)[list]);
    return entry == nullptr ? "-" : entry->text;
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
};

// Everything that is set in the engine, as text.
inline std::map<std::string, std::string> Settings(const clsTeskReader& reader) {
  std::map<std::string, std::string> texts{{"Distance", NumberText(reader.Printer()->Distance())}};
  for (const EngineSetting& setting : EngineSettings()) {
    texts[std::string(setting.name)] = SettingText(setting.get(reader));
  }
  return texts;
}

inline std::vector<std::string> Changed(const std::map<std::string, std::string>& before,
                                        const std::map<std::string, std::string>& after) {
  std::vector<std::string> changed;
  for (const auto& [name, value] : before) {
    if (after.at(name) != value) changed.push_back(name + "=" + after.at(name));
  }
  return changed;
}

// The types of the catalogue in its order.
inline std::vector<teskReaderType> CatalogueTypes() {
  const clsTeskReaderProfiles profiles;
  std::vector<teskReaderType> types;
  for (std::int32_t position = 1; position <= profiles.Count(); ++position) {
    types.push_back(profiles.Item(static_cast<double>(position))->ReaderType());
  }
  return types;
}

}  // namespace tesk::test

// A host that keeps what the library shows and reports instead of bothering anybody. Knows base/ alone.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/HostServices.h"

namespace tesk::test {

// Installed for as long as it lives; the pass-through default comes back with its end.
class RecordingHost : public HostServices {
 public:
  struct Message {
    std::string title;
    std::string text;
    bool operator==(const Message&) const = default;
  };

  std::vector<Message> messages;
  std::vector<ErrorReport> errors;
  std::map<std::string, std::string> translate;  // by English text; a text that is missing stays as it is
  std::vector<std::string> lookedUp;             // every text asked for, in order
  std::vector<bool> silentAtError;               // Silent as it was during each reported error
  std::function<void()> onError;                 // what the host does when it gets a report
  bool silent = false;
  std::string applicationName = "Quillon";

  RecordingHost() {
    // Not owned: the test does.
    SetError(std::shared_ptr<HostServices>(std::shared_ptr<void>(), this));
  }
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;
  ~RecordingHost() override { SetError(nullptr); }

  // The sources of all reported errors, without the prefix that every one of them must carry.
  std::vector<std::string> Sources() const {
    const std::string prefix = "Quillon Reader - ";
    std::vector<std::string> sources;
    for (const ErrorReport& error : errors) {
      const bool prefixed = error.source.starts_with(prefix);
      sources.push_back(prefixed ? error.source.substr(prefix.size()) : "no prefix: " + error.source);
    }
    return sources;
  }

  std::string LoadString(const std::string& text) override {
    lookedUp.push_back(text);
    const auto found = translate.find(text);
    return found == translate.end() ? text : found->second;
  }
  bool MsgBoxEx(const std::string& title, const std::string& text) override {
    messages.push_back({title, text});
    return true;
  }
  void RaiseError(const ErrorReport& report) override {
    errors.push_back(report);
    silentAtError.push_back(silent);
    if (onError) onError();
  }
  bool Silent() const override { return silent; }
  void SetSilent(bool value) override { silent = value; }
  std::string ApplicationName() const override { return applicationName; }
};

}  // namespace tesk::test

// The installed host object and the message box behind it.
#include "base/HostServices.h"

#include <iostream>
#include <mutex>
#include <utility>

#include "base/conversions.h"

namespace tesk {
namespace {

// What is installed, process-wide by design: a host installs one error object for all its engines, which may
// live on several threads. Whoever uses it holds it; nobody calls it, or lets go of it, under the lock.
template <class Service>
class Installed {
 public:
  std::shared_ptr<Service> Get() const {
    const std::lock_guard lock(mutex_);
    return service_;
  }
  // The old one is the caller's to release, which may call back into the library.
  void Swap(std::shared_ptr<Service>& service) {
    const std::lock_guard lock(mutex_);
    service_.swap(service);
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<Service> service_;
};

Installed<HostServices>& TheHost() {
  static Installed<HostServices> host;
  return host;
}

Installed<MessageBox>& TheBox() {
  static Installed<MessageBox> box;
  return box;
}

void ShowBox(const std::string& title, const std::string& text) {
  if (const auto box = TheBox().Get()) {
    box->Show(title, text);
  } else {
    std::cerr << title << ": " << Replace(text, "|", "\n  ") << '\n';
  }
}

// The host's Silent property, True for the duration of one report and then as it was.
class SilenceFor {
 public:
  SilenceFor(HostServices& host, bool wanted)
      : host_(host), wanted_(wanted), before_(wanted && host.Silent()) {
    if (wanted_) host_.SetSilent(true);
  }
  SilenceFor(const SilenceFor&) = delete;
  SilenceFor& operator=(const SilenceFor&) = delete;
  ~SilenceFor() {
    if (wanted_) host_.SetSilent(before_);
  }

 private:
  HostServices& host_;
  bool wanted_;
  bool before_;
};

}  // namespace

bool SetError(std::shared_ptr<HostServices> host) {
  const bool given = host != nullptr;
  TheHost().Swap(host);
  return given;
}

void SetMessageBox(std::shared_ptr<MessageBox> box) { TheBox().Swap(box); }

std::string LoadString(std::string_view text) {
  const auto host = TheHost().Get();
  return host ? host->LoadString(std::string(text)) : std::string(text);
}

std::string ApplicationName() {
  const auto host = TheHost().Get();
  return host ? host->ApplicationName() : "TeskReader99";
}

void ShowMessage(std::string_view title, std::string_view text) {
  ShowComposedMessage(title, LoadString(text));
}

void ShowComposedMessage(std::string_view title, const std::string& text) {
  const std::string shownTitle = LoadString(title);
  const auto host = TheHost().Get();
  if (!host || !host->MsgBoxEx(shownTitle, text)) ShowBox(shownTitle, text);
}

void ReportError(ErrorReport report, bool silent) {
  report.source = "Quillon Reader - " + report.source;
  if (report.line >= 1) report.source += LoadString("; Line: ") + NumberText(report.line);
  if (const auto host = TheHost().Get()) {
    const SilenceFor silence(*host, silent);
    host->RaiseError(report);
    return;
  }
  std::string text = LoadString("Error# ") + NumberText(report.number) + LoadString(", Location: ") +
                     report.source + "|" + report.message;
  if (!report.detail.empty()) text += "|" + report.detail;
  ShowBox(LoadString("Application Error"), text);
}

void ReportError(const RunTimeError& error, std::string_view source) {
  ReportError(ErrorReport{.number = error.Number(),
                          .source = std::string(source),
                          .message = LoadString(error.Description()),
                          .title = LoadString("Application Error"),
                          .detail = error.Detail()});
}

}  // namespace tesk

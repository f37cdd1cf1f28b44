// What the library shows and reports: the host's error object, the message box, and the one helper that
// turns an escaped run-time error into a report. Nothing outside knows how a message reaches a person.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "base/RunTimeError.h"

namespace tesk {

struct ErrorReport {
  std::int32_t line = 0;    // 0 where none is known
  std::int32_t number = 0;  // run-time error number
  std::string source = {};  // "basRead.ReaderInit"; hosts see it behind "Quillon Reader - "
  std::string message = {};
  std::string title = {};   // hosts get it; the library's own box is always titled "Application Error"
  std::string detail = {};  // lines joined with "|" that say what to try; for hosts that show them
};

// The object that a host installs with SetError. Calls come on the thread of the engine that has something to
// say; a host with engines on several threads must bear several at once.
class HostServices {
 public:
  virtual ~HostServices() = default;
  // The translation of an English text, which is its own key; the text itself where there is none.
  virtual std::string LoadString(const std::string& text) { return text; }
  // Shows a message with one "&OK" button; lines of `text` are joined with "|". False: this host has no
  // message box, the library shows its own.
  virtual bool MsgBoxEx(const std::string& /*title*/, const std::string& /*text*/) { return false; }
  virtual void RaiseError(const ErrorReport& report) = 0;
  virtual bool Silent() const = 0;
  virtual void SetSilent(bool silent) = 0;
  virtual std::string ApplicationName() const { return "TeskReader99"; }
};

struct OperatorMessage {
  std::string title;
  std::string text;  // lines joined with "|"
};

// The message box of the platform, used where the host has none.
class MessageBox {
 public:
  virtual ~MessageBox() = default;
  // `text` may hold "|" between its lines.
  virtual void Show(const std::string& title, const std::string& text) = 0;
};

// Installs the process-wide host object (empty: back to the pass-through default). True when not empty. A call
// that another thread is making ends on the object that it began with.
bool SetError(std::shared_ptr<HostServices> host);
// A host object that is installed for as long as this lives.
class InstalledHost {
 public:
  explicit InstalledHost(std::shared_ptr<HostServices> host) { SetError(std::move(host)); }
  InstalledHost(const InstalledHost&) = delete;
  InstalledHost& operator=(const InstalledHost&) = delete;
  ~InstalledHost() { SetError(nullptr); }
};

// Installs the platform's message box; empty: the standard error stream.
void SetMessageBox(std::shared_ptr<MessageBox> box);

std::string LoadString(std::string_view text);
std::string ApplicationName();

// Shows title and text, both translated first.
void ShowMessage(std::string_view title, std::string_view text);
// Shows a text that was put together from translated pieces; only the title is translated here.
void ShowComposedMessage(std::string_view title, const std::string& text);

// The error report: prefixes the source with "Quillon Reader - ", appends the line from 1 on, and hands
// the report to the host's object or, where none is installed, to a box titled "Application Error".
// silent: the host object's Silent is set for the duration of the call.
void ReportError(ErrorReport report, bool silent = false);
// Reports under the error's own description. `source` is the routine that gives up.
void ReportError(const RunTimeError& error, std::string_view source);

// Runs `body`; yields the run-time error that escaped from it, if one did. The only catch in the library.
template <class Body>
std::optional<RunTimeError> Attempt(Body&& body) {
  try {
    body();
    return std::nullopt;
  } catch (const RunTimeError& error) {
    return error;
  } catch (const std::bad_alloc&) {
    return RunTimeError(kErrorOutOfMemory, "Out of memory");
  } catch (const std::exception& error) {
    return RunTimeError(kErrorInternal, error.what());
  }
}

// Runs `body` and returns its result; an escaped error is reported under `source` and `failure` returned.
template <class Body>
requires(!std::is_void_v<std::invoke_result_t<Body&>>) auto Guarded(
    std::string_view source, Body&& body, std::invoke_result_t<Body&> failure = {}) {
  auto result = failure;
  if (const auto error = Attempt([&] { result = body(); })) {
    ReportError(*error, source);
    return failure;
  }
  return result;
}

template <class Body>
requires std::is_void_v<std::invoke_result_t<Body&>>
void Guarded(std::string_view source, Body&& body) {
  if (const auto error = Attempt(body)) ReportError(*error, source);
}

}  // namespace tesk

// The shapes of what Sekonic serial readers answer to a command. Records of marks: drivers/sekonicRecords.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/SideArray.h"
#include "drivers/SerialExchange.h"
#include "drivers/Shape.h"
#include "drivers/sekonicRecords.h"
#include "engine/clsTeskReaderWindow.h"

namespace tesk::basScanningSystems {

// Silence that no scanner keeps within an answer: the end of one whose own end may be missing.
inline constexpr Milliseconds kLongSilence{1000};

// An answer as text.
class Answer : public Shape {
 public:
  // Throws error 8020 for more than `longest` bytes.
  void Take(std::uint8_t byte) override;
  // Whether long silence would be the end.
  virtual bool MayEnd() const { return false; }
  const std::string& Text() const { return text_; }

 protected:
  explicit Answer(std::size_t longest = 4096) : longest_(longest) {}

 private:
  std::size_t longest_;
  std::string text_;
};

// The first character decides.
class FirstCharacter : public Answer {
 public:
  std::size_t Missing() const override { return Text().empty() ? 1 : 0; }
};

// A line that CR ends, the CR included. Line ends in front belong to the answer before.
class Line : public Answer {
 public:
  std::size_t Missing() const override { return Text().ends_with('\r') ? 0 : 1; }
  void Take(std::uint8_t byte) override;
  bool MayEnd() const override { return !Text().empty(); }
};

// One status character per head. A head that finds fault may be the only one to speak.
class HeadStatus : public Answer {
 public:
  // known: so many heads speak; else so many at most.
  HeadStatus(std::size_t heads, bool known) : heads_(heads), known_(known) {}
  std::size_t Missing() const override { return heads_ - Text().size(); }
  bool MayEnd() const override { return !Text().empty() && (!known_ || Text().front() != '0'); }

 private:
  std::size_t heads_;
  bool known_;
};

// Three digits, or fewer with a CR.
class Count : public Answer {
 public:
  std::size_t Missing() const override { return Text().ends_with('\r') || Text().size() >= 3 ? 0 : 1; }
  // Nothing but digits, the CR aside.
  bool IsNumber() const;
};

// So many texts, each ended by CR or ",".
class Fields : public Answer {
 public:
  explicit Fields(std::size_t fields) : left_(fields) {}
  std::size_t Missing() const override { return left_; }
  void Take(std::uint8_t byte) override;
  bool MayEnd() const override { return !Text().empty(); }

 private:
  std::size_t left_;
};

// The items of a side's windows. Bytes that fit no window end it; whoever spreads the text says what is wrong.
class WindowItems : public Answer {
 public:
  // endsInCr: the scanner is known to end its last item as it does the others, so that a missing CR means
  // that further marks of that item may be missing as well.
  WindowItems(const std::vector<clsTeskReaderWindow>& windows, SideArray side, bool endsInCr);
  WindowItems(const WindowItems&) = delete;  // the record refers to the side
  WindowItems& operator=(const WindowItems&) = delete;

  std::size_t Missing() const override { return broken_ ? 0 : record_.Missing(); }
  void Take(std::uint8_t byte) override;
  bool MayEnd() const override;
  bool EndsInCr() const { return !broken_ && record_.Missing() == 0; }

 private:
  SideArray side_;
  WindowReply record_;
  bool endsInCr_;
  bool broken_ = false;
};

// Waits for an answer until it is complete, or ends in long silence where it may.
Wait TakeAnswer(SerialExchange& line, Answer& answer, const Limits& limits = {});

// What follows a complete answer of a kind: a line end as a rule, for which the first answer of its kind that
// is none itself is given long silence.
std::string TailOf(SerialExchange& line, std::string_view kind, std::string_view answer);

}  // namespace tesk::basScanningSystems

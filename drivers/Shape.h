// The shapes of answers: what tells that an answer is complete. A driver states one beside each command.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tesk {

// Takes an answer byte by byte and knows what it still lacks. A byte that cannot belong to the answer may
// throw, which fails the exchange.
class Shape {
 public:
  virtual ~Shape() = default;
  // How many bytes are missing at least; 0: the answer is complete and nothing more belongs to it.
  virtual std::size_t Missing() const = 0;
  virtual void Take(std::uint8_t byte) = 0;
};

// Exactly so many bytes. One: the first byte decides, as with an acknowledgement.
class Bytes : public Shape {
 public:
  explicit Bytes(std::size_t count) : count_(count) {}
  std::size_t Missing() const override { return count_ - text_.size(); }
  void Take(std::uint8_t byte) override { text_ += static_cast<char>(byte); }
  const std::string& Text() const { return text_; }

 private:
  std::size_t count_;
  std::string text_;
};

// At least so many bytes, or fewer that a terminator ends; the terminator belongs to the text.
class BytesOrLine : public Shape {
 public:
  BytesOrLine(std::size_t count, char terminator) : count_(count), terminator_(terminator) {}
  std::size_t Missing() const override { return ended_ || text_.size() >= count_ ? 0 : 1; }
  void Take(std::uint8_t byte) override {
    text_ += static_cast<char>(byte);
    ended_ = text_.back() == terminator_;
  }
  const std::string& Text() const { return text_; }

 private:
  std::size_t count_;
  char terminator_;
  bool ended_ = false;
  std::string text_;
};

}  // namespace tesk

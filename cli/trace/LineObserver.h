// Watches a serial line from the host's side: a decorator of the serial system that tells observers of
// every opening, every byte and every closing. Knows the transport.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "transport/SerialLine.h"

namespace tesk::cli {

// Calls come in the order of the wire, on the engine's thread. An observer must not throw.
class LineObserver {
 public:
  virtual ~LineObserver() = default;
  virtual void Opened(std::int16_t /*port*/, const LineSettings& /*settings*/) {}
  virtual void Closed() {}
  virtual void Sent(std::string_view /*bytes*/) {}
  virtual void Received(std::string_view /*bytes*/) {}  // never empty
};

class ObservedSerialSystem : public SerialSystem {
 public:
  ObservedSerialSystem(std::shared_ptr<SerialSystem> system,
                       std::vector<std::shared_ptr<LineObserver>> observers);
  std::unique_ptr<SerialLine> Open(std::int16_t port, const LineSettings& settings) override;

 private:
  std::shared_ptr<SerialSystem> system_;
  std::vector<std::shared_ptr<LineObserver>> observers_;
};

}  // namespace tesk::cli

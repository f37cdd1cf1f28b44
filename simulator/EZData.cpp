// The scanner's side of the identification:
//
//   host     DC2 ESC V DC2 E
//   scanner  model and version CR, date CR
#include "simulator/EZData.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr char kFrame = '\x12';
constexpr std::string_view kIdentify = "\x1BV";
constexpr std::string_view kIdentity = "OMR-1100 - Version 1.04\r";
constexpr std::string_view kIdentityWithoutVersion = "OMR-1100\r";
constexpr std::string_view kDate = "03/12/1999\r";

// All of them answer as the one model does whose answer is known.
constexpr std::array kReaders{
    teskReaderTypeChatsworthOMR2000, teskReaderTypeChatsworthALSAccelScanOMR, teskReaderTypeNCSEZData,
    teskReaderTypeChatsworthACF200,  teskReaderTypeChatsworthACF100,          teskReaderTypeChatsworthACP200,
};

constexpr std::array kEZDataFaults{
    FaultKind::SilenceIdentify,
    FaultKind::GarbageIdentify,
    FaultKind::NoVersion,
    FaultKind::CutIdentify,
};

bool Has(teskReaderType reader) {
  return std::find(kReaders.begin(), kReaders.end(), reader) != kReaders.end();
}

std::unique_ptr<SheetScanner> Create(teskReaderType /*reader*/, Options options) {
  return std::make_unique<EZData>(std::move(options));
}

}  // namespace

constinit const Family kEZDataFamily{&Has, kEZDataFaults, nullptr, &Create};

void EZData::OnByte(std::uint8_t byte, Time now) {
  constexpr std::size_t kLongest = 16;
  heard_ += static_cast<char>(byte);
  const std::size_t second = heard_.find(kFrame, 1);
  const bool begun = heard_[0] == kFrame && heard_.size() < kLongest;
  if (begun && (second == std::string::npos || second + 1 == heard_.size())) return;
  const std::string heard = std::exchange(heard_, {});
  const std::string command = begun ? heard.substr(1, second - 1) : std::string();
  if (heard.back() != 'E' || !begun) return Complain("unknown command: " + Quoted(heard));
  if (command == kIdentify) return Identify(now);
  if (!OnCommand(command, now)) Complain("unknown command: " + Quoted(heard));
}

void EZData::Identify(Time now) {
  ++requests_;
  if (TakeFault(FaultKind::SilenceIdentify, requests_)) return;
  const bool named = !TakeFault(FaultKind::NoVersion, requests_);
  std::string answer = std::string(named ? kIdentity : kIdentityWithoutVersion) + std::string(kDate);
  if (TakeFault(FaultKind::GarbageIdentify, requests_)) {
    Random random(Settings().seed + static_cast<std::uint64_t>(requests_));
    for (char& character : answer) character = static_cast<char>(random.Between(0, 255));
  }
  if (const auto cut = TakeFault(FaultKind::CutIdentify, requests_)) {
    answer.resize(std::min(cut->byte, answer.size()));
  }
  Reply(answer, now, Settings().timings.answer);
}

}  // namespace tesk::simulator

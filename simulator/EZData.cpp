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

#include "simulator/Random.h"

namespace tesk::simulator {
namespace {

constexpr std::array<char, 5> kRequest{0x12, 0x1B, 'V', 0x12, 'E'};
constexpr std::string_view kIdentity = "OMR-1100 - Version 1.04\r";
constexpr std::string_view kIdentityWithoutVersion = "OMR-1100\r";
constexpr std::string_view kDate = "03/12/1999\r";

// All of them answer as the one model does whose answer is known.
constexpr std::array kReaders{
    teskReaderTypeChatsworthOMR1100, teskReaderTypeChatsworthOMR2000, teskReaderTypeChatsworthALSAccelScanOMR,
    teskReaderTypeNCSEZData,         teskReaderTypeChatsworthACF200,  teskReaderTypeChatsworthACF100,
    teskReaderTypeChatsworthACP200,
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
  request_ += static_cast<char>(byte);
  if (!std::equal(request_.begin(), request_.end(), kRequest.begin())) {
    Complain("unknown command: " + Quoted(request_));
    request_.clear();
  } else if (request_.size() == kRequest.size()) {
    request_.clear();
    Identify(now);
  }
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

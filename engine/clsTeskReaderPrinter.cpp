// The imprinter's properties, as the model's row states them.
#include "engine/clsTeskReaderPrinter.h"

#include "profiles/models.h"

namespace tesk {
namespace {

const Imprinter& ImprinterOf(teskReaderType type) { return ModelOf(type).imprinter; }

}  // namespace

void clsTeskReaderPrinter::SetType(teskReaderType value) {
  type_ = value;
  distance_ = ImprinterOf(type_).firstDistance;
}

void clsTeskReaderPrinter::SetEnabled(bool value) {
  const auto setting = ImprinterOf(type_).setting;
  if (setting != Imprinter::Setting::Ignored) enabled_ = value && setting == Imprinter::Setting::Taken;
}

std::int16_t clsTeskReaderPrinter::FilledBufferCount() const {
  const std::string* buffers[] = {&buffer1_, &buffer2_, &buffer3_};
  std::int16_t filled = 0;
  for (int i = 0; i < BufferCount(); ++i) {
    if (!buffers[i]->empty()) ++filled;
  }
  return filled;
}

std::int16_t clsTeskReaderPrinter::BufferCount() const { return ImprinterOf(type_).lines; }

std::int32_t clsTeskReaderPrinter::MinPosition() const {
  return enabled_ ? ImprinterOf(type_).minPosition : -1;
}

std::int32_t clsTeskReaderPrinter::MaxPosition() const {
  return enabled_ ? ImprinterOf(type_).maxPosition : -1;
}

std::int32_t clsTeskReaderPrinter::MaxCharacters() const {
  return enabled_ ? ImprinterOf(type_).maxCharacters : -1;
}

}  // namespace tesk

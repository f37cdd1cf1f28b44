#include "cli/trace/traceSettings.h"

#include <fmt/format.h>

#include "base/conversions.h"
#include "cli/scan/ScanPlan.h"
#include "cli/trace/TraceFile.h"
#include "engine/settings.h"

namespace tesk::cli {
namespace {

constexpr std::string_view kNone = "none";

// What decides, beside the form, what goes over the wire.
constexpr const char* kSettings[] = {"Duplex",
                                     "DuplexForm",
                                     "Feeder",
                                     "Rejecter",
                                     "ReaderGrade",
                                     "RecognitionMode",
                                     "RecognitionThreshold",
                                     "MarkDiscrimination",
                                     "TimeOut",
                                     "SleepTime",
                                     "Barcode"};

std::string SizesText(const Int16Array& rows, const Int16Array& columns) {
  std::string text;
  for (std::size_t i = 0; i < rows.Elements().size() && i < columns.Elements().size(); ++i) {
    text += fmt::format("{}{}x{}", i == 0 ? "" : ",", rows.Elements()[i], columns.Elements()[i]);
  }
  return text.empty() ? std::string(kNone) : text;
}

std::string WindowsText(const clsTeskReader& engine) {
  std::string text;
  for (std::int32_t i = 1; i <= engine.Windows()->Count(); ++i) {
    const clsTeskReaderWindow& window = *engine.Windows()->Item(i);
    text += fmt::format("{}{},{},{},{},{},{},{},{}", i == 1 ? "" : ";", window.StartRow(), window.NumRows(),
                        window.RowGap(), window.StartCol(), window.NumCols(), window.ColGap(), window.Page(),
                        window.Orientation());
  }
  return text.empty() ? std::string(kNone) : text;
}

std::string BarcodesText(const clsTeskReader& engine) {
  std::string text;
  for (std::int32_t i = 1; i <= engine.Barcodes()->Count(); ++i) {
    const clsTeskReaderBarcode& barcode = *engine.Barcodes()->Item(AtPosition(i));
    text += fmt::format("{}{},{},{},{},{},{}", i == 1 ? "" : ";", barcode.Page(), barcode.Field(),
                        barcode.Distance(), barcode.Length(), std::int32_t{barcode.Symbology()},
                        std::int32_t{barcode.Orientation()});
  }
  return text.empty() ? std::string(kNone) : text;
}

std::string ImprintText(const clsTeskReader& engine) {
  const clsTeskReaderPrinter& printer = *engine.Printer();
  if (!printer.Active()) return " Imprint=none";
  return fmt::format(" Imprint={};{};{} ImprintPosition={}", EscapedSetting(printer.Buffer1()),
                     EscapedSetting(printer.Buffer2()), EscapedSetting(printer.Buffer3()),
                     printer.Distance());
}

std::string_view DisposalText(Disposal disposal) {
  switch (disposal) {
    case Disposal::Eject:
      return "eject";
    case Disposal::Reject:
      return "reject";
    case Disposal::None:
      break;
  }
  return kNone;
}

}  // namespace

std::string TraceSettingsText(const clsTeskReader& engine, const ScanPlan& plan) {
  std::string text = fmt::format("Side1={} Side2={}", SizesText(engine.Side1Rows(), engine.Side1Cols()),
                                 SizesText(engine.Side2Rows(), engine.Side2Cols()));
  for (const char* name : kSettings) {
    text += fmt::format(" {}={}", name, LowerCase(SettingText(SettingNamed(name).get(engine))));
  }
  return text + fmt::format(" Windows={} Barcodes={}", WindowsText(engine), BarcodesText(engine)) +
         ImprintText(engine) +
         fmt::format(" Dispose={} MaxSheets={}", DisposalText(plan.disposal), plan.maxSheets);
}

}  // namespace tesk::cli

// Sets the engine up for a scan.
#include "cli/scan/scanSetup.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>

#include <fmt/format.h>

#include "assembly/assembly.h"
#include "base/readerNames.h"
#include "cli/CommandError.h"
#include "cli/ReaderChoice.h"
#include "cli/scan/ScanPlan.h"
#include "cli/scan/SheetRoad.h"
#include "cli/scan/modelLimits.h"

namespace tesk::cli {
namespace {

bool IsSerial(const clsTeskReader& engine) {
  const auto profile = engine.Profile();
  return profile && profile->InterfaceType() == teskReaderInterfaceTypeSerial;
}

void SetPort(const ScanPlan& plan, clsTeskReader& engine) {
  if (plan.port) engine.SetPort(plan.port->number);
}

void SetSides(const ScanPlan& plan, clsTeskReader& engine) {
  if (plan.side1) {
    engine.SetSide1Rows(Int16Array(plan.side1->rows));
    engine.SetSide1Cols(Int16Array(plan.side1->columns));
  }
  if (plan.side2) {
    engine.SetSide2Rows(Int16Array(plan.side2->rows));
    engine.SetSide2Cols(Int16Array(plan.side2->columns));
    // A scanner that reads one side would be asked for a back that never comes.
    if (!plan.Assigns("DuplexForm")) engine.SetDuplexForm(engine.Duplex());
  }
}

void AddWindows(const ScanPlan& plan, clsTeskReader& engine) {
  for (const WindowFields& fields : plan.windows) {
    auto window = std::make_shared<clsTeskReaderWindow>();
    window->SetStartRow(fields[0]);
    window->SetNumRows(fields[1]);
    window->SetRowGap(fields[2]);
    window->SetStartCol(fields[3]);
    window->SetNumCols(fields[4]);
    window->SetColGap(fields[5]);
    window->SetPage(fields[6]);
    window->SetOrientation(fields[7]);
    engine.Windows()->Add(std::move(window));
  }
  if (!plan.windows.empty()) engine.SetRecognitionMode(teskRecognitionTypeWindow);
}

void AddBarcodes(const ScanPlan& plan, clsTeskReader& engine) {
  for (const BarcodeFields& fields : plan.barcodes) {
    auto barcode = std::make_shared<clsTeskReaderBarcode>();
    barcode->SetPage(fields.page);
    barcode->SetField(fields.field);
    barcode->SetDistance(fields.distance);
    barcode->SetLength(fields.length);
    barcode->SetSymbology(fields.symbology);
    barcode->SetOrientation(fields.orientation);
    engine.Barcodes()->Add(std::move(barcode));
  }
  if (!plan.barcodes.empty()) engine.SetBarcode(true);
}

void SetImprintPosition(std::int16_t position, const clsTeskReader& engine, clsTeskReaderPrinter& printer) {
  const bool stated = printer.MaxPosition() >= 0;
  if (stated && (position < printer.MinPosition() || position > printer.MaxPosition())) {
    throw UsageError(fmt::format("--imprint-position: {} is outside {} to {} of the {}", position,
                                 printer.MinPosition(), printer.MaxPosition(), engine.ReaderName()));
  }
  printer.SetDistance(position);
}

void SetImprint(const ScanPlan& plan, clsTeskReader& engine) {
  if (plan.imprints.empty()) return;
  clsTeskReaderPrinter& printer = *engine.Printer();
  printer.SetEnabled(true);
  printer.SetActive(true);
  if (!printer.Active()) {
    throw UsageError(fmt::format("--imprint: the {} has no imprinter", engine.ReaderName()));
  }
  if (plan.imprints.size() > static_cast<std::size_t>(printer.BufferCount())) {
    throw UsageError(fmt::format("--imprint: the {} prints {} line(s), {} were given", engine.ReaderName(),
                                 printer.BufferCount(), plan.imprints.size()));
  }
  using Setter = void (clsTeskReaderPrinter::*)(const std::string&);
  constexpr Setter kBuffers[] = {&clsTeskReaderPrinter::SetBuffer1, &clsTeskReaderPrinter::SetBuffer2,
                                 &clsTeskReaderPrinter::SetBuffer3};
  for (std::size_t i = 0; i < plan.imprints.size(); ++i) {
    const Setter set = kBuffers[i];
    (printer.*set)(plan.imprints[i]);
  }
  if (plan.imprintPosition) SetImprintPosition(*plan.imprintPosition, engine, printer);
}

void CheckWhole(const ScanPlan& plan, const clsTeskReader& engine) {
  RequireDriver(engine.ReaderType());
  if (!plan.port && plan.key.path.empty() && !plan.Assigns("Port") && IsSerial(engine)) {
    throw UsageError("--port: is required; it takes 1 to 16, a device path or \"sim\"");
  }
}

}  // namespace

void ConfigureEngine(const ScanPlan& plan, clsTeskReader& engine) {
  RequireDriver(plan.reader);
  if (!engine.LoadDefaults(plan.reader)) {
    throw CommandFailure(fmt::format("there are no defaults for the {}", ReaderName(plan.reader)));
  }
  engine.SetRecognitionMode(teskRecognitionTypePage);
  const bool saved = !plan.key.path.empty();
  if (saved && !engine.LoadSettings(plan.key.root, plan.key.path)) {
    throw CommandFailure(
        fmt::format("--key: the settings under {0} cannot be read|\"teskread settings save --key {1} --set "
                    "NAME=VALUE\" mends one of them, \"teskread settings show --key {1}\" shows them all",
                    plan.key.path, ShellWord(plan.key.path)));
  }
  if (saved && engine.ReaderType() != plan.reader) {
    throw CommandFailure(fmt::format("--key: the settings under {} are for \"{}\", not for the {}",
                                     plan.key.path, engine.ReaderName(), ReaderName(plan.reader)));
  }
  SetPort(plan, engine);
  for (const auto& assignment : plan.assignments) Apply(assignment, engine);
  SetSides(plan, engine);
  AddWindows(plan, engine);
  AddBarcodes(plan, engine);
  SetImprint(plan, engine);
  CheckWhole(plan, engine);
  CheckSheetRoad(plan, engine);
  CheckModelLimits(plan, engine);
}

}  // namespace tesk::cli

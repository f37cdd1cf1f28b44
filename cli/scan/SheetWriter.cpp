// Sheets on their way to a file or standard output.
#include "cli/scan/SheetWriter.h"

#include <fmt/format.h>

#include "cli/CommandError.h"
#include "cli/scan/GridText.h"
#include "platform/Platform.h"

namespace tesk::cli {
namespace {

bool ToTerminal(const ScanPlan& plan) { return plan.output.empty() && platform::StandardOutputIsTerminal(); }

}  // namespace

SheetWriter::SheetWriter(const ScanPlan& plan, Output& standardOutput)
    : plan_(plan),
      standardOutput_(standardOutput),
      format_(plan.format.value_or(ToTerminal(plan) ? SheetFormat::Grid : SheetFormat::Ndjson)),
      color_(ToTerminal(plan) && TerminalShowsColor()) {
  if (plan_.append) soFar_ = ReadSheetsSoFar(plan_.output, format_);
  if (format_ == SheetFormat::Csv && soFar_.bytes == 0) header_ = CsvHeader();
}

void SheetWriter::Begin() {
  using platform::OpenMode;
  if (!plan_.output.empty())
    file_ = OpenOutput(plan_.output, plan_.append ? OpenMode::Append : OpenMode::New);
  Target().Check();
  OpenSummary();
  if (plan_.append && SizeOf(plan_.output) != soFar_.bytes) {
    throw CommandFailure(
        fmt::format("The file \"{}\" has changed since the scan began.|Scan again.", plan_.output));
  }
}

void SheetWriter::Keep(const clsTeskReader& engine, const SheetRecord& record) {
  Target().Keep(header_ + TextOf(engine, record));
}

void SheetWriter::Settle(const clsTeskReader& engine, const SheetRecord& record) {
  Target().Settle(header_ + TextOf(engine, record));
  header_.clear();
}

void SheetWriter::End() {
  if (file_) file_->Discard();
  Target().Close();
}

// Once: at the start, where a wrong path costs no batch, or where nothing was started, at the end.
void SheetWriter::OpenSummary() {
  if (!summary_ && !plan_.summary.empty()) summary_ = OpenOutput(plan_.summary, platform::OpenMode::Replace);
}

void SheetWriter::WriteSummary(const BatchReport& report) {
  OpenSummary();
  if (!summary_) return;
  summary_->Write(SummaryJson(report));
  summary_->Close();
}

std::string SheetWriter::TextOf(const clsTeskReader& engine, const SheetRecord& record) const {
  switch (format_) {
    case SheetFormat::Ndjson:
      return NdjsonText(record);
    case SheetFormat::Csv:
      return CsvText(record);
    case SheetFormat::Grid:
      break;
  }
  return GridText(record, engine.ReaderName(),
                  {.threshold = engine.RecognitionThreshold(),
                   .darkest = engine.RecognitionThresholdMax(),
                   .color = color_});
}

}  // namespace tesk::cli

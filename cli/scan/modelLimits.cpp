// The options held against the models' limits.
#include "cli/scan/modelLimits.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/CommandError.h"
#include "profiles/models.h"

namespace tesk::cli {
namespace {

// One direction of a window.
struct Axis {
  std::string_view what;
  std::int32_t start, count, gap;

  std::int32_t Last() const { return start + (count - 1) * gap; }
};

class Limits {
 public:
  Limits(const ScanPlan& plan, const clsTeskReader& engine)
      : plan_(plan), engine_(engine), profile_(*engine.Profile()), family_(FamilyOf(engine.ReaderType())) {}

  void CheckSides() const {
    if (family_.toldSizes && !plan_.side1) {
      throw UsageError(
          fmt::format("--side1: is required: the {} reads the rows and columns that it is told; write "
                      "ROWSxCOLUMNS, for example --side1 50x48",
                      engine_.ReaderName()));
    }
    if (plan_.side1) CheckSizes("--side1", *plan_.side1);
    if (plan_.side2) CheckSizes("--side2", *plan_.side2);
    if (plan_.side1 && plan_.side2) CheckSideEnd(*plan_.side1, *plan_.side2);
    if (family_.toldSizes && plan_.side1 && !plan_.side2 && engine_.TwoSided()) {
      throw UsageError(
          "--side2: is required: Duplex and DuplexForm are set, so both sides are read|write ROWSxCOLUMNS, "
          "for example --side2 50x48, or --set DuplexForm=False");
    }
  }

  void CheckWindows() const {
    const bool offered = profile_.Windowing() || profile_.WindowingEnabled();
    if (!plan_.windows.empty() && !offered) {
      throw UsageError(fmt::format("--window: the {} reads whole pages only", engine_.ReaderName()));
    }
    if (offered && plan_.windows.empty() && engine_.RecognitionMode() != teskRecognitionTypePage) {
      throw UsageError("--window: is required: RecognitionMode is set to windows, and there is none to read");
    }
    bool backBegan = false;
    for (const WindowFields& fields : plan_.windows) {
      CheckWindow(fields);
      backBegan = backBegan || fields[6] == 2;
      if (family_.frontFirst && backBegan && fields[6] == 1) {
        RefuseWindow(fields, "the windows of the front (Page 1) come before those of the back (Page 2)");
      }
    }
  }

  void CheckBarcodes() const {
    if (plan_.barcodes.empty()) return;
    if (!profile_.Barcode() && !profile_.BarcodeEnabled()) {
      throw UsageError(fmt::format("--barcode: the {} reads no barcodes", engine_.ReaderName()));
    }
    if (plan_.barcodes.size() > static_cast<std::size_t>(family_.mostBarcodes)) {
      throw UsageError(fmt::format("--barcode: the {} takes at most {} barcodes, {} were given",
                                   engine_.ReaderName(), family_.mostBarcodes, plan_.barcodes.size()));
    }
    for (const BarcodeFields& fields : plan_.barcodes) {
      if (fields.page != 1 && fields.page != 2) {
        throw UsageError(
            fmt::format("--barcode: Page {} is no side: 1 is the front, 2 the back", fields.page));
      }
      if (std::min({fields.field, fields.distance, fields.length}) < 0) {
        throw UsageError("--barcode: Field, Distance and Length are 0 or more");
      }
    }
  }

 private:
  void CheckSizes(std::string_view option, const SheetSizes& sizes) const {
    for (std::size_t i = 0; i < sizes.rows.size(); ++i) {
      if (sizes.rows[i] > 0) CheckSize(option, sizes.rows[i], sizes.columns[i]);
    }
  }

  // Nothing marks where the front ends and the back begins: the largest front decides for all sheets.
  void CheckSideEnd(const SheetSizes& front, const SheetSizes& back) const {
    const bool page = engine_.RecognitionMode() == teskRecognitionTypePage;
    if (!family_.wholeRows || !page || !engine_.TwoSided()) return;
    const std::int16_t largest = *std::ranges::max_element(front.rows);
    for (std::size_t i = 0; i < front.rows.size(); ++i) {
      if (front.rows[i] == largest || back.rows[i] == 0) continue;
      throw UsageError(
          fmt::format("--side1: the {} sends both sides in one piece, which is parted behind the rows of the "
                      "largest front; sheets with backs need the same number of rows there, {}",
                      engine_.ReaderName(), largest));
    }
  }

  void CheckSize(std::string_view option, std::int16_t rows, std::int16_t columns) const {
    const std::int16_t widest = profile_.MaxCols();
    const bool page = engine_.RecognitionMode() == teskRecognitionTypePage;
    const std::string size = fmt::format("{}: {}x{}", option, rows, columns);
    if (family_.wholeRows && page && columns != widest) {
      throw UsageError(
          fmt::format("{} does not fit: the {} reads pages of {} columns; write {}x{}|narrower "
                      "parts of a sheet are read with --window",
                      size, engine_.ReaderName(), widest, rows, widest));
    }
    if (columns > widest) {
      throw UsageError(
          fmt::format("{} is too wide: the {} reads at most {} columns", size, engine_.ReaderName(), widest));
    }
    if (rows > family_.mostRows) {
      throw UsageError(fmt::format("{} is too long: the {} reads at most {} rows", size, engine_.ReaderName(),
                                   family_.mostRows));
    }
  }

  void CheckWindow(const WindowFields& fields) const {
    const std::int16_t page = fields[6];
    if (page != 1 && page != 2) RefuseWindow(fields, "Page is 1 (front) or 2 (back)");
    if (page == 2 && !(engine_.TwoSided() && plan_.side2)) {
      RefuseWindow(fields, "the back is not read: it takes --side2 and a scanner that reads both sides");
    }
    if (fields[7] != 0 && fields[7] != 1)
      RefuseWindow(fields, "Orientation is 0 (by columns) or 1 (by rows)");
    const SheetSizes& side = page == 1 ? *plan_.side1 : *plan_.side2;
    CheckAxis(fields, {"row", fields[0], fields[1], fields[2]}, *std::ranges::max_element(side.rows));
    CheckAxis(fields, {"column", fields[3], fields[4], fields[5]}, *std::ranges::max_element(side.columns));
  }

  void CheckAxis(const WindowFields& fields, const Axis& axis, std::int32_t size) const {
    if (axis.count < 1) RefuseWindow(fields, fmt::format("it has no {}s", axis.what));
    if (axis.gap == 0 && axis.count > 1) {
      RefuseWindow(fields, fmt::format("the step from {0} to {0} is 0: write 1 for neighbours", axis.what));
    }
    const auto [first, last] = std::minmax({axis.start, axis.Last()});
    if (first < 1 || last > size) {
      RefuseWindow(fields, fmt::format("{0}s {1} to {2} lie outside the sheet, which has {0}s 1 to {3}",
                                       axis.what, first, last, size));
    }
    if (std::max({first, axis.count, axis.gap < 0 ? -axis.gap : axis.gap}) > family_.mostInWindow) {
      RefuseWindow(fields, fmt::format("the {} takes starts, counts and steps up to {}", engine_.ReaderName(),
                                       family_.mostInWindow));
    }
  }

  [[noreturn]] static void RefuseWindow(const WindowFields& fields, std::string_view why) {
    throw UsageError(fmt::format("--window {}: {}", fmt::join(fields, ","), why));
  }

  const ScanPlan& plan_;
  const clsTeskReader& engine_;
  const clsTeskReaderProfile& profile_;
  const FamilyTraits& family_;
};

}  // namespace

void CheckModelLimits(const ScanPlan& plan, const clsTeskReader& engine) {
  const Limits limits(plan, engine);
  limits.CheckSides();
  limits.CheckWindows();
  limits.CheckBarcodes();
}

}  // namespace tesk::cli

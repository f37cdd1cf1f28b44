// The ordered list of object references and the two collections that hosts fill before scanning.
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "engine/clsTeskReaderBarcodes.h"
#include "engine/clsTeskReaderWindows.h"
#include "tests/support/RecordingHost.h"

namespace tesk::test {
namespace {

using Sources = std::vector<std::string>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::shared_ptr<clsTeskReaderBarcode> BarcodeOnField(std::int16_t field) {
  auto barcode = std::make_shared<clsTeskReaderBarcode>();
  barcode->SetField(field);
  return barcode;
}

std::vector<std::int16_t> Fields(const clsTeskReaderBarcodes& barcodes) {
  std::vector<std::int16_t> fields;
  for (std::int32_t i = 1; i <= barcodes.Count(); ++i)
    fields.push_back(barcodes.Item(AtPosition(i))->Field());
  return fields;
}

void Fill(clsTeskReaderBarcodes& barcodes, std::int16_t count) {
  for (std::int16_t field = 1; field <= count; ++field) barcodes.Add(BarcodeOnField(field));
}

TEST(Barcodes, AddPutsTheItemWhereItIsTold) {
  using Place = std::optional<Index>;
  struct Case {
    Place before, after;
    std::vector<std::int16_t> expected;  // empty: as before
    std::int32_t error = 0;
  };
  const Case cases[] = {{{}, {}, {1, 2, 3, 9}},
                        {1.0, {}, {9, 1, 2, 3}},
                        {3.0, {}, {1, 2, 9, 3}},
                        {{}, 1.0, {1, 9, 2, 3}},
                        {{}, 3.0, {1, 2, 3, 9}},
                        {{}, 1.5, {1, 2, 9, 3}},
                        {1.0, 1.0, {}, kErrorInvalidCall},
                        {0.0, {}, {}, kErrorSubscript},
                        {4.0, {}, {}, kErrorSubscript},
                        {{}, 0.0, {}, kErrorSubscript},
                        {{}, 4.0, {}, kErrorSubscript},
                        {{}, kNaN, {}, kErrorSubscript},
                        {"1", {}, {}, kErrorInvalidCall},
                        {{}, "", {}, kErrorInvalidCall}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - cases));
    RecordingHost host;
    clsTeskReaderBarcodes barcodes;
    Fill(barcodes, 3);
    barcodes.Add(BarcodeOnField(9), c.before, c.after);
    EXPECT_EQ(Fields(barcodes), c.error == 0 ? c.expected : (std::vector<std::int16_t>{1, 2, 3}));
    EXPECT_EQ(host.Sources(), c.error == 0 ? Sources{} : Sources{"clsTeskReaderBarcodes.Add"});
    EXPECT_EQ(host.errors.empty() ? 0 : host.errors[0].number, c.error);
  }
}

TEST(Barcodes, MissingItemsAreEmptyAndNoError) {
  RecordingHost host;
  clsTeskReaderBarcodes barcodes;
  EXPECT_FALSE(barcodes.Exists(1.0));
  Fill(barcodes, 2);
  const double kHuge = std::numeric_limits<double>::max();
  for (const Index& missing :
       {Index(0.0), Index(3.0), Index(-1.0), Index(0.5), Index(2.6), Index(4294967297.0), Index(kHuge),
        Index(-kHuge), Index(kNaN), Index("1"), Index("")}) {
    EXPECT_FALSE(barcodes.Exists(missing));
    EXPECT_EQ(barcodes.Item(missing), nullptr);
  }
  EXPECT_EQ(barcodes.Item(2.4)->Field(), 2);
  EXPECT_TRUE(host.errors.empty());
}

TEST(Barcodes, RemoveAndAddReportWhatIsNotThereAndSpareTheRest) {
  RecordingHost host;
  clsTeskReaderBarcodes barcodes;
  Fill(barcodes, 3);
  barcodes.Remove(2.0);
  EXPECT_TRUE(host.errors.empty());
  barcodes.Remove(3.0);
  barcodes.Remove("1");
  barcodes.Add(nullptr);
  EXPECT_EQ(host.Sources(), (Sources{"clsTeskReaderBarcodes.Remove", "clsTeskReaderBarcodes.Remove",
                                     "clsTeskReaderBarcodes.Add"}));
  EXPECT_EQ(host.errors[2].number, kErrorObjectNotSet);
  EXPECT_EQ(Fields(barcodes), (std::vector<std::int16_t>{1, 3}));
}

TEST(Barcodes, ItemsAreSharedWithWhoeverAddedThemUntilAllAreRemoved) {
  clsTeskReaderBarcodes barcodes;
  const auto barcode = BarcodeOnField(1);
  barcodes.Add(barcode);
  barcodes.Add(barcode);
  barcode->SetField(7);
  EXPECT_EQ(Fields(barcodes), (std::vector<std::int16_t>{7, 7}));
  barcodes.RemoveAll();
  EXPECT_EQ(barcode.use_count(), 1);
}

TEST(Windows, BehaveAsBarcodesByWholePositionsUnderTheirOwnName) {
  RecordingHost host;
  clsTeskReaderWindows windows;
  windows.RemoveAll();
  EXPECT_FALSE(windows.Exists(1));
  const auto first = std::make_shared<clsTeskReaderWindow>();
  const auto second = std::make_shared<clsTeskReaderWindow>();
  windows.Add(first);
  windows.Add(second, 1.0);
  EXPECT_EQ(windows.Item(1), second);
  EXPECT_EQ(windows.Item(2), first);
  for (const std::int32_t missing : {0, 3, -1, INT32_MAX, INT32_MIN}) {
    EXPECT_FALSE(windows.Exists(missing));
    EXPECT_EQ(windows.Item(missing), nullptr);
  }
  EXPECT_TRUE(host.errors.empty());
  windows.Remove(3);
  windows.Add(first, 1.0, 1.0);
  EXPECT_EQ(host.Sources(), (Sources{"clsTeskReaderWindows.Remove", "clsTeskReaderWindows.Add"}));
  windows.RemoveAll();
  EXPECT_EQ(windows.Count(), 0);
}

struct Noted {
  Noted(std::string text, std::vector<std::string>& notes) : name(std::move(text)), released(notes) {}
  Noted(const Noted&) = delete;
  Noted& operator=(const Noted&) = delete;
  ~Noted() {
    released.push_back(name);
    if (whenReleased) whenReleased();
  }
  std::string name;
  std::vector<std::string>& released;
  std::function<void()> whenReleased;
};

TEST(ObjectList, ReleasesFromTheLastToTheFirstAndIsWholeWhereAnObjectCallsBack) {
  for (const bool callsBack : {false, true}) {
    Sources released;
    ObjectList<Noted> list;
    for (const char* name : {"a", "b", "c"}) list.Add(std::make_shared<Noted>(name, released), {}, {});
    if (callsBack) {
      list.Find(3.0)->whenReleased = [&] {
        EXPECT_EQ(list.Count(), 2);
        list.Remove(1.0);
      };
    }
    list.RemoveAll();
    EXPECT_EQ(released, callsBack ? (Sources{"c", "a", "b"}) : (Sources{"c", "b", "a"}));
    EXPECT_EQ(list.Count(), 0);
  }
}

TEST(ObjectList, KeysAreFoundInAnyCaseAndTakenOnce) {
  ObjectList<int> list;
  const auto one = std::make_shared<int>(1);
  list.Add(one, {}, {}, "Alpha");
  list.Add(std::make_shared<int>(2), {}, {});
  EXPECT_EQ(list.Find("ALPHA"), one);
  EXPECT_EQ(list.Find(""), nullptr) << "an item without a key has no empty key";
  const auto taken = Attempt([&] { list.Add(one, {}, {}, "alpha"); });
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->Number(), kErrorInvalidCall);
  list.Add(std::make_shared<int>(0), "alpha", {});
  EXPECT_EQ(*list.Find(1.0), 0);
  list.Remove("alpha");
  EXPECT_EQ(list.Find("alpha"), nullptr);
  EXPECT_EQ(list.Count(), 2);
}

template <class Owner, class Value>
using Property = std::pair<Value (Owner::*)() const, void (Owner::*)(Value)>;

// The first value is 0; every value is taken, in range or not, and kept on its own.
template <class Owner, class Value>
void ExpectKept(Owner& owner, const std::vector<Property<Owner, Value>>& properties) {
  std::int16_t value = INT16_MIN;
  for (const auto& [get, set] : properties) {
    EXPECT_EQ((owner.*get)(), Value{});
    (owner.*set)(static_cast<Value>(value++));
  }
  value = INT16_MIN;
  for (const auto& [get, set] : properties) EXPECT_EQ((owner.*get)(), static_cast<Value>(value++));
}

TEST(Items, KeepEveryPropertyOnItsOwnAndCheckNone) {
  using W = clsTeskReaderWindow;
  W window;
  ExpectKept<W, std::int16_t>(window, {{&W::StartRow, &W::SetStartRow},
                                       {&W::NumRows, &W::SetNumRows},
                                       {&W::RowGap, &W::SetRowGap},
                                       {&W::StartCol, &W::SetStartCol},
                                       {&W::NumCols, &W::SetNumCols},
                                       {&W::ColGap, &W::SetColGap},
                                       {&W::Page, &W::SetPage},
                                       {&W::Orientation, &W::SetOrientation},
                                       {&W::NumItems, &W::SetNumItems},
                                       {&W::NumChoices, &W::SetNumChoices}});
  using B = clsTeskReaderBarcode;
  B barcode;
  ExpectKept<B, std::int16_t>(barcode, {{&B::Page, &B::SetPage},
                                        {&B::Field, &B::SetField},
                                        {&B::Distance, &B::SetDistance},
                                        {&B::Length, &B::SetLength}});
  ExpectKept<B, teskBarcodeType>(barcode, {{&B::Symbology, &B::SetSymbology}});
  ExpectKept<B, teskBarcodeOrientation>(barcode, {{&B::Orientation, &B::SetOrientation}});
}

}  // namespace
}  // namespace tesk::test

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
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Barcodes on the fields 1, 2 and 3, and a host that hears of errors.
struct Three {
  Three() {
    for (std::int16_t field = 1; field <= 3; ++field) barcodes.Add(OnField(field));
  }
  static std::shared_ptr<clsTeskReaderBarcode> OnField(std::int16_t field) {
    auto barcode = std::make_shared<clsTeskReaderBarcode>();
    barcode->SetField(field);
    return barcode;
  }
  // The fields in their order, and the errors: "1 2 3 Add=5".
  std::string Text() const {
    std::string text;
    for (std::int32_t i = 1; i <= barcodes.Count(); ++i) {
      text += (i == 1 ? "" : " ") + std::to_string(barcodes.Item(AtPosition(i))->Field());
    }
    for (const ErrorReport& error : host.errors) {
      text += error.source.substr(error.source.rfind("Barcodes.") + 8) + "=" + std::to_string(error.number);
    }
    return text;
  }

  RecordingHost host;
  clsTeskReaderBarcodes barcodes;
};

TEST(Barcodes, AddPutsTheItemWhereItIsTold) {
  const struct {
    std::optional<Index> before, after;
    const char* expected;
  } cases[] = {{{}, {}, "1 2 3 9"},
               {1.0, {}, "9 1 2 3"},
               {3.0, {}, "1 2 9 3"},
               {{}, 1.0, "1 9 2 3"},
               {{}, 3.0, "1 2 3 9"},
               {{}, 1.5, "1 2 9 3"},
               {1.0, 1.0, "1 2 3.Add=5"},
               {0.0, {}, "1 2 3.Add=9"},
               {4.0, {}, "1 2 3.Add=9"},
               {{}, 0.0, "1 2 3.Add=9"},
               {{}, 4.0, "1 2 3.Add=9"},
               {{}, kNaN, "1 2 3.Add=9"},
               {{}, kInfinity, "1 2 3.Add=9"},
               {"1", {}, "1 2 3.Add=5"},
               {{}, "", "1 2 3.Add=5"}};
  for (const auto& [before, after, expected] : cases) {
    Three three;
    three.barcodes.Add(Three::OnField(9), before, after);
    EXPECT_EQ(three.Text(), expected);
  }
}

TEST(Barcodes, WhatIsNotThereIsEmptyWhenAskedForAndAnErrorWhenRemoved) {
  constexpr double kHuge = std::numeric_limits<double>::max();
  for (const Index& missing :
       std::initializer_list<Index>{0.0, 4.0, -1.0, 0.5, 3.6, 4294967297.0, kHuge, -kHuge, kNaN, "1", ""}) {
    Three three;
    EXPECT_FALSE(three.barcodes.Exists(missing));
    EXPECT_EQ(three.barcodes.Item(missing), nullptr);
    EXPECT_EQ(three.Text(), "1 2 3");
    three.barcodes.Remove(missing);
    three.barcodes.Add(nullptr);
    EXPECT_EQ(three.Text(), missing.index() == 0 ? "1 2 3.Remove=9.Add=91" : "1 2 3.Remove=5.Add=91");
    three.barcodes.Remove(2.4);
    EXPECT_EQ(three.Text().substr(0, 4), "1 3.") << "and the rest is spared";
  }
  EXPECT_FALSE(clsTeskReaderBarcodes().Exists(1.0));
}

TEST(Barcodes, ItemsAreSharedWithWhoeverAddedThemUntilAllAreRemoved) {
  Three three;
  const auto barcode = Three::OnField(4);
  three.barcodes.Add(barcode);
  three.barcodes.Add(barcode);
  barcode->SetField(7);
  EXPECT_EQ(three.Text(), "1 2 3 7 7");
  three.barcodes.RemoveAll();
  EXPECT_EQ(barcode.use_count(), 1);
}

TEST(Windows, BehaveAsBarcodesByWholePositionsUnderTheirOwnName) {
  RecordingHost host;
  clsTeskReaderWindows windows;
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
  windows.Remove(3);
  windows.Add(first, 1.0, 1.0);
  EXPECT_EQ(host.Sources(), (Sources{"clsTeskReaderWindows.Remove", "clsTeskReaderWindows.Add"}));
  windows.RemoveAll();
  EXPECT_FALSE(windows.Exists(1));
}

struct Noted {
  Noted(std::string text, Sources& notes) : name(std::move(text)), released(notes) {}
  Noted(const Noted&) = delete;
  Noted& operator=(const Noted&) = delete;
  ~Noted() {
    released.push_back(name);
    if (whenReleased) whenReleased();
  }
  std::string name;
  Sources& released;
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
  EXPECT_TRUE(taken && taken->Number() == kErrorInvalidCall);
  list.Add(std::make_shared<int>(0), "alpha", {});
  EXPECT_EQ(*list.Find(1.0), 0);
  list.Remove("alpha");
  EXPECT_EQ(list.Find("alpha"), nullptr);
  EXPECT_EQ(list.Count(), 2);
}

// Every value is taken, in range or not, and kept on its own.
template <class Owner, class Value>
void ExpectKept(const std::vector<Value (Owner::*)() const>& getters,
                const std::vector<void (Owner::*)(Value)>& setters) {
  Owner owner;
  std::int16_t value = INT16_MIN;
  for (std::size_t i = 0; i < getters.size(); ++i) {
    EXPECT_EQ((owner.*getters[i])(), Value{});
    (owner.*setters[i])(static_cast<Value>(value++));
  }
  value = INT16_MIN;
  for (const auto get : getters) EXPECT_EQ((owner.*get)(), static_cast<Value>(value++));
}

TEST(Items, KeepEveryPropertyOnItsOwnAndCheckNone) {
  using W = clsTeskReaderWindow;
  ExpectKept<W, std::int16_t>(
      {&W::StartRow, &W::NumRows, &W::RowGap, &W::StartCol, &W::NumCols, &W::ColGap, &W::Page,
       &W::Orientation, &W::NumItems, &W::NumChoices},
      {&W::SetStartRow, &W::SetNumRows, &W::SetRowGap, &W::SetStartCol, &W::SetNumCols, &W::SetColGap,
       &W::SetPage, &W::SetOrientation, &W::SetNumItems, &W::SetNumChoices});
  using B = clsTeskReaderBarcode;
  ExpectKept<B, std::int16_t>({&B::Page, &B::Field, &B::Distance, &B::Length},
                              {&B::SetPage, &B::SetField, &B::SetDistance, &B::SetLength});
  ExpectKept<B, teskBarcodeType>({&B::Symbology}, {&B::SetSymbology});
  ExpectKept<B, teskBarcodeOrientation>({&B::Orientation}, {&B::SetOrientation});
}

}  // namespace
}  // namespace tesk::test

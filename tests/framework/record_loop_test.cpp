#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "zorvat/automation.h"

namespace zorvat {
namespace {

// A collection of numbers whose enumerator reports, as its hint, a count chosen by the
// test: the true number still to come, none, or one far beyond any memory.
class HintedNumbers final : public AutomationObject {
 public:
  enum class Hint { True, None, Huge };
  HintedNumbers(std::vector<int> numbers, Hint hint) : numbers_(std::move(numbers)), hint_(hint) {}

  Variant get(std::string_view) const override { raise_not_supported(); }
  std::unique_ptr<Enumerator> enumerate() const override {
    return std::make_unique<Numbers>(numbers_, hint_);
  }

 private:
  class Numbers final : public Enumerator {
   public:
    Numbers(const std::vector<int>& numbers, Hint hint) : numbers_(numbers), hint_(hint) {}
    bool next(Variant& element) override {
      if (next_ == numbers_.size()) return false;
      element = Variant(static_cast<std::int32_t>(numbers_[next_++]));
      return true;
    }
    std::size_t remaining_hint() const override {
      switch (hint_) {
        case Hint::True:
          return numbers_.size() - next_;
        case Hint::None:
          return 0;
        case Hint::Huge:
          break;
      }
      return std::numeric_limits<std::size_t>::max() / 3;
    }

   private:
    const std::vector<int>& numbers_;
    Hint hint_;
    std::size_t next_ = 0;
  };

  std::vector<int> numbers_;
  Hint hint_;
};

Variant numbers(std::vector<int> values, HintedNumbers::Hint hint) {
  return Variant(ObjectRef(std::make_shared<HintedNumbers>(std::move(values), hint)));
}

// Writes each number as that many "x" and a line end: 0 writes nothing at all.
std::string write_all(const Variant& collection, std::vector<std::size_t>* capacities = nullptr) {
  std::string text = "HEAD\n";
  for_each_record(collection, text, [&](const Variant& element) {
    if (capacities != nullptr) capacities->push_back(text.capacity());
    const int count = to_long(element);
    if (count == 0) return;
    text.append(static_cast<std::size_t>(count), 'x');
    text += '\n';
  });
  return text;
}

TEST(RecordLoop, EveryElementIsWrittenInOrderWhateverTheHint) {
  const std::string expected =
      "HEAD\n"
      "xx\n"
      "xxxxx\n"
      "x\n"
      "xxx\n";
  for (auto hint :
       {HintedNumbers::Hint::True, HintedNumbers::Hint::None, HintedNumbers::Hint::Huge}) {
    EXPECT_EQ(write_all(numbers({0, 2, 0, 5, 1, 3}, hint)), expected);
    EXPECT_EQ(write_all(numbers({}, hint)), "HEAD\n");
    EXPECT_EQ(write_all(numbers({0, 0}, hint)), "HEAD\n");
  }
}

TEST(RecordLoop, RoomForTheRestIsMadeAtTheFirstRecordWritten) {
  // Two empty elements, then a record of 100 bytes with 1,000 more elements to come:
  // from then on the text holds them all at that size without growing again.
  std::vector<int> values = {0, 0, 99};
  values.resize(values.size() + 1000, 99);
  std::vector<std::size_t> capacities;
  const std::string text = write_all(numbers(values, HintedNumbers::Hint::True), &capacities);
  ASSERT_EQ(text.size(), 5u + 1001u * 100u);
  ASSERT_EQ(capacities.size(), values.size());
  EXPECT_LT(capacities[2], 1000u);  // nothing reserved before the first record
  EXPECT_GE(capacities[3], 5u + 1001u * 100u);
  // Reserved once: it never moves again.
  for (std::size_t i = 3; i < capacities.size(); ++i) EXPECT_EQ(capacities[i], capacities[3]);
}

TEST(RecordLoop, WithoutAHintTheTextGrowsAsItAlwaysHas) {
  std::vector<std::size_t> capacities;
  write_all(numbers({9, 9, 9, 9, 9, 9, 9, 9, 9, 9}, HintedNumbers::Hint::None), &capacities);
  EXPECT_LT(capacities.back(), 1000u);
}

TEST(RecordLoop, AHintTooLargeToReserveIsPassedOver) {
  std::vector<std::size_t> capacities;
  const std::string text = write_all(numbers({9, 9, 9}, HintedNumbers::Hint::Huge), &capacities);
  EXPECT_EQ(text, "HEAD\nxxxxxxxxx\nxxxxxxxxx\nxxxxxxxxx\n");
  EXPECT_LT(capacities.back(), 1000u);

  // Reserved straight, a room that cannot be had is skipped, not raised: past the
  // size a text can have, past an eighth of the address space, or records as large
  // as memory.
  constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
  std::string direct = "abc";
  const std::size_t capacity = direct.capacity();
  reserve_for_records(direct, 1u << 20, kMost >> 21);
  reserve_for_records(direct, 999, kMost / 8 / 1000);
  reserve_for_records(direct, kMost / 2, 3);
  EXPECT_EQ(direct, "abc");
  EXPECT_EQ(direct.capacity(), capacity);
}

}  // namespace
}  // namespace zorvat

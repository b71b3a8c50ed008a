// The memory manager's pure rules: slot choice, alignment, the parsed switches, the
// high-bandwidth decisions and budget, and the scratch owner.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "common/scratch.hpp"
#include "service/memory/block_layout.hpp"
#include "service/memory/high_bandwidth.hpp"
#include "service/memory/manager_start.hpp"
#include "service/memory/slot_choice.hpp"

namespace {

using namespace tav::service;

// A slot as a test states it: its capacity (0 for empty) and whether it is in use.
struct slot_state {
  size_t capacity;
  bool in_use;
};

struct choice_case {
  const char* name;
  std::vector<slot_state> slots;  // the rest of the five are empty
  size_t need;
  slot_action action;
  int index;
};

void PrintTo(const choice_case& c, std::ostream* out) { *out << c.name; }

class SlotChoice : public testing::TestWithParam<choice_case> {};

TEST_P(SlotChoice, PicksThisSlot) {
  const choice_case& c = GetParam();
  cache_slot slots[cache_slots] = {};
  for (size_t i = 0; i < c.slots.size(); ++i) {
    slots[i].capacity = c.slots[i].capacity;
    slots[i].in_use = c.slots[i].in_use;
  }
  slot_choice choice = choose_slot(slots, c.need);
  EXPECT_EQ(choice.action, c.action);
  EXPECT_EQ(choice.index, c.index);
}

constexpr bool idle = false;
constexpr bool busy = true;

const choice_case choice_cases[] = {
    {"empty_cache_makes_a_slot", {}, 1064, slot_action::create, 0},
    {"equal_beats_an_earlier_larger", {{1300, idle}, {1064, idle}}, 1064, slot_action::take, 1},
    {"smallest_larger", {{3000, idle}, {2000, idle}, {2500, idle}}, 1064, slot_action::take, 1},
    {"first_of_equal_larger", {{2000, idle}, {2000, idle}}, 1064, slot_action::take, 0},
    {"busy_slots_are_skipped", {{1064, busy}, {900, idle}, {3000, idle}}, 1064,
     slot_action::take, 2},
    {"larger_before_a_new_slot", {{1000, idle}, {5000, idle}}, 1064, slot_action::take, 1},
    {"new_slot_before_replacing", {{1000, idle}, {900, idle}}, 1064, slot_action::create, 2},
    {"hole_left_by_a_release", {{0, idle}, {500, idle}}, 1064, slot_action::create, 0},
    {"replace_first_too_small",
     {{500, busy}, {800, idle}, {600, idle}, {5000, busy}, {900, busy}},
     1064,
     slot_action::replace,
     1},
    {"all_busy_goes_uncached",
     {{5000, busy}, {5000, busy}, {1064, busy}, {64, busy}, {9000, busy}},
     1064,
     slot_action::uncached,
     -1},
};

INSTANTIATE_TEST_SUITE_P(Cases, SlotChoice, testing::ValuesIn(choice_cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(BlockLayout, AlignmentRule) {
  EXPECT_EQ(effective_alignment(64), 64u);
  EXPECT_EQ(effective_alignment(1 << 30), size_t{1} << 30);
  EXPECT_EQ(effective_alignment(96), 64u);
  EXPECT_EQ(effective_alignment(32), 64u);
  EXPECT_EQ(effective_alignment(-64), 64u);
  EXPECT_EQ(effective_alignment(INT32_MIN), 64u);
  EXPECT_EQ(align_up(0x1000, 4096), 0x1000u);
  EXPECT_EQ(align_up(0x1001, 64), 0x1040u);
}

struct switches_case {
  const char* disable;
  const char* limit;
  bool cache_disabled;
  long long fast_limit;
};

void PrintTo(const switches_case& c, std::ostream* out) {
  *out << (c.disable ? c.disable : "(absent)") << ", " << (c.limit ? c.limit : "(absent)");
}

class Switches : public testing::TestWithParam<switches_case> {};

TEST_P(Switches, ParseTo) {
  const switches_case& c = GetParam();
  memory_switches read = parse_switches(c.disable, c.limit);
  EXPECT_EQ(read.cache_disabled, c.cache_disabled);
  EXPECT_EQ(read.fast_limit, c.fast_limit);
}

constexpr long long largest_limit = ((1LL << 43) - 1) << 20;

INSTANTIATE_TEST_SUITE_P(
    Values, Switches,
    testing::Values(switches_case{nullptr, nullptr, false, -1}, switches_case{"", "", false, -1},
                    switches_case{"no", nullptr, true, -1}, switches_case{nullptr, "0", false, 0},
                    switches_case{nullptr, "-5", false, -5LL << 20},
                    switches_case{nullptr, " 7", false, 7LL << 20},
                    switches_case{nullptr, "x7", false, -1},
                    switches_case{nullptr, "99999999999999999999", false, largest_limit},
                    switches_case{nullptr, "-99999999999999999999", false, -largest_limit}));

TEST(HighBandwidth, OnlyTheManyCoreClassWithADynamicCLibrary) {
  constexpr uint64_t group = 0x708000000;
  EXPECT_TRUE(high_bandwidth_candidate(group, true));
  EXPECT_TRUE(high_bandwidth_candidate(~uint64_t{0}, true));
  EXPECT_FALSE(high_bandwidth_candidate(group, false));
  for (uint64_t bit = 1; bit != 0; bit <<= 1)
    if (group & bit) EXPECT_FALSE(high_bandwidth_candidate(group & ~bit, true)) << bit;
}

TEST(HighBandwidth, LibraryFromVersion110WithBothFunctions) {
  EXPECT_TRUE(memkind_acceptable(1001000, true, true));
  EXPECT_TRUE(memkind_acceptable(2000000, true, true));
  EXPECT_FALSE(memkind_acceptable(1000999, true, true));
  EXPECT_FALSE(memkind_acceptable(1001000, false, true));
  EXPECT_FALSE(memkind_acceptable(1001000, true, false));
}

TEST(HighBandwidth, LibrarySearchOrder) {
  using list = std::vector<std::string>;
  EXPECT_EQ(memkind_candidates("/opt/tav/lib", "/home/app/bin"),
            (list{"/opt/tav/lib/libmemkind.so", "/home/app/bin/libmemkind.so", "libmemkind.so"}));
  EXPECT_EQ(memkind_candidates("", "/bin"), (list{"/bin/libmemkind.so", "libmemkind.so"}));
}

TEST(HighBandwidth, BudgetSubtractsAndGivesBack) {
  fast_budget budget;
  budget.reset(100);
  EXPECT_TRUE(budget.take(60));
  EXPECT_FALSE(budget.take(50));
  EXPECT_EQ(budget.remaining(), 40);
  budget.give_back(60);
  EXPECT_TRUE(budget.take(100));
  EXPECT_EQ(budget.remaining(), 0);

  budget.reset(0);
  EXPECT_FALSE(budget.take(1));
  budget.reset(-5LL << 20);
  EXPECT_TRUE(budget.take(SIZE_MAX));
  budget.give_back(4096);
  EXPECT_EQ(budget.remaining(), -5LL << 20);
}

TEST(Scratch, OwnsAlignedElementsAndMovesThem) {
  tav_serv_thread_free_buffers();
  int start_buffers = 0;
  const long long start_bytes = tav_serv_mem_stat(&start_buffers);
  {
    tav::scratch<double> work(100, 128);
    ASSERT_TRUE(work);
    EXPECT_EQ(work.size(), 100u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(work.data()) % 128, 0u);
    work[99] = 1.5;
    double* held = work.data();
    tav::scratch<double> moved(std::move(work));
    EXPECT_FALSE(work);
    EXPECT_EQ(work.size(), 0u);
    EXPECT_EQ(moved.data(), held);
    tav::scratch<double> assigned(10, 64);
    assigned = std::move(moved);
    EXPECT_EQ(assigned[99], 1.5);
  }
  EXPECT_FALSE(tav::scratch<float>(0, 64));
  EXPECT_FALSE(tav::scratch<double>(SIZE_MAX / 4, 64));
  tav_serv_thread_free_buffers();
  int buffers = 0;
  EXPECT_EQ(tav_serv_mem_stat(&buffers), start_bytes);
  EXPECT_EQ(buffers, start_buffers);
}

}  // namespace

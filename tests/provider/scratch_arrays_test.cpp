// The provider's scratch arrays, its allocation guard, pivot shifting and copyBtoX.
#include <gtest/gtest.h>
#include <tav/tav.h>

#include <complex>
#include <cstdint>
#include <stdexcept>

#include "provider/copy_b_to_x.hpp"
#include "provider/pivots.hpp"
#include "provider/scratch_arrays.hpp"

namespace {

using namespace tav::provider;

long long bytes_held() {
  int buffers = 0;
  return TAV_Mem_Stat(&buffers);
}

template <class T>
class ScratchArrays : public testing::Test {};
using element_types = testing::Types<int, float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(ScratchArrays, element_types);

TYPED_TEST(ScratchArrays, AlignedAndReleased) {
  const long long before = bytes_held();
  {
    array<TypeParam> a = array_new<TypeParam>(1001);
    ASSERT_NE(a.get(), nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(a.get()) % 64, 0u);
    for (int i = 0; i < 1001; ++i) a[i] = TypeParam(i);  // the whole extent is writable
    EXPECT_GE(bytes_held(), before + 1001 * static_cast<long long>(sizeof(TypeParam)));
  }
  EXPECT_EQ(bytes_held(), before);
}

TYPED_TEST(ScratchArrays, CloneCopiesEveryByte) {
  if constexpr (!std::is_same_v<TypeParam, int>) {
    TypeParam source[37];
    for (int i = 0; i < 37; ++i) source[i] = TypeParam(i * 0.5f - 3);
    array<TypeParam> copy = array_clone(37, source);
    EXPECT_EQ(std::memcmp(copy.get(), source, sizeof source), 0);
  }
}

TEST(ScratchArrays, NullBlockIsThrownAsPointer) {
  // The memory manager returns null for 0 bytes, so array_new(0) throws a std::bad_alloc*.
  bool caught_pointer = false;
  try {
    array_new<double>(0);
  } catch (std::bad_alloc* e) {
    caught_pointer = true;
    delete e;
  }
  EXPECT_TRUE(caught_pointer);
}

TEST(AllocationGuard, BadAllocBecomesStatusAndReleasesHandles) {
  const long long before = bytes_held();
  int status = with_allocation_guard([] {
    array<double> first = array_new<double>(500);
    array<int> second = array_new<int>(500);
    throw std::bad_alloc();
    return 0;
  });
  EXPECT_EQ(status, -999999);
  EXPECT_EQ(bytes_held(), before);
}

TEST(AllocationGuard, PointerAndOtherExceptionsPassThrough) {
  const long long before = bytes_held();
  bool caught_pointer = false;
  try {
    with_allocation_guard([] {
      array<float> kept = array_new<float>(64);
      return array_new<float>(0) ? 1 : 0;
    });
  } catch (std::bad_alloc* e) {
    caught_pointer = true;
    delete e;  // the thrower hands the object over with the pointer
  }
  EXPECT_TRUE(caught_pointer);
  EXPECT_EQ(bytes_held(), before);
  EXPECT_THROW(with_allocation_guard([]() -> int { throw std::runtime_error("x"); }),
               std::runtime_error);
  EXPECT_EQ(with_allocation_guard([] { return 7; }), 7);
}

TEST(Pivots, ShiftBothWaysAndNothingForNonPositiveCounts) {
  int p[4] = {0, 3, 2, 3};
  shift_ipiv_up(4, p);
  EXPECT_EQ((std::vector<int>(p, p + 4)), (std::vector<int>{1, 4, 3, 4}));
  shift_ipiv_down(3, p);
  EXPECT_EQ((std::vector<int>(p, p + 4)), (std::vector<int>{0, 3, 2, 4}));
  shift_ipiv_up(0, p);
  shift_ipiv_down(-3, p);
  EXPECT_EQ((std::vector<int>(p, p + 4)), (std::vector<int>{0, 3, 2, 4}));
}

TEST(CopyBtoX, LeadingRowsOfEachColumn) {
  // b is 5 x 3 (leading dimension 5); x receives its leading 2 rows; x's slack stays untouched.
  std::complex<double> b[15], x[8];
  for (int i = 0; i < 15; ++i) b[i] = {double(i), -double(i)};
  for (auto& v : x) v = {-1, -1};
  copyBtoX(5, 2, 3, b, x);
  const int expected[] = {0, 1, 5, 6, 10, 11};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(x[i], b[expected[i]]) << i;
  EXPECT_EQ(x[6], std::complex<double>(-1, -1));
  copyBtoX(5, 2, 0, b, x + 6);
  EXPECT_EQ(x[6], std::complex<double>(-1, -1));
}

}  // namespace

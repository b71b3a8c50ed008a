// Operands whose elements lie more than 2^31 elements apart: leading dimensions and increments
// whose products with an index pass 2^31, inside a reservation of address space of which only
// the touched pages are ever backed. Small integer data, so every result is exact in float. Each
// runnable path in a child process of its own, since the CPU type is read once per process.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "blas/blas_internal.hpp"
#include "child_process.hpp"
#include "code_paths.hpp"

namespace {

using tav::index;

// An index times this passes 2^31; 64 more keeps the columns off one alignment.
constexpr index far = (index{1} << 31) + 64;

// `count` floats of address space, zero on first touch; null when the system refuses.
class sparse_floats {
 public:
  explicit sparse_floats(index count) : bytes_(static_cast<size_t>(count) * sizeof(float)) {
    void* p = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    p_ = p == MAP_FAILED ? nullptr : static_cast<float*>(p);
  }
  ~sparse_floats() {
    if (p_) munmap(p_, bytes_);
  }
  sparse_floats(const sparse_floats&) = delete;
  sparse_floats& operator=(const sparse_floats&) = delete;
  float* data() const { return p_; }

 private:
  size_t bytes_;
  float* p_;
};

// A column-major matrix at p with leading dimension `far`.
struct far_matrix {
  float* p;
  float& operator()(index i, index j) const { return p[i + j * far]; }
};

// Two regions of three columns (or elements) `far` apart, and the failures seen.
struct far_operands {
  sparse_floats region_a{2 * far + 128};
  sparse_floats region_b{2 * far + 128};
  far_matrix a{region_a.data()}, b{region_b.data()};
  int failures = 0;

  void expect_eq(double got, double want, const char* what, index i = 0, index j = 0) {
    if (got == want) return;
    std::fprintf(stderr, "%s at (%lld, %lld): %g, want %g\n", what, static_cast<long long>(i),
                 static_cast<long long>(j), got, want);
    ++failures;
  }
  void level1();
  void products();
  void solve_and_rank_update();
};

void far_operands::level1() {
  float* x = region_a.data();
  float y[3] = {1, 2, 3};
  for (index i = 0; i < 3; ++i) x[i * far] = static_cast<float>(i + 4);  // 4, 5, 6
  tav::blas::axpy<float>(3, 2.0f, x, far, y, 1);
  expect_eq(y[0], 9, "axpy");
  expect_eq(y[2], 15, "axpy");
  expect_eq(tav::blas::dot<float>(3, x, far, y, 1), 4 * 9 + 5 * 12 + 6 * 15, "dot");
  // A negative increment starts from the far end.
  expect_eq(tav::blas::dot<float>(3, x, -far, y, 1), 6 * 9 + 5 * 12 + 4 * 15, "dot backwards");
  expect_eq(tav::blas::asum<float>(3, x, far), 15, "asum");
  expect_eq(static_cast<double>(tav::blas::iamax<float>(3, x, far)), 3, "iamax");
  const float norm = tav::blas::nrm2<float>(3, x, far);  // sqrt(77) to a few ulps
  expect_eq(std::fabs(norm - std::sqrt(77.0f)) <= 4e-6f ? 0 : norm, 0, "nrm2");
  tav::blas::scal<float>(3, 3.0f, x, far);
  expect_eq(x[2 * far], 18, "scal");
  float* z = region_b.data();
  tav::blas::copy<float>(3, x, far, z, far);
  expect_eq(z[2 * far], 18, "copy");
  tav::blas::swap<float>(3, y, 1, z, far);
  expect_eq(y[2], 18, "swap");
  expect_eq(z[2 * far], 15, "swap");
}

void far_operands::products() {
  // A: 80 x 3 with columns far apart, B: 3 x 80 packed, C: 80 x 80. 80 rows and columns take
  // the packed driver, 5 the small strategy.
  constexpr index k = 3;
  for (index i = 0; i < 80; ++i)
    for (index l = 0; l < k; ++l) a(i, l) = static_cast<float>((i + 2 * l) % 7 - 3);
  std::vector<float> bk(k * 80);
  for (index l = 0; l < k; ++l)
    for (index j = 0; j < 80; ++j) bk[l + j * k] = static_cast<float>((3 * j + l) % 5 - 2);
  for (index n : {index{5}, index{80}}) {
    std::vector<float> c(n * n, 1.0f);
    tav::blas::gemm<float>('N', 'N', n, n, k, 1.0f, a.p, far, bk.data(), k, 2.0f, c.data(), n);
    for (index j = 0; j < n; ++j)
      for (index i = 0; i < n; ++i) {
        float want = 2;
        for (index l = 0; l < k; ++l) want += a(i, l) * bk[l + j * k];
        expect_eq(c[i + j * n], want, n == 5 ? "gemm small" : "gemm driver", i, j);
      }
  }
  // op(A) = A^T of a 3 x 3 A whose columns are far apart; C with far columns too.
  for (index j = 0; j < 3; ++j) b(0, j) = b(1, j) = b(2, j) = 0;
  tav::blas::gemm<float>('T', 'N', 3, 3, 3, 1.0f, a.p, far, bk.data(), k, 0.0f, b.p, far);
  for (index j = 0; j < 3; ++j)
    for (index i = 0; i < 3; ++i) {
      float want = 0;
      for (index l = 0; l < k; ++l) want += a(l, i) * bk[l + j * k];
      expect_eq(b(i, j), want, "gemm A^T", i, j);
    }
  // y := A·x over the far columns.
  const float x[3] = {1, -1, 2};
  float y[4] = {};
  tav::blas::gemv<float>('N', 4, 3, 1.0f, a.p, far, x, 1, 0.0f, y, 1);
  for (index i = 0; i < 4; ++i) expect_eq(y[i], a(i, 0) - a(i, 1) + 2 * a(i, 2), "gemv", i);
}

void far_operands::solve_and_rank_update() {
  // L = [2 0 0; 1 4 0; -1 2 8] with far columns; X far apart in B; L·X = B recovered exactly.
  const float l[3][3] = {{2, 0, 0}, {1, 4, 0}, {-1, 2, 8}};
  for (index i = 0; i < 3; ++i)
    for (index j = 0; j < 3; ++j) a(i, j) = l[i][j];
  const float xs[3][2] = {{1, -2}, {3, 1}, {-1, 2}};
  for (index j = 0; j < 2; ++j)
    for (index i = 0; i < 3; ++i) {
      float s = 0;
      for (index q = 0; q < 3; ++q) s += l[i][q] * xs[q][j];
      b(i, j) = s;
    }
  tav::blas::trsm<float>('L', 'L', 'N', 'N', 3, 2, 1.0f, a.p, far, b.p, far);
  for (index j = 0; j < 2; ++j)
    for (index i = 0; i < 3; ++i) expect_eq(b(i, j), xs[i][j], "trsm", i, j);
  // C := A·A^T on the lower triangle, A = the first two far columns of L.
  float c[9] = {};
  tav::blas::syrk<float>('L', 'N', 3, 2, 1.0f, a.p, far, 0.0f, c, 3);
  for (index j = 0; j < 3; ++j)
    for (index i = j; i < 3; ++i)
      expect_eq(c[i + 3 * j], l[i][0] * l[j][0] + l[i][1] * l[j][1], "syrk", i, j);
}

TAV_SCENARIO(far_operands_checks) {
  far_operands f;
  if (f.region_a.data() == nullptr || f.region_b.data() == nullptr) std::exit(77);
  f.level1();
  f.products();
  f.solve_and_rank_update();
  std::exit(f.failures == 0 ? 0 : 1);
}

using FarOperandsOnPath = tav::test::path_test;

TEST_P(FarOperandsOnPath, IndexedIn64Bits) {
  const tav::test::child_result r = tav::test::run_child(
      "far_operands_checks", {{"TAV_DEBUG_CPU_TYPE", std::to_string(GetParam())}});
  if (r.exit_code == 77) GTEST_SKIP() << "no address space for two 17 GB reservations";
  EXPECT_EQ(r.exit_code, 0) << r.err;
}

INSTANTIATE_TEST_SUITE_P(Blas, FarOperandsOnPath, testing::Range(0, 8), tav::test::path_name);

}  // namespace

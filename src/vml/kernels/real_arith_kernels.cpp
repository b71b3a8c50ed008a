// Element-wise add, subtract, multiply and divide of real arrays per code path (complex add and
// subtract are the same operation on the arrays' reals). Each result is the one IEEE operation,
// hence correctly rounded in every accuracy; division reports zero divisors.
#include <immintrin.h>

#include <complex>

#include "vml/kernels/kernel_family.hpp"
#include "vml/kernels/vml_kernel.hpp"

namespace tav::TAV_PATH_NS::vml {
namespace {

// Output arrays at least this long (in bytes) are written with non-temporal stores: the three
// streams then far exceed the caches, and skipping the read-for-ownership of the output saves a
// quarter of the memory traffic (bench/RESULTS.md, "Vector math: arithmetic").
constexpr long streaming_bytes = 8L << 20;

// Division in place checks the divisors block by block before it divides, so that a block
// without zeros never leaves the vector loop.
constexpr int block = 512;

// The element operations, applied alike to scalars and to the compiler's vector types.
template <char symbol>
struct operation {
  static constexpr bool divides = symbol == '/';
  template <class V>
  static V apply(V x, V y) {
    if constexpr (symbol == '+')
      return x + y;
    else if constexpr (symbol == '-')
      return x - y;
    else if constexpr (symbol == '*')
      return x * y;
    else
      return x / y;
  }
};

// Streamed stores go out 32 bytes at a time: one AVX register, or two SSE2 stores, which the
// write-combining buffers join into whole lines alike. (Passing such a vector by value warns of
// an AVX calling convention on the SSE paths; it never leaves the path's own namespace.)
#pragma clang diagnostic ignored "-Wpsabi"
constexpr int stream_bytes = 32;
template <class Real>
using stream_block = Real __attribute__((vector_size(stream_bytes)));

// Returns whether some b[i] is zero; the test costs nothing beside the division, and only
// division asks for it. r either is a or b (in place) or overlaps neither, so no element is
// written before it is read: the loop vectorises without the compiler's overlap tests, which
// cost a dozen instructions per call and sent every call in place to the scalar loop (3.7 times
// the instructions at n = 1000).
template <class Op, class Real>
bool plain(long n, const Real* a, const Real* b, Real* r) {
  int zero = 0;
#pragma clang loop vectorize(assume_safety)
  for (long i = 0; i < n; ++i) {
    const Real y = b[i];
    r[i] = Op::apply(a[i], y);
    if constexpr (Op::divides) zero |= y == Real(0);
  }
  return zero != 0;
}

// r must be aligned to stream_bytes. Returns whether some b[i] is zero, as plain() does.
template <class Op, class Real>
bool streamed(long n, const Real* a, const Real* b, Real* r) {
  using V = stream_block<Real>;
  constexpr long width = stream_bytes / sizeof(Real);
  decltype(V() == V()) zero{};
  long i = 0;
  for (; i + width <= n; i += width) {
    V x, y;
    __builtin_memcpy(&x, a + i, sizeof x);
    __builtin_memcpy(&y, b + i, sizeof y);
    __builtin_nontemporal_store(Op::apply(x, y), reinterpret_cast<V*>(r + i));
    if constexpr (Op::divides) zero |= y == 0;
  }
  bool found = plain<Op>(n - i, a + i, b + i, r + i);
  for (long k = 0; k < width; ++k) found |= zero[k] != 0;
  return found;
}

// An integer reduction, which the vectoriser keeps in registers (a bool one it does not).
template <class Real>
bool any_zero(int n, const Real* b) {
  int found = 0;
  for (int i = 0; i < n; ++i) found |= b[i] == Real(0);
  return found != 0;
}

// x/0 is a pole (VML_STATUS_SING) unless x is 0 (0/0, VML_STATUS_ERRDOM) or a NaN (no status);
// the IEEE quotient stands as the result.
template <class Real>
int zero_divisor_status(Real x, Real y) {
  if (y != Real(0) || x != x) return 0;
  return x == Real(0) ? 1 : 2;
}

// After the division, with a and b intact.
template <class Real>
[[gnu::noinline, gnu::cold]] void report_zero_divisors(int n, const Real* a, const Real* b, Real* r,
                                                       const char* name) {
  for (int i = 0; i < n; ++i)
    if (const int code = zero_divisor_status(a[i], b[i]))
      ::tav::vml::report_error<Real>(code, i, a, b, r, nullptr, name);
}

// One block of an in-place division that holds zero divisors: element by element.
template <class Real>
void divide_reporting(int n, int offset, const Real* a, const Real* b, Real* r, const char* name) {
  for (int i = offset; i < offset + n; ++i) {
    const Real x = a[i], y = b[i];
    r[i] = x / y;
    if (const int code = zero_divisor_status(x, y))
      ::tav::vml::report_error<Real>(code, i, a, b, r, nullptr, name);
  }
}

// Whether [r, r + n) overlaps [x, x + n).
template <class Real>
bool overlap(long n, const Real* r, const Real* x) {
  return r < x + n && x < r + n;
}

  // Division in place checks each block's divisors before dividing it, as the operands of a zero
  // divisor would be gone afterwards.
template <class Op, class Real>
[[gnu::noinline]] void divide_in_place(long n, const Real* a, const Real* b, Real* r,
                                       const char* name) {
  for (long i = 0; i < n; i += block) {
    const int m = static_cast<int>(n - i < block ? n - i : block);
    if (any_zero(m, b + i))
      divide_reporting(m, static_cast<int>(i), a, b, r, name);
    else
      plain<Op>(m, a + i, b + i, r + i);
  }
}

// Long arrays: the elements before r + head, which is aligned to 32 bytes, go first, so that no
// store of the vector loop straddles two cache lines (malloc gives 16-byte alignment, which would
// split every other AVX store) and streamed stores are aligned as they must be. Returns whether
// some b[i] is zero.
template <class Op, class Real>
[[gnu::noinline]] bool aligned_run(long n, const Real* a, const Real* b, Real* r) {
  const auto address = reinterpret_cast<unsigned long>(r);
  if (address % sizeof(Real) != 0) return plain<Op>(n, a, b, r);
  const long head =
      static_cast<long>((stream_bytes - address % stream_bytes) % stream_bytes / sizeof(Real));
  const bool stream = n * static_cast<long>(sizeof(Real)) >= streaming_bytes;
  bool zero = plain<Op>(head, a, b, r);
  zero |= stream ? streamed<Op>(n - head, a + head, b + head, r + head)
                 : plain<Op>(n - head, a + head, b + head, r + head);
  if (stream) _mm_sfence();
  return zero;
}

// A short array with r aligned to 32 bytes, the common case, runs the plain loop without saving
// registers; the other cases are out of line. A division reports afterwards from the intact
// operands.
template <class Op, class Real>
void elementwise(long n, const Real* a, const Real* b, Real* r, const char* name) {
  if (Op::divides && (overlap(n, r, a) || overlap(n, r, b)))
    return divide_in_place<Op>(n, a, b, r, name);
  const bool short_aligned = n < 64 || reinterpret_cast<unsigned long>(r) % stream_bytes == 0;
  const bool zero = short_aligned && n * static_cast<long>(sizeof(Real)) < streaming_bytes
                        ? plain<Op>(n, a, b, r)
                        : aligned_run<Op>(n, a, b, r);
  if (zero) report_zero_divisors(static_cast<int>(n), a, b, r, name);
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::vml

using namespace tav::TAV_PATH_NS::vml;

// Complex add and subtract act on the 2n reals of the arrays (n < 2^31, so 2n fits a long).
extern "C" {

#define TAV_VML_REAL_KERNEL(t, Real, Func, op)                                               \
  void TAV_VML_KERNEL_NAME(t##Func, HA, ynn)(int n, const Real* a, const Real* b, Real* r) { \
    elementwise<op>(n, a, b, r, "v" #t #Func);                                               \
  }
#define TAV_VML_PAIRS_KERNEL(t, Real, Func, op)                                                    \
  void TAV_VML_KERNEL_NAME(t##Func, HA, ynn)(int n, const std::complex<Real>* a,                   \
                                             const std::complex<Real>* b, std::complex<Real>* r) { \
    elementwise<op>(2L * n, reinterpret_cast<const Real*>(a), reinterpret_cast<const Real*>(b),    \
                    reinterpret_cast<Real*>(r), "v" #t #Func);                                     \
  }

TAV_VML_REAL_KERNEL(s, float, Add, operation<'+'>)
TAV_VML_REAL_KERNEL(d, double, Add, operation<'+'>)
TAV_VML_REAL_KERNEL(s, float, Sub, operation<'-'>)
TAV_VML_REAL_KERNEL(d, double, Sub, operation<'-'>)
TAV_VML_REAL_KERNEL(s, float, Mul, operation<'*'>)
TAV_VML_REAL_KERNEL(d, double, Mul, operation<'*'>)
TAV_VML_REAL_KERNEL(s, float, Div, operation<'/'>)
TAV_VML_REAL_KERNEL(d, double, Div, operation<'/'>)
TAV_VML_PAIRS_KERNEL(c, float, Add, operation<'+'>)
TAV_VML_PAIRS_KERNEL(z, double, Add, operation<'+'>)
TAV_VML_PAIRS_KERNEL(c, float, Sub, operation<'-'>)
TAV_VML_PAIRS_KERNEL(z, double, Sub, operation<'-'>)

}  // extern "C"

// Shared by the omatcopy tests: one call described as a case, deterministic operands, the plain
// reference B(op) = alpha·op(A) element by element, and a runner that checks every element of a
// guarded B.
#pragma once

#include <gtest/gtest.h>
#include <tav/tav_types.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "guarded_buffer.hpp"
#include "reference.hpp"

namespace tav::test::omatcopy {

using index = int64_t;

using tav::test::complex_v;
using tav::test::real_of;

// The two-real struct that the C entries take for T.
template <class T>
struct c_type {
  using type = T;
};
template <>
struct c_type<std::complex<float>> {
  using type = tav_complex8;
};
template <>
struct c_type<std::complex<double>> {
  using type = tav_complex16;
};
template <class T>
using c_type_t = typename c_type<T>::type;

template <class T>
using entry_fn = void(char, char, index, index, c_type_t<T>, const c_type_t<T>*, index, index,
                      c_type_t<T>*, index, index, bool);

template <class T>
c_type_t<T> as_c(T x) {
  c_type_t<T> c;
  std::memcpy(&c, &x, sizeof c);
  return c;
}
template <class T>
const c_type_t<T>* as_c(const T* p) {
  return reinterpret_cast<const c_type_t<T>*>(p);
}
template <class T>
c_type_t<T>* as_c(T* p) {
  return reinterpret_cast<c_type_t<T>*>(p);
}

struct call {
  char ordering, trans;
  index rows, cols;
  index lda_extra = 0, ldb_extra = 0;  // leading dimensions beyond the line span
  index sa = 1, sb = 1;                // element strides within lines
  bool stream = false;                 // stores that bypass the cache (per-path entries only)
};

inline std::string describe(const call& c) {
  return std::string("ordering ") + c.ordering + " trans " + c.trans + " " +
         std::to_string(c.rows) + "x" + std::to_string(c.cols) + " lda+" +
         std::to_string(c.lda_extra) + " ldb+" + std::to_string(c.ldb_extra) + " strides " +
         std::to_string(c.sa) + "," + std::to_string(c.sb) + (c.stream ? " streaming" : "");
}

inline char upper(char x) { return x >= 'a' && x <= 'z' ? static_cast<char>(x - 32) : x; }
inline bool transposes(const call& c) { return upper(c.trans) == 'T' || upper(c.trans) == 'C'; }
inline bool conjugates(const call& c) { return upper(c.trans) == 'C' || upper(c.trans) == 'R'; }

// A's lines and their length, and B's: A is rows x cols in the ordering, B is op(A).
struct shape {
  index a_lines, a_length, b_lines, b_length, lda, ldb;
};

inline shape shape_of(const call& c) {
  const bool row_major = upper(c.ordering) == 'R';
  shape s{};
  s.a_lines = row_major ? c.rows : c.cols;
  s.a_length = row_major ? c.cols : c.rows;
  s.b_lines = transposes(c) ? s.a_length : s.a_lines;
  s.b_length = transposes(c) ? s.a_lines : s.a_length;
  s.lda = 1 + (s.a_length - 1) * c.sa + c.lda_extra;
  s.ldb = 1 + (s.b_length - 1) * c.sb + c.ldb_extra;
  return s;
}

// Full-mantissa values that differ everywhere, so that scaling rounds and a misplaced element
// shows.
template <class T>
T operand(index k) {
  using R = real_of<T>;
  const double u = std::ldexp(static_cast<double>((k * 2654435761u) % 1000003u), -20);
  const double v = std::ldexp(static_cast<double>((k * 40503u + 17u) % 999983u), -19);
  if constexpr (complex_v<T>)
    return T(static_cast<R>(1 + u), static_cast<R>(v - 0.9));
  else
    return static_cast<R>(u - 0.3);
}

// alpha·op(x) as one product: (ar·xr - ai·xi, ar·xi + ai·xr), each product rounded alone.
template <class T>
T reference(T alpha, T x, bool conj, bool pure) {
  if constexpr (complex_v<T>) {
    using R = typename T::value_type;
    if (conj) x = T(x.real(), -x.imag());
    if (pure) return x;
    const R p = alpha.real() * x.real();
    const R q = alpha.imag() * x.imag();
    const R r = alpha.real() * x.imag();
    const R s = alpha.imag() * x.real();
    return T(p - q, r + s);
  } else {
    return pure ? x : alpha * x;
  }
}

template <class T>
bool same(T x, T y) {
  if constexpr (complex_v<T>)
    return same(x.real(), y.real()) && same(x.imag(), y.imag());
  else
    return (std::isnan(x) && std::isnan(y)) || std::memcmp(&x, &y, sizeof x) == 0;
}

template <class T>
bool is_one(T alpha) {
  return alpha == T(1);
}

// Runs `entry` on case c and checks all of B: every element of op(A) in place, every other
// element of B's storage and both guard bands unchanged.
template <class T, class Entry>
testing::AssertionResult check_call(Entry&& entry, const call& c, T alpha) {
  const shape s = shape_of(c);
  std::vector<T> a(static_cast<size_t>(s.lda * s.a_lines));
  for (size_t k = 0; k < a.size(); ++k) a[k] = operand<T>(static_cast<index>(k));
  guarded_matrix<T> b(s.ldb - c.ldb_extra, s.b_lines, s.ldb);
  entry(c.ordering, c.trans, c.rows, c.cols, alpha, a.data(), s.lda, c.sa, b.data(), s.ldb, c.sb,
        c.stream);
  if (!b.intact()) return testing::AssertionFailure() << describe(c) << ": wrote outside B";
  const bool conj = complex_v<T> && conjugates(c);
  for (index line = 0; line < s.b_lines; ++line)
    for (index k = 0; k < b.rows(); ++k) {
      const T got = b(k, line);
      if (k % c.sb != 0) {
        if (!is_sentinel(got))
          return testing::AssertionFailure() << describe(c) << ": wrote between elements";
        continue;
      }
      const index element = k / c.sb;
      const index a_line = transposes(c) ? element : line;
      const index a_element = transposes(c) ? line : element;
      const T want = reference(alpha, a[static_cast<size_t>(a_line * s.lda + a_element * c.sa)],
                               conj, is_one(alpha));
      if (!same(got, want))
        return testing::AssertionFailure() << describe(c) << ": B line " << line << " element "
                                           << element << " is " << got << ", expected " << want;
    }
  return testing::AssertionSuccess();
}

// Runs `entry` on case c and checks that B, all of it, still holds the sentinel.
template <class T, class Entry>
testing::AssertionResult check_untouched(Entry&& entry, const call& c, T alpha) {
  std::vector<T> a(64 * 64, T(1));
  guarded_matrix<T> b(32, 32, 40);
  entry(c.ordering, c.trans, c.rows, c.cols, alpha, a.data(), 64, c.sa, b.data(), 40, c.sb,
        c.stream);
  for (index j = 0; j < 32; ++j)
    for (index i = 0; i < 32; ++i)
      if (!is_sentinel(b(i, j))) return testing::AssertionFailure() << describe(c) << ": wrote B";
  if (!b.intact()) return testing::AssertionFailure() << describe(c) << ": wrote outside B";
  return testing::AssertionSuccess();
}

// The sizes every test walks besides 1..20 squared: odd and prime sides that the halving cuts
// unevenly, long thin shapes, the boundary of the parallel form (17x17 sequential, 100x100
// parallel), and lines of A 4 KiB apart (40x512 in 'R' order, with the tight leading dimension
// it gets as the 13th shape), which take tiles of few lines.
inline const std::vector<std::pair<index, index>>& larger_shapes() {
  static const std::vector<std::pair<index, index>> shapes = {
      {17, 17}, {100, 100}, {37, 53},   {97, 61},   {61, 97},  {129, 33}, {3, 301},
      {301, 5}, {255, 257}, {128, 256}, {16, 300}, {300, 16}, {40, 512}};
  return shapes;
}

inline const char* const orderings = "RCrc";
inline const char* const transposes_letters = "NTCRntcr";

}  // namespace tav::test::omatcopy

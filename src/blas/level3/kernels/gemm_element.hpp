// The element vocabulary of the matrix-product kernels: the four element types (complex as a
// two-field pair, real part first) and the scalar operations the packing and edge code need.
#pragma once

#include <cstdint>

namespace tav::TAV_PATH_NS::gemm {

using index = int64_t;

// Same layout as std::complex<R> and the caller's interleaved arrays.
template <class R>
struct cpx {
  R re, im;
};

template <class A, class B>
inline constexpr bool is_same_v = false;
template <class A>
inline constexpr bool is_same_v<A, A> = true;

template <class E>
struct element {
  using real = E;
  static constexpr bool complex = false;
};
template <class R>
struct element<cpx<R>> {
  using real = R;
  static constexpr bool complex = true;
};

template <class E>
using real_of = typename element<E>::real;

template <class E>
constexpr E zero_of() {
  return E{};
}

inline float conj(float x) { return x; }
inline double conj(double x) { return x; }
template <class R>
cpx<R> conj(cpx<R> x) {
  return {x.re, -x.im};
}

inline float mul(float x, float y) { return x * y; }
inline double mul(double x, double y) { return x * y; }
template <class R>
cpx<R> mul(cpx<R> x, cpx<R> y) {
  return {x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
}

inline float add(float x, float y) { return x + y; }
inline double add(double x, double y) { return x + y; }
template <class R>
cpx<R> add(cpx<R> x, cpx<R> y) {
  return {x.re + y.re, x.im + y.im};
}

// Exact comparisons: a NaN is neither zero nor one, so it always takes the computing branch.
inline bool is_zero(float x) { return x == 0; }
inline bool is_zero(double x) { return x == 0; }
template <class R>
bool is_zero(cpx<R> x) {
  return x.re == 0 && x.im == 0;
}
inline bool is_one(float x) { return x == 1; }
inline bool is_one(double x) { return x == 1; }
template <class R>
bool is_one(cpx<R> x) {
  return x.re == 1 && x.im == 0;
}

inline index min_of(index x, index y) { return x < y ? x : y; }
inline index max_of(index x, index y) { return x > y ? x : y; }
// x rounded up to a multiple of q > 0.
inline index round_up(index x, index q) { return (x + q - 1) / q * q; }

// Requests the `count` consecutive elements at p: one request for each 64-byte line that holds
// some of them. Locality 3 brings them to L1; lower values are for data wanted later.
template <int Locality = 3, class E>
inline void prefetch_span(const E* p, index count) {
  if (count <= 0) return;
  const uintptr_t first = reinterpret_cast<uintptr_t>(p) & ~uintptr_t{63};
  const uintptr_t last = reinterpret_cast<uintptr_t>(p + count) - 1;
  for (uintptr_t line = first; line <= last; line += 64)
    __builtin_prefetch(reinterpret_cast<const void*>(line), 0, Locality);
}

// Transposition codes after clearing bit 0x20 of the character: 'N' 0, 'T' 1, 'C' 2, other -1.
inline int decode_trans(const char* t) {
  const char c = static_cast<char>(*t & ~0x20);
  return c == 'N' ? 0 : c == 'T' ? 1 : c == 'C' ? 2 : -1;
}

}  // namespace tav::TAV_PATH_NS::gemm

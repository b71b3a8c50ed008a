// Four consecutive elements of a line held in vector registers: loads, plain and streaming
// stores, the 4x4 register transpose and the element operation on a whole row.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "blas/omatcopy/kernels/omatcopy_element.hpp"
#include "common/simd.hpp"

namespace tav::TAV_PATH_NS::omatcopy {

// The vector vocabulary by register type; the rows below stay at 128 or 256 bits on every path.
template <class Reg>
struct ops;
template <>
struct ops<__m128> : simd128<float> {};
template <>
struct ops<__m128d> : simd128<double> {};

// Two elements per register: the first elements of x and y, and the second ones.
inline __m128d pair_first(__m128d x, __m128d y) { return _mm_unpacklo_pd(x, y); }
inline __m128d pair_second(__m128d x, __m128d y) { return _mm_unpackhi_pd(x, y); }

#if defined(__AVX__)
template <>
struct ops<__m256> : simd256<float> {};
template <>
struct ops<__m256d> : simd256<double> {};

// Two 16-byte elements per register.
inline __m256d pair_first(__m256d x, __m256d y) { return _mm256_permute2f128_pd(x, y, 0x20); }
inline __m256d pair_second(__m256d x, __m256d y) { return _mm256_permute2f128_pd(x, y, 0x31); }
#endif

// ---- rows of four elements -----------------------------------------------------------------

// The register that carries a row, how many of them a row takes, and the real-vector type the
// arithmetic works in (complex float rows ride in double registers, whose bits are the same).
template <size_t Bytes>
struct carrier;

template <>
struct carrier<4> {
  using reg = __m128;
  using unit = float;
  static constexpr int parts = 1;
};
#if defined(__AVX__)
template <>
struct carrier<8> {
  using reg = __m256d;
  using unit = double;
  static constexpr int parts = 1;
};
template <>
struct carrier<16> {
  using reg = __m256d;
  using unit = double;
  static constexpr int parts = 2;
};
#else
template <>
struct carrier<8> {
  using reg = __m128d;
  using unit = double;
  static constexpr int parts = 2;
};
template <>
struct carrier<16> {
  using reg = __m128d;
  using unit = double;
  static constexpr int parts = 4;
};
#endif

template <class T>
struct row4 {
  using traits = carrier<sizeof(T)>;
  using reg = typename traits::reg;
  using unit = typename traits::unit;
  static constexpr int parts = traits::parts;
  // Streaming stores need this alignment of every register's address.
  static constexpr uintptr_t stream_alignment = sizeof(reg);
  static constexpr index units_per_part = sizeof(reg) / sizeof(unit);

  reg part[parts];

  void load(const T* p) {
    const unit* u = reinterpret_cast<const unit*>(p);
    for (int k = 0; k < parts; ++k) part[k] = ops<reg>::load(u + k * units_per_part);
  }
  void store(T* p) const {
    unit* u = reinterpret_cast<unit*>(p);
    for (int k = 0; k < parts; ++k) ops<reg>::store(u + k * units_per_part, part[k]);
  }
  void stream(T* p) const {
    unit* u = reinterpret_cast<unit*>(p);
    for (int k = 0; k < parts; ++k) ops<reg>::stream(u + k * units_per_part, part[k]);
  }
};

template <class T>
bool stream_aligned(const T* p) {
  return (reinterpret_cast<uintptr_t>(p) & (row4<T>::stream_alignment - 1)) == 0;
}

// r[i] element j becomes r[j] element i.
template <class T>
void transpose(row4<T> (&r)[4]) {
  constexpr int parts = row4<T>::parts;
  if constexpr (sizeof(T) == 4) {
    _MM_TRANSPOSE4_PS(r[0].part[0], r[1].part[0], r[2].part[0], r[3].part[0]);
#if defined(__AVX__)
  } else if constexpr (parts == 1) {
    // 4x4 of 64-bit units: pair up within 128-bit halves, then exchange the halves.
    const __m256d t0 = _mm256_unpacklo_pd(r[0].part[0], r[1].part[0]);
    const __m256d t1 = _mm256_unpackhi_pd(r[0].part[0], r[1].part[0]);
    const __m256d t2 = _mm256_unpacklo_pd(r[2].part[0], r[3].part[0]);
    const __m256d t3 = _mm256_unpackhi_pd(r[2].part[0], r[3].part[0]);
    r[0].part[0] = _mm256_permute2f128_pd(t0, t2, 0x20);
    r[1].part[0] = _mm256_permute2f128_pd(t1, t3, 0x20);
    r[2].part[0] = _mm256_permute2f128_pd(t0, t2, 0x31);
    r[3].part[0] = _mm256_permute2f128_pd(t1, t3, 0x31);
#endif
  } else if constexpr (parts == 2) {
    // Each register holds two elements: a 2x2 grid of 2x2 transposes.
    const row4<T> in[4] = {r[0], r[1], r[2], r[3]};
    for (int h = 0; h < 2; ++h) {
      r[2 * h].part[0] = pair_first(in[0].part[h], in[1].part[h]);
      r[2 * h].part[1] = pair_first(in[2].part[h], in[3].part[h]);
      r[2 * h + 1].part[0] = pair_second(in[0].part[h], in[1].part[h]);
      r[2 * h + 1].part[1] = pair_second(in[2].part[h], in[3].part[h]);
    }
  } else {
    // One element per register: the transpose only renames registers.
    for (int i = 0; i < 4; ++i)
      for (int j = i + 1; j < 4; ++j) {
        const typename row4<T>::reg t = r[i].part[j];
        r[i].part[j] = r[j].part[i];
        r[j].part[i] = t;
      }
  }
}

// The register type as real arithmetic sees a row: float lanes for complex float, whose rows
// ride in double registers with the same bits.
template <class T>
struct real_view {
  using type = typename row4<T>::reg;
  static type in(type v) { return v; }
  static type out(type v) { return v; }
};
template <>
struct real_view<tav_complex8> {
#if defined(__AVX__)
  using type = __m256;
  static type in(__m256d v) { return _mm256_castpd_ps(v); }
  static __m256d out(type v) { return _mm256_castps_pd(v); }
#else
  using type = __m128;
  static type in(__m128d v) { return _mm_castpd_ps(v); }
  static __m128d out(type v) { return _mm_castps_pd(v); }
#endif
};

// The element operation of element_op<T, Conj, Scale> on whole rows, with its constants held in
// registers: the same products and sums as the scalar form, so the same bits.
template <class T, class Op>
class row_op {
  using real = typename element<T>::real;
  using view = real_view<T>;
  using vec = typename view::type;
  using V = ops<vec>;

 public:
  explicit row_op(const Op& op) {
    if constexpr (element<T>::is_complex) {
      imag_sign_ = V::alternate(real(0), real(-0.0));
      real_sign_ = V::alternate(real(-0.0), real(0));
      ar_ = V::broadcast(op.alpha.real);
      ai_ = V::broadcast(op.alpha.imag);
    } else {
      ar_ = V::broadcast(op.alpha);
    }
  }

  void operator()(row4<T>& r) const {
    for (int k = 0; k < row4<T>::parts; ++k) {
      vec x = view::in(r.part[k]);
      if constexpr (Op::conj) x = V::bit_xor(x, imag_sign_);
      if constexpr (Op::scale && element<T>::is_complex) {
        // (ar·xr + (-(ai·xi)), ar·xi + ai·xr): the scalar form's products, the sign moved
        // onto the second product, which rounds the same.
        const vec cross = V::bit_xor(V::mul(ai_, V::swap_pairs(x)), real_sign_);
        x = V::add(V::mul(ar_, x), cross);
      } else if constexpr (Op::scale) {
        x = V::mul(ar_, x);
      }
      r.part[k] = view::out(x);
    }
  }

 private:
  vec ar_{}, ai_{}, imag_sign_{}, real_sign_{};
};

}  // namespace tav::TAV_PATH_NS::omatcopy

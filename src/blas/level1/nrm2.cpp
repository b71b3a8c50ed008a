// The Euclidean norm without overflow or underflow in the squares: Blue's three accumulators,
// in the single-pass form of Anderson ("Algorithm 978: Safe scaling in the level 1 BLAS", 2017).
#include <cmath>
#include <limits>

#include "blas/blas_internal.hpp"
#include "blas/level1/strided_vector.hpp"

namespace tav::blas {
namespace {

// 2^e, exactly, at compile time.
template <class Real>
constexpr Real power_of_two(int e) {
  Real p = 1;
  for (; e > 0; --e) p *= 2;
  for (; e < 0; ++e) p /= 2;
  return p;
}

// Blue's constants for a binary format with minimum exponent emin, maximum emax and t digits:
// values below tsml square to below the normal range, values above tbig may overflow when
// squared and summed; ssml and sbig scale them into the middle of the range, where the sum of
// their squares can neither underflow nor overflow.
template <class Real>
struct blue_constants {
  using limits = std::numeric_limits<Real>;
  static constexpr int emin = limits::min_exponent;  // 2^(emin-1) is the smallest normal
  static constexpr int emax = limits::max_exponent;
  static constexpr int t = limits::digits;
  // Integer division of a positive number is floor; ceil(a/2) is (a + 1) div 2.
  static constexpr Real tsml = power_of_two<Real>(-((1 - emin) / 2));   // 2^ceil((emin-1)/2)
  static constexpr Real tbig = power_of_two<Real>((emax - t + 1) / 2);  // 2^floor((emax-t+1)/2)
  static constexpr Real ssml = power_of_two<Real>((t - emin + 1) / 2);  // 2^-floor((emin-t)/2)
  static constexpr Real sbig = power_of_two<Real>(-((emax + t) / 2));   // 2^-ceil((emax+t-1)/2)
};

// Sums of squares in three ranges: big (scaled by sbig), medium (unscaled), small (scaled by
// ssml, dropped once a big value appears, since they cannot matter beside it).
template <class Real>
struct scaled_squares {
  using c = blue_constants<Real>;
  Real big = 0, medium = 0, small = 0;
  bool seen_big = false;

  void add(Real v) {
    const Real a = std::abs(v);
    if (a > c::tbig) {
      const Real s = a * c::sbig;
      big += s * s;
      seen_big = true;
    } else if (a < c::tsml) {
      if (!seen_big) {
        const Real s = a * c::ssml;
        small += s * s;
      }
    } else {
      // NaN lands here and makes the sum NaN.
      medium += a * a;
    }
  }

  Real norm() const {
    if (big > 0) {
      // The medium sum joins the big one at the big scale; NaN propagates.
      Real sum = big;
      if (medium > 0 || std::isnan(medium)) sum += medium * c::sbig * c::sbig;
      return std::sqrt(sum) / c::sbig;
    }
    if (small > 0) {
      if (medium > 0 || std::isnan(medium)) {
        // Both ranges present: sqrt(ymax^2 + ymin^2) = ymax·sqrt(1 + (ymin/ymax)^2).
        const Real root_medium = std::sqrt(medium);
        const Real root_small = std::sqrt(small) / c::ssml;
        const Real ymax = root_small > root_medium ? root_small : root_medium;
        const Real ymin = root_small > root_medium ? root_medium : root_small;
        const Real ratio = ymin / ymax;
        return ymax * std::sqrt(1 + ratio * ratio);
      }
      return std::sqrt(small) / c::ssml;
    }
    return std::sqrt(medium);
  }
};

}  // namespace

template <class T>
real_t<T> nrm2(index n, const T* x, index incx) {
  if (n < 1) return 0;
  const strided_vector<const T> v(x, n, incx);
  scaled_squares<real_t<T>> squares;
  for (index i = 0; i < n; ++i) {
    if constexpr (is_complex_v<T>) {
      squares.add(v[i].real());
      squares.add(v[i].imag());
    } else {
      squares.add(v[i]);
    }
  }
  return squares.norm();
}

template float nrm2(index, const float*, index);
template double nrm2(index, const double*, index);
template float nrm2(index, const std::complex<float>*, index);
template double nrm2(index, const std::complex<double>*, index);

}  // namespace tav::blas

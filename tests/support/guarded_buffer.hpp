// Output buffers with sentinel bands: a guard band before and after the data and, for matrices,
// the rows between m and the leading dimension. A routine that writes outside its output
// changes a sentinel, and intact() reports it.
#pragma once

#include <complex>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tav::test {

// A quiet NaN with a payload no computation produces.
template <class R>
R sentinel_real() {
  if constexpr (sizeof(R) == 8) {
    uint64_t bits = 0x7ff8dead5e9e7a11ull;
    R v;
    std::memcpy(&v, &bits, 8);
    return v;
  } else {
    uint32_t bits = 0x7fc5e9e7u;
    R v;
    std::memcpy(&v, &bits, 4);
    return v;
  }
}

template <class T>
T sentinel() {
  if constexpr (std::is_floating_point_v<T>) return sentinel_real<T>();
  else return T(sentinel_real<typename T::value_type>(), sentinel_real<typename T::value_type>());
}

template <class T>
bool is_sentinel(const T& v) {
  T s = sentinel<T>();
  return std::memcmp(&v, &s, sizeof(T)) == 0;
}

// A column-major m x n matrix with leading dimension ld >= m inside guard bands. data() points
// at element (0, 0); the gap rows m..ld-1 and both bands hold the sentinel.
template <class T>
class guarded_matrix {
 public:
  static constexpr int64_t band = 64;

  guarded_matrix(int64_t m, int64_t n, int64_t ld)
      : m_(m), n_(n), ld_(ld < 1 ? 1 : ld),
        storage_(static_cast<size_t>(2 * band + ld_ * (n > 0 ? n : 0)), sentinel<T>()) {}

  T* data() { return storage_.data() + band; }
  const T* data() const { return storage_.data() + band; }
  T& operator()(int64_t i, int64_t j) { return data()[i + j * ld_]; }
  const T& operator()(int64_t i, int64_t j) const { return data()[i + j * ld_]; }
  int64_t rows() const { return m_; }
  int64_t cols() const { return n_; }
  int64_t ld() const { return ld_; }

  // True when nothing outside the m x n elements was written.
  bool intact() const {
    for (int64_t i = 0; i < static_cast<int64_t>(storage_.size()); ++i) {
      int64_t k = i - band;
      bool inside = k >= 0 && k < ld_ * n_ && (k % ld_) < m_;
      if (!inside && !is_sentinel(storage_[static_cast<size_t>(i)])) return false;
    }
    return true;
  }

 private:
  int64_t m_, n_, ld_;
  std::vector<T> storage_;
};

// A strided vector of n elements with increment inc (negative allowed) inside guard bands;
// elements between the strided ones hold the sentinel too.
template <class T>
class guarded_vector {
 public:
  guarded_vector(int64_t n, int64_t inc)
      : inc_(inc), span_(n > 0 ? 1 + (n - 1) * (inc < 0 ? -inc : inc) : 0),
        matrix_(span_ > 0 ? span_ : 0, 1, span_ > 0 ? span_ : 1), n_(n) {}

  // The base pointer as BLAS takes it: element i at base + i·inc (inc > 0), or
  // base + (n - 1 - i)·|inc| (inc < 0).
  T* data() { return matrix_.data(); }
  T& operator[](int64_t i) { return data()[position(i)]; }
  const T& operator[](int64_t i) const { return matrix_.data()[position(i)]; }
  int64_t size() const { return n_; }

  bool intact() const {
    const T* base = matrix_.data();
    for (int64_t k = 0; k < span_; ++k) {
      int64_t step = inc_ < 0 ? -inc_ : inc_;
      if (step != 0 && k % step == 0) continue;
      if (step == 0 && k == 0) continue;
      if (!is_sentinel(base[k])) return false;
    }
    return matrix_intact_outside();
  }

 private:
  int64_t position(int64_t i) const {
    int64_t step = inc_ < 0 ? -inc_ : inc_;
    return inc_ < 0 ? (n_ - 1 - i) * step : i * step;
  }
  bool matrix_intact_outside() const { return matrix_.intact(); }

  int64_t inc_, span_;
  guarded_matrix<T> matrix_;
  int64_t n_;
};

}  // namespace tav::test

// The complex power a^b = e^(b·ln a) in extended precision, compiled once at the baseline: the
// rare path of every code path's vcPow and vzPow kernels (the elements that their vector formula
// flags), and so the reference for special values.
#pragma once

#include <complex>

namespace tav::vml {

// r[i] = a[i]^b[i] for i < n.
void complex_pow_array(int n, const std::complex<float>* a, const std::complex<float>* b,
                       std::complex<float>* r);
void complex_pow_array(int n, const std::complex<double>* a, const std::complex<double>* b,
                       std::complex<double>* r);

}  // namespace tav::vml

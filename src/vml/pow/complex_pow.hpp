// The complex power a^b = e^(b·ln a) for vcPow and vzPow, compiled once at the baseline and
// called from every code path's kernel.
#pragma once

#include <complex>

namespace tav::vml {

// r[i] = a[i]^b[i] for i < n.
void complex_pow_array(int n, const std::complex<float>* a, const std::complex<float>* b,
                       std::complex<float>* r);
void complex_pow_array(int n, const std::complex<double>* a, const std::complex<double>* b,
                       std::complex<double>* r);

}  // namespace tav::vml

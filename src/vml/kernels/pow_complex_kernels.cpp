// The complex power kernels vcPow and vzPow per code path. The work is one extended-precision
// evaluation per element (complex_pow.cpp, compiled at the baseline), so the kernels of all
// paths and accuracies share it; they exist per family so that the tables name them like every
// other kernel.
#include <complex>

#include "vml/kernels/kernel_family.hpp"
#include "vml/kernels/pow_variants.hpp"
#include "vml/pow/complex_pow.hpp"

#define TAV_CPOW_KERNEL(t, T, acc, flags)                                                     \
  extern "C" void TAV_VML_KERNEL_NAME(t##Pow, acc, flags)(int n, const T* a, const T* b,    \
                                                           T* r) {                          \
    tav::vml::complex_pow_array(n, a, b, r);                                                \
  }
#define TAV_CPOW_KERNELS(acc, flags)                        \
  TAV_CPOW_KERNEL(c, std::complex<float>, acc, flags)       \
  TAV_CPOW_KERNEL(z, std::complex<double>, acc, flags)

#if TAV_POW_HAS_HA
TAV_CPOW_KERNELS(HA, ynn)
#endif
#if TAV_POW_HAS_LA
TAV_CPOW_KERNELS(LA, ynn)
#endif
#if TAV_POW_HAS_EP
TAV_CPOW_KERNELS(EP, nnn)
#endif

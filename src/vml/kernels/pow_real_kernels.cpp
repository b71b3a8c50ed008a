// The real power kernels vsPow and vdPow per code path: blocks of lanes through the fast formula
// x^y = e^(y·ln x) (vsPow with AVX2: x^y = 2^(y·log2 x) on eight lanes, pow_single_block.hpp),
// and each element that the block test flags through the scalar rare path.
#include "common/path_naming.hpp"
#include "vml/kernels/kernel_family.hpp"
#include "vml/kernels/pow_variants.hpp"
#include "vml/kernels/vml_kernel.hpp"
#include "vml/pow/pow_core.hpp"
#include "vml/pow/pow_rare.hpp"
#if defined(__AVX2__) && defined(__FMA__)
#include "vml/pow/pow_single_block.hpp"
#endif

namespace tav::TAV_PATH_NS::vml_pow {
namespace {

using namespace pow_core;

// The formulas, from the most accurate down; single precision without AVX2 computes in double.
enum class form {
  dd_high,   // vdPow HA: ln x as a double-double (log_q5), t = y·ln x as a double-double
  dd_low,    // vdPow LA: the same with log_q4 and without the 2^(j/128) tail
  plain5,    // vdPow EP, vsPow HA without AVX2: ln x in one double (log_p3), e^t with exp_e1
  plain4,    // vsPow LA without AVX2: log_p2, exp_e0
  plain3,    // vsPow EP without AVX2: log_p1, exp_e0
};

template <class T>
struct range;
// Operands the fast formula takes: x positive and normal, y finite, |y·ln x| below a bound
// that keeps the result normal. For double the bound also keeps scale·tmp in e^t's last step
// normal (e^-704 > 2^-1016): without FMA that product is rounded on its own, and a subnormal
// rounding there cost up to 0.15 ulp.
template <>
struct range<double> {
  static constexpr double x_min = 0x1p-1022, x_max = 0x1.fffffffffffffp+1023;
  static constexpr double y_max = 0x1.fffffffffffffp+1023, t_max = 704.0;
};
#if !defined(__AVX2__) || !defined(__FMA__)
template <>
struct range<float> {
  static constexpr double x_min = 0x1p-126, x_max = 0x1.fffffep+127;
  static constexpr double y_max = 0x1.fffffep+127, t_max = 87.0;
};
#endif

template <form f>
inline double_double y_log_x(reg x, reg y) {
  if constexpr (f == form::dd_high) return times(y, log_dd(x, log_q5));
  if constexpr (f == form::dd_low) return times(y, log_dd(x, log_q4));
  constexpr bool p3 = f == form::plain5;
  constexpr bool p2 = f == form::plain4;
  reg l = p3 ? log_plain(x, log_p3) : p2 ? log_plain(x, log_p2) : log_plain(x, log_p1);
  return {L::mul(y, l), L::broadcast(0.0)};
}

template <form f>
inline reg exp_of(double_double t) {
  if constexpr (f == form::dd_high) return exp_value(exp_reduce(t.hi, t.lo, exp_e3, true));
  if constexpr (f == form::dd_low) return exp_value(exp_reduce(t.hi, t.lo, exp_e3, false));
  if constexpr (f == form::plain5) return exp_value(exp_reduce(t.hi, t.lo, exp_e1, false));
  return exp_value(exp_reduce(t.hi, t.lo, exp_e0, false));
}

// One block of L::width elements: writes r and returns the lanes that need the rare path as
// bits. Flagged lanes compute on harmless operands (1^1, e^0) so that no stray exception flag
// is raised; their results are overwritten.
template <class T, form f>
inline int pow_block(const T* a, const T* b, T* r) {
  reg x = L::load(a), y = L::load(b);
  reg special =
      L::mask_or(L::not_within(x, L::broadcast(range<T>::x_min), L::broadcast(range<T>::x_max)),
                 L::not_within(y, L::broadcast(-range<T>::y_max), L::broadcast(range<T>::y_max)));
  x = L::select(special, x, L::broadcast(1.0));
  y = L::select(special, y, L::broadcast(1.0));
  double_double t = y_log_x<f>(x, y);
  reg out_of_range =
      L::not_within(t.hi, L::broadcast(-range<T>::t_max), L::broadcast(range<T>::t_max));
  t.hi = L::select(out_of_range, t.hi, L::broadcast(0.0));
  t.lo = L::select(out_of_range, t.lo, L::broadcast(0.0));
  L::store(r, exp_of<f>(t));
  return L::lane_bits(L::mask_or(special, out_of_range));
}

// pow_block as a block type of the kernel loop (width and run).
template <class T, form f>
struct lanes_block {
  static constexpr int width = L::width;
  static int run(const T* a, const T* b, T* r) { return pow_block<T, f>(a, b, r); }
};

#if defined(__AVX2__) && defined(__FMA__)
using single_high = pow_single::block<pow_single::accuracy::high>;
using single_low = pow_single::block<pow_single::accuracy::low>;
using single_enhanced = pow_single::block<pow_single::accuracy::enhanced>;
#else
using single_high = lanes_block<float, form::plain5>;
using single_low = lanes_block<float, form::plain4>;
using single_enhanced = lanes_block<float, form::plain3>;
#endif
using double_high = lanes_block<double, form::dd_high>;
using double_low = lanes_block<double, form::dd_low>;
using double_enhanced = lanes_block<double, form::plain5>;

template <class T>
inline void rare(int i, const T* a, const T* b, T* r, const char* name) {
  int status;
  if constexpr (sizeof(T) == sizeof(double)) {
    status = vml::vdpow_cout_rare(a + i, b + i, r + i);
  } else {
    status = vml::vspow_cout_rare(a + i, b + i, r + i);
  }
  if (status != 0) vml::report_error<T>(status, i, a, b, r, nullptr, name);
}

// Whole blocks in place; the last partial block through a padded copy, so every element goes
// through the same formula.
template <class T, class block>
void pow_kernel(int n, const T* a, const T* b, T* r, const char* name) {
  constexpr int w = block::width;
  int i = 0;
  for (; i + w <= n; i += w) {
    int flags = block::run(a + i, b + i, r + i);
    for (int lane = 0; flags != 0; ++lane, flags >>= 1) {
      if (flags & 1) rare(i + lane, a, b, r, name);
    }
  }
  if (i == n) return;
  T xa[w], ya[w], ra[w];
  for (int k = 0; k < w; ++k) {
    xa[k] = i + k < n ? a[i + k] : T(1);
    ya[k] = i + k < n ? b[i + k] : T(1);
  }
  int flags = block::run(xa, ya, ra);
  for (int k = 0; i + k < n; ++k) r[i + k] = ra[k];
  for (int lane = 0; i + lane < n; ++lane) {
    if (flags >> lane & 1) rare(i + lane, a, b, r, name);
  }
}

}  // namespace
}  // namespace tav::TAV_PATH_NS::vml_pow

#define TAV_POW_KERNEL(t, T, acc, flags, block)                                                 \
  extern "C" void TAV_VML_KERNEL_NAME(t##Pow, acc, flags)(int n, const T* a, const T* b,       \
                                                           T* r) {                             \
    tav::TAV_PATH_NS::vml_pow::pow_kernel<T, tav::TAV_PATH_NS::vml_pow::block>(n, a, b, r,    \
                                                                              "v" #t "Pow"); \
  }

#if TAV_POW_HAS_HA
TAV_POW_KERNEL(d, double, HA, ynn, double_high)
TAV_POW_KERNEL(s, float, HA, ynn, single_high)
#endif
#if TAV_POW_HAS_LA
TAV_POW_KERNEL(d, double, LA, ynn, double_low)
TAV_POW_KERNEL(s, float, LA, ynn, single_low)
#endif
#if TAV_POW_HAS_EP
TAV_POW_KERNEL(d, double, EP, nnn, double_enhanced)
TAV_POW_KERNEL(s, float, EP, nnn, single_enhanced)
#endif

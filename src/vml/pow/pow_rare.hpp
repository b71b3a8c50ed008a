// The scalar rare path of the power function: every pair (x, y) that a kernel's block test
// flags (zeros, infinities, NaNs, negative or denormal x, results near or beyond the range).
// Compiled once at the baseline and called from every code path.
#pragma once

namespace tav::vml {

// Writes x^y for x = *a, y = *b into *r and returns the vector-math status: 1 (domain) for
// x = ±0 with y < 0 and for finite negative x with finite non-integer y, 0 otherwise (overflow
// and underflow give ±inf and ±0 or subnormals without a status).
int vdpow_cout_rare(const double* a, const double* b, double* r);
int vspow_cout_rare(const float* a, const float* b, float* r);

}  // namespace tav::vml

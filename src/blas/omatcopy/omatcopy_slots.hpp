// The dispatch slots of the sequential copy and transpose, one per element type, each filled on
// first use with the variant of the processor's code path.
#pragma once

#include <tav/tav_types.h>

#include "blas/omatcopy/omatcopy2_seq_fn.hpp"
#include "service/dispatch/dispatched.hpp"

namespace tav::blas {

TAV_DISPATCHED(blas, somatcopy2_seq, omatcopy2_seq_fn<float>);
TAV_DISPATCHED(blas, domatcopy2_seq, omatcopy2_seq_fn<double>);
TAV_DISPATCHED(blas, comatcopy2_seq, omatcopy2_seq_fn<tav_complex8>);
TAV_DISPATCHED(blas, zomatcopy2_seq, omatcopy2_seq_fn<tav_complex16>);

}  // namespace tav::blas

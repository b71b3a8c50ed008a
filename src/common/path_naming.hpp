// Names of per-path code: a kernel compiled for path P calls itself tav_<component>_P_<name> and
// lives in namespace tav::path_P. TAV_PATH and TAV_PATH_NS come from the per-path build.
#pragma once

#define TAV_PATH_NAME_JOIN(component, tag, name) tav_##component##_##tag##_##name
#define TAV_PATH_NAME_EXPAND(component, tag, name) TAV_PATH_NAME_JOIN(component, tag, name)

#ifdef TAV_PATH
// TAV_PATH_NAME(blas, xdgemm) is tav_blas_avx2_xdgemm in the avx2 objects.
#define TAV_PATH_NAME(component, name) TAV_PATH_NAME_EXPAND(component, TAV_PATH, name)
#endif

// The eight variants of a dispatched entry in path-id order (def, cnr_def, mc, mc3, avx, avx2,
// avx512_tp, avx512), as the dispatch table lists them.
#define TAV_PATH_VARIANTS(component, name)                                                    \
  TAV_PATH_NAME_JOIN(component, def, name), TAV_PATH_NAME_JOIN(component, cnr_def, name),    \
      TAV_PATH_NAME_JOIN(component, mc, name), TAV_PATH_NAME_JOIN(component, mc3, name),     \
      TAV_PATH_NAME_JOIN(component, avx, name), TAV_PATH_NAME_JOIN(component, avx2, name),   \
      TAV_PATH_NAME_JOIN(component, avx512_tp, name), TAV_PATH_NAME_JOIN(component, avx512, name)

// Which accuracy variants of the power kernels each family builds: Y8 (cnr_def) only LA, EX
// (mc3) and E2 (avx512_tp) only HA, the others LA, HA and EP. pow_tables.cpp fills the slots of
// the missing variants with the family's kernel that exists.
#pragma once

#define TAV_POW_HAS_LA (TAV_PATH_ID != 3 && TAV_PATH_ID != 6)
#define TAV_POW_HAS_HA (TAV_PATH_ID != 1)
#define TAV_POW_HAS_EP (TAV_PATH_ID != 1 && TAV_PATH_ID != 3 && TAV_PATH_ID != 6)

#!/usr/bin/env python3
"""Instruction lines and symbol names with the levels and paths the ISA audit must give them."""

# Usage: isa_audit_cases.py <source-dir>
# Imports <source-dir>/cmake/isa_audit.py and checks its classifier, its reading of names, its
# table of allowed sets and its path list (against <source-dir>/cmake/paths.cmake).

import os
import re
import sys

# objdump lines (raw bytes, text) with the features the instruction needs, as the classifier
# joins them. The encodings come from the assembler, except for the invented mnemonics pfoo and
# vfutureop, which stand for instructions newer than the classifier's tables.
CASES = [
    ("48 89 c3", "mov    %rax,%rbx", "BASE"),
    ("0f a2", "cpuid", "BASE"),
    ("0f 31", "rdtsc", "BASE"),
    ("0f 01 d0", "xgetbv", "BASE"),
    ("f3 0f 1e fa", "endbr64", "BASE"),
    ("0f 45 c8", "cmovne %eax,%ecx", "BASE"),
    ("f0 0f c7 0f", "lock cmpxchg8b (%rdi)", "BASE"),
    ("df f1", "fcomip %st(1),%st", "BASE"),
    ("66 0f fe c1", "paddd  %xmm1,%xmm0", "BASE"),
    ("0f 70 c1 01", "pshufw $0x1,%mm1,%mm0", "BASE"),
    ("0f c2 c1 01", "cmpltps %xmm1,%xmm0", "BASE"),
    ("0f 18 08", "prefetcht0 (%rax)", "BASE"),
    ("f3 90", "pause", "BASE"),
    ("66 2e 0f 1f 84 00 00 00 00 00", "cs nopw 0x0(%rax,%rax,1)", "BASE"),
    ("66 66 2e 0f 1f 84 00 00 00 00 00", "data16 cs nopw 0x0(%rax,%rax,1)", "BASE"),
    ("48", "rex.W", "BASE"),
    ("3e ff e0", "notrack jmp *%rax", "BASE"),
    ("f3 c3", "repz ret", "BASE"),
    ("66 0f c5 c0 01", "pextrw $0x1,%xmm0,%eax", "BASE"),
    ("e8 00 00 00 00", "call   1050 <tav_blas_avx512_zmm_helper@plt>", "BASE"),
    ("48 8b 05 c5 3f 00 00", "mov    0x3fc5(%rip),%rax        # 4fd0 <%zmm@Base>", "BASE"),
    ("f2 0f 12 c1", "movddup %xmm1,%xmm0", "SSE3"),
    ("66 0f d0 c1", "addsubpd %xmm1,%xmm0", "SSE3"),
    ("f2 0f 7c c1", "haddps %xmm1,%xmm0", "SSE3"),
    ("f2 0f f0 00", "lddqu  (%rax),%xmm0", "SSE3"),
    ("db 08", "fisttpl (%rax)", "SSE3"),
    ("dd 08", "fisttpll (%rax)", "SSE3"),
    ("66 0f 38 00 c1", "pshufb %xmm1,%xmm0", "SSSE3"),
    ("0f 38 00 c1", "pshufb %mm1,%mm0", "SSSE3"),
    ("66 0f 3a 0f c1 03", "palignr $0x3,%xmm1,%xmm0", "SSSE3"),
    ("66 0f 38 04 c1", "pmaddubsw %xmm1,%xmm0", "SSSE3"),
    ("66 0f 38 1e c1", "pabsd  %xmm1,%xmm0", "SSSE3"),
    ("66 0f 38 15 d1", "blendvpd %xmm0,%xmm1,%xmm2", "SSE4.1"),
    ("66 0f 38 17 c1", "ptest  %xmm1,%xmm0", "SSE4.1"),
    ("66 0f 38 31 c1", "pmovzxbd %xmm1,%xmm0", "SSE4.1"),
    ("66 48 0f 3a 22 c0 01", "pinsrq $0x1,%rax,%xmm0", "SSE4.1"),
    ("66 0f 3a 0b c1 04", "roundsd $0x4,%xmm1,%xmm0", "SSE4.1"),
    ("66 0f 3a 15 00 01", "pextrw $0x1,%xmm0,(%rax)", "SSE4.1"),
    ("66 0f 38 2a 00", "movntdqa (%rax),%xmm0", "SSE4.1"),
    ("66 0f 38 37 c1", "pcmpgtq %xmm1,%xmm0", "SSE4.2"),
    ("66 0f 3a 63 c1 01", "pcmpistri $0x1,%xmm1,%xmm0", "SSE4.2"),
    ("f2 0f 38 f0 c8", "crc32  %al,%ecx", "SSE4.2"),
    ("f2 48 0f 38 f1 08", "crc32q (%rax),%rcx", "SSE4.2"),
    ("f3 48 0f b8 c8", "popcnt %rax,%rcx", "POPCNT"),
    ("f0 48 0f c7 0f", "lock cmpxchg16b (%rdi)", "CX16"),
    ("9f", "lahf", "LAHF-SAHF"),
    ("f3 0f bd c8", "lzcnt  %eax,%ecx", "LZCNT"),
    ("f3 0f bc c8", "tzcnt  %eax,%ecx", "BMI1"),
    ("0f 38 f0 08", "movbe  (%rax),%ecx", "MOVBE"),
    ("0f 38 f1 01", "movbe  %eax,(%rcx)", "MOVBE"),
    ("0f ae 20", "xsave  (%rax)", "XSAVE"),
    ("c5 ec 58 d9", "vaddps %ymm1,%ymm2,%ymm3", "AVX"),
    ("c5 e9 fe d9", "vpaddd %xmm1,%xmm2,%xmm3", "AVX"),
    ("c5 fd 6f c1", "vmovdqa %ymm1,%ymm0", "AVX"),
    ("c4 e2 7d 17 c1", "vptest %ymm1,%ymm0", "AVX"),
    ("c4 e3 7d 04 c1 01", "vpermilps $0x1,%ymm1,%ymm0", "AVX"),
    ("c4 e3 6d 06 c1 01", "vperm2f128 $0x1,%ymm1,%ymm2,%ymm0", "AVX"),
    ("c4 e3 6d 18 c1 01", "vinsertf128 $0x1,%xmm1,%ymm2,%ymm0", "AVX"),
    ("c4 e2 7d 18 00", "vbroadcastss (%rax),%ymm0", "AVX"),
    ("c4 e2 69 00 c1", "vpshufb %xmm1,%xmm2,%xmm0", "AVX"),
    ("c4 e2 79 2a 00", "vmovntdqa (%rax),%xmm0", "AVX"),
    ("c5 ec c2 d9 01", "vcmpltps %ymm1,%ymm2,%ymm3", "AVX"),
    ("c5 fd 5a 00", "vcvtpd2psy (%rax),%xmm0", "AVX"),
    ("c5 f8 77", "vzeroupper", "AVX"),
    ("c5 ed fe d9", "vpaddd %ymm1,%ymm2,%ymm3", "AVX2"),
    ("c4 e2 6d 00 c1", "vpshufb %ymm1,%ymm2,%ymm0", "AVX2"),
    ("c5 fd d7 c1", "vpmovmskb %ymm1,%eax", "AVX2"),
    ("c4 e2 7d 18 c1", "vbroadcastss %xmm1,%ymm0", "AVX2"),
    ("c4 e2 79 58 c1", "vpbroadcastd %xmm1,%xmm0", "AVX2"),
    ("c4 e2 69 47 c1", "vpsllvd %xmm1,%xmm2,%xmm0", "AVX2"),
    ("c4 e3 69 02 c1 01", "vpblendd $0x1,%xmm1,%xmm2,%xmm0", "AVX2"),
    ("c4 e3 6d 46 c1 01", "vperm2i128 $0x1,%ymm1,%ymm2,%ymm0", "AVX2"),
    ("c4 e3 7d 39 c8 01", "vextracti128 $0x1,%ymm1,%xmm0", "AVX2"),
    ("c4 e3 fd 01 c1 01", "vpermpd $0x1,%ymm1,%ymm0", "AVX2"),
    ("c4 e3 6d 42 c1 01", "vmpsadbw $0x1,%ymm1,%ymm2,%ymm0", "AVX2"),
    ("c4 e2 7d 2a 00", "vmovntdqa (%rax),%ymm0", "AVX2"),
    ("c4 e2 75 90 1c 90", "vpgatherdd %ymm1,(%rax,%ymm2,4),%ymm3", "AVX2"),
    ("c4 e2 ed b8 d9", "vfmadd231pd %ymm1,%ymm2,%ymm3", "FMA"),
    ("c4 e2 69 af c1", "vfnmsub213ss %xmm1,%xmm2,%xmm0", "FMA"),
    ("c4 e2 7d 13 c8", "vcvtph2ps %xmm0,%ymm1", "F16C"),
    ("c4 e3 7d 1d c8 00", "vcvtps2ph $0x0,%ymm1,%xmm0", "F16C"),
    ("c4 e2 60 f2 c8", "andn   %eax,%ebx,%ecx", "BMI1"),
    ("c4 e2 78 f5 cb", "bzhi   %eax,%ebx,%ecx", "BMI2"),
    ("c4 e2 f9 f7 cb", "shlx   %rax,%rbx,%rcx", "BMI2"),
    ("62 f1 6d 48 fe d9", "vpaddd %zmm1,%zmm2,%zmm3", "AVX512F"),
    ("62 f1 7e 48 6f c1", "vmovdqu32 %zmm1,%zmm0", "AVX512F"),
    ("62 f1 6d 48 ef c1", "vpxord %zmm1,%zmm2,%zmm0", "AVX512F"),
    ("62 b1 6e 08 58 d9", "vaddss %xmm17,%xmm2,%xmm3", "AVX512F"),
    ("62 f3 7d 48 19 c8 01", "vextractf32x4 $0x1,%zmm1,%xmm0", "AVX512F"),
    ("62 f2 7e 48 35 c8", "vpmovqd %zmm1,%ymm0", "AVX512F"),
    ("62 f2 7d 48 21 c1", "vpmovsxbd %xmm1,%zmm0", "AVX512F"),
    ("62 f2 7d 48 7c c0", "vpbroadcastd %eax,%zmm0", "AVX512F"),
    ("62 b2 ed 08 2d c1", "vscalefsd %xmm17,%xmm2,%xmm0", "AVX512F"),
    ("62 f1 7f 08 78 c1", "vcvttsd2usi %xmm1,%eax", "AVX512F"),
    ("62 f1 f7 08 7b c0", "vcvtusi2sd %rax,%xmm1,%xmm0", "AVX512F"),
    ("62 f1 f7 00 2a d0", "vcvtsi2sd %rax,%xmm17,%xmm2", "AVX512F"),
    ("62 e1 7d 08 7e c8", "vmovd  %xmm17,%eax", "AVX512F"),
    ("62 b3 6d 08 21 c1 01", "vinsertps $0x1,%xmm17,%xmm2,%xmm0", "AVX512F"),
    ("62 f1 74 00 16 00", "vmovhps (%rax),%xmm17,%xmm0", "AVX512F"),
    ("62 f2 ed 48 37 c9", "vpcmpgtq %zmm1,%zmm2,%k1", "AVX512F"),
    ("62 f1 6c 48 c2 c9 01", "vcmpltps %zmm1,%zmm2,%k1", "AVX512F"),
    ("62 f3 6d 48 1e c9 01", "vpcmpltud %zmm1,%zmm2,%k1", "AVX512F"),
    ("62 f2 6d 48 7e c1", "vpermt2d %zmm1,%zmm2,%zmm0", "AVX512F"),
    ("62 f1 6d 48 62 c1", "vpunpckldq %zmm1,%zmm2,%zmm0", "AVX512F"),
    ("62 f1 f5 58 58 00", "vaddpd (%rax){1to8},%zmm1,%zmm0", "AVX512F"),
    ("62 f1 fd 78 51 c1", "vsqrtpd {rz-sae},%zmm1,%zmm0", "AVX512F"),
    ("62 f1 6c 18 58 d9", "vaddps {rn-sae},%zmm1,%zmm2,%zmm3", "AVX512F"),
    ("62 f1 fd 48 5a 00", "vcvtpd2ps (%rax),%ymm0", "AVX512F"),
    ("62 f3 6d 09 27 c1 01", "vgetmantss $0x1,%xmm1,%xmm2,%xmm0{%k1}", "AVX512F"),
    ("62 f2 7d 49 8a 08", "vcompressps %zmm1,(%rax){%k1}", "AVX512F"),
    ("62 f2 7d 49 a0 04 88", "vpscatterdd %zmm0,(%rax,%zmm1,4){%k1}", "AVX512F"),
    ("62 f2 7d 49 92 1c 90", "vgatherdps (%rax,%zmm2,4),%zmm3{%k1}", "AVX512F"),
    ("c5 f8 93 c1", "kmovw  %k1,%eax", "AVX512F"),
    ("c5 ec 41 d9", "kandw  %k1,%k2,%k3", "AVX512F"),
    ("c5 f8 98 d1", "kortestw %k1,%k2", "AVX512F"),
    ("c5 ed 4b d9", "kunpckbw %k1,%k2,%k3", "AVX512F"),
    ("62 f2 7d 48 c4 d1", "vpconflictd %zmm1,%zmm2", "AVX512CD"),
    ("62 f2 fd 48 44 c1", "vplzcntq %zmm1,%zmm0", "AVX512CD"),
    ("62 f2 7e 08 3a c1", "vpbroadcastmw2d %k1,%xmm0", "AVX512CD+AVX512VL"),
    ("62 b1 6d 28 fe d9", "vpaddd %ymm17,%ymm2,%ymm3", "AVX512F+AVX512VL"),
    ("62 f1 6c 09 58 d9", "vaddps %xmm1,%xmm2,%xmm3{%k1}", "AVX512F+AVX512VL"),
    ("62 f1 6d 08 ef c1", "vpxord %xmm1,%xmm2,%xmm0", "AVX512F+AVX512VL"),
    ("62 f1 fd 49 5a 00", "vcvtpd2ps (%rax),%ymm0{%k1}", "AVX512F"),
    ("62 f1 fc 08 79 00", "vcvtpd2udqx (%rax),%xmm0", "AVX512F+AVX512VL"),
    ("62 f1 f5 38 58 00", "vaddpd (%rax){1to4},%ymm1,%ymm0", "AVX512F+AVX512VL"),
    ("62 f1 6d 48 fd d9", "vpaddw %zmm1,%zmm2,%zmm3", "AVX512BW"),
    ("62 f1 7f 48 6f c1", "vmovdqu8 %zmm1,%zmm0", "AVX512BW"),
    ("62 f2 7e 48 30 c8", "vpmovwb %zmm1,%ymm0", "AVX512BW"),
    ("62 f2 7d 48 7a c0", "vpbroadcastb %eax,%zmm0", "AVX512BW"),
    ("62 f1 75 00 c4 c0 01", "vpinsrw $0x1,%eax,%xmm17,%xmm0", "AVX512BW"),
    ("62 f1 6d 48 74 c9", "vpcmpeqb %zmm1,%zmm2,%k1", "AVX512BW"),
    ("62 f3 6d 48 3e c9 01", "vpcmpltub %zmm1,%zmm2,%k1", "AVX512BW"),
    ("62 f2 ee 48 26 c9", "vptestnmw %zmm1,%zmm2,%k1", "AVX512BW"),
    ("62 f2 ed 48 7d c1", "vpermt2w %zmm1,%zmm2,%zmm0", "AVX512BW"),
    ("62 f1 7d 48 73 d9 01", "vpsrldq $0x1,%zmm1,%zmm0", "AVX512BW"),
    ("62 f3 6d 48 0f c1 01", "vpalignr $0x1,%zmm1,%zmm2,%zmm0", "AVX512BW"),
    ("62 f1 6d 48 f5 c1", "vpmaddwd %zmm1,%zmm2,%zmm0", "AVX512BW"),
    ("62 f1 6d 48 6b c1", "vpackssdw %zmm1,%zmm2,%zmm0", "AVX512BW"),
    ("62 f1 6d 48 61 c1", "vpunpcklwd %zmm1,%zmm2,%zmm0", "AVX512BW"),
    ("c5 fb 93 c1", "kmovd  %k1,%eax", "AVX512BW"),
    ("c5 ec 4b d9", "kunpckwd %k1,%k2,%k3", "AVX512BW"),
    ("c4 e1 f8 44 d1", "knotq  %k1,%k2", "AVX512BW"),
    ("62 f2 ed 48 40 d9", "vpmullq %zmm1,%zmm2,%zmm3", "AVX512DQ"),
    ("62 f1 6c 48 57 d9", "vxorps %zmm1,%zmm2,%zmm3", "AVX512DQ"),
    ("62 f3 fd 48 19 c8 01", "vextractf64x2 $0x1,%zmm1,%xmm0", "AVX512DQ"),
    ("62 f3 6d 48 3a c1 01", "vinserti32x8 $0x1,%ymm1,%zmm2,%zmm0", "AVX512DQ"),
    ("62 f1 fe 48 e6 c1", "vcvtqq2pd %zmm1,%zmm0", "AVX512DQ"),
    ("62 f3 ed 48 50 c1 01", "vrangepd $0x1,%zmm1,%zmm2,%zmm0", "AVX512DQ"),
    ("62 f3 6d 08 57 c1 01", "vreducess $0x1,%xmm1,%xmm2,%xmm0", "AVX512DQ"),
    ("62 f2 7e 48 38 c1", "vpmovm2d %k1,%zmm0", "AVX512DQ"),
    ("62 e3 7d 08 16 c8 01", "vpextrd $0x1,%xmm17,%eax", "AVX512DQ"),
    ("62 f3 7d 48 66 08 01", "vfpclasspsz $0x1,(%rax),%k1", "AVX512DQ"),
    ("62 f3 7d 58 66 08 01", "vfpclassps $0x1,(%rax){1to16},%k1", "AVX512DQ"),
    ("62 f1 ff 28 7a 00", "vcvtuqq2psy (%rax),%xmm0", "AVX512DQ+AVX512VL"),
    ("c5 f9 93 c1", "kmovb  %k1,%eax", "AVX512DQ"),
    ("c4 e3 79 30 d1 01", "kshiftrb $0x1,%k1,%k2", "AVX512DQ"),
    ("c5 ec 4a d9", "kaddw  %k1,%k2,%k3", "AVX512DQ"),
    ("c5 f8 99 d1", "ktestw %k1,%k2", "AVX512DQ"),
    # Outside every path.
    ("0f 0d 08", "prefetchw (%rax)", "PRFCHW"),
    ("0f 01 f9", "rdtscp", "RDTSCP"),
    ("0f c7 f0", "rdrand %eax", "RDRAND"),
    ("66 0f 38 f6 c8", "adcx   %eax,%ecx", "ADX"),
    ("66 0f 38 dc c1", "aesenc %xmm1,%xmm0", "AES"),
    ("66 0f 3a 44 c1 11", "pclmulhqhqdq %xmm1,%xmm0", "PCLMUL"),
    ("0f 3a cc c1 01", "sha1rnds4 $0x1,%xmm1,%xmm0", "SHA"),
    ("66 0f 78 c0 02 01", "extrq  $0x1,$0x2,%xmm0", "SSE4A"),
    ("c7 f8 00 00 00 00", "xbegin 15d <f+0x15d>", "RTM"),
    ("0f ae 30", "xsaveopt (%rax)", "XSAVEOPT"),
    ("c4 e2 69 dc c1", "vaesenc %xmm1,%xmm2,%xmm0", "AES"),
    ("c4 e2 6d 50 d9", "{vex} vpdpbusd %ymm1,%ymm2,%ymm3", "AVX-VNNI"),
    ("c4 e3 e1 68 e1 20", "vfmaddps %xmm1,%xmm2,%xmm3,%xmm4", "FMA4"),
    ("8f e8 60 a2 e2 10", "vpcmov %xmm1,%xmm2,%xmm3,%xmm4", "XOP"),
    ("62 f2 6d 48 50 d9", "vpdpbusd %zmm1,%zmm2,%zmm3", "AVX512-VNNI"),
    ("62 f2 6d 48 8d d9", "vpermb %zmm1,%zmm2,%zmm3", "AVX512-VBMI"),
    ("62 f2 7d 48 55 c1", "vpopcntd %zmm1,%zmm0", "AVX512-VPOPCNTDQ"),
    ("62 f3 6d 48 71 c1 01", "vpshldd $0x1,%zmm1,%zmm2,%zmm0", "AVX512-VBMI2"),
    ("62 f2 ed 48 b4 c1", "vpmadd52luq %zmm1,%zmm2,%zmm0", "AVX512-IFMA"),
    ("62 f2 6e 48 52 c1", "vdpbf16ps %zmm1,%zmm2,%zmm0", "AVX512-BF16"),
    ("62 f2 7d 48 c8 c1", "vexp2ps %zmm1,%zmm0", "AVX512-ER"),
    ("62 f5 6c 48 58 d9", "vaddph %zmm1,%zmm2,%zmm3", "AVX512-FP16"),
    # Unknown names: the 0F 38 map has no baseline instruction, VEX and EVEX give a floor.
    ("66 0f 38 99 c1", "pfoo   %xmm1,%xmm0", "UNKNOWN-0F38/0F3A"),
    ("c4 e2 78 49 00", "ldtilecfg (%rax)", "UNKNOWN-VEX"),
    ("62 f1 6d 48 ff d9", "vfutureop %zmm1,%zmm2,%zmm3", "AVX512F"),
    ("c5 ed ff d9", "vfutureop %ymm1,%ymm2,%ymm3", "AVX"),
    ("0f 0b", "(bad)", "UNKNOWN"),
]

# Symbol names (demangled, as nm -C prints them) with the path they place a function in.
NAME_CASES = [
    ("tav_blas_avx2_xdgemm", "avx2"),
    ("tav_blas_avx512_xdgemm", "avx512"),
    ("tav_blas_avx512_tp_xdgemm", "avx512_tp"),
    ("tav_blas_def_xdgemm", "def"),
    ("tav_blas_cnr_def_xdgemm", "cnr_def"),
    ("tav_blas_mc_xdgemm", "mc"),
    ("tav_blas_mc3_xdgemm", "mc3"),
    ("tav_blas_avx_xdgemm", "avx"),
    ("tav_lapack_ps_avx2_dgetrf_small", "avx2"),
    ("tav_lapack_ps_cnr_def_dgetrf_small", "cnr_def"),
    ("tav_vml_avx512_tp_dpow_ha", "avx512_tp"),
    ("tav_dft_mc3_radix4", "mc3"),
    ("tav_vml_kernel_dAdd_Z0HAynn", "def"),
    ("tav_vml_kernel_sAdd_Y8HAynn", "cnr_def"),
    ("tav_vml_kernel_zMul_L9HAynn", "mc"),
    ("tav_vml_kernel_cDiv_EXHAynn", "mc3"),
    ("tav_vml_kernel_dSub_E9LAynn", "avx"),
    ("tav_vml_kernel_dAdd_E7HAynn", "avx2"),
    ("tav_vml_kernel_dPow_E2EPnnn", "avx512_tp"),
    ("tav_vml_kernel_zPow_B3HAynn", "avx512"),
    ("tav_test_avx_probe", "avx"),
    ("tav_fixture_avx2_f", "avx2"),
    ("tav_fixture_avx512_tp_g", "avx512_tp"),
    ("tav_fixture_avx512_tp", "avx512"),
    ("tav::path_avx2::gemm_ukernel_d12x4(long, double const*, double const*, double*, long)",
     "avx2"),
    ("tav::path_avx512_tp::radix8_pass(tav::path_avx512_tp::cpx*)", "avx512_tp"),
    ("tav::path_avx512::(anonymous namespace)::reduce(double const*)", "avx512"),
    ("tav::path_cnr_def::dot(long, double const*, double const*)", "cnr_def"),
    ("void std::sort<tav::path_mc3::item*>(tav::path_mc3::item*, tav::path_mc3::item*)", "mc3"),
    ("tav::path_avx2::f()::{lambda(int)#1}::operator()(int) const", "avx2"),
    ("tav::path_avx2::f(tav::path_def::g)", "def"),
    # Outside every path.
    ("tav_blas_avx2", None),
    ("tav_blas_avx2_", None),
    ("tav_blas_avx2x_f", None),
    ("tav_blas_xdgemm", None),
    ("tav_serv_cpu_detect", None),
    ("tav_serv_has_avx512_units", None),
    ("tav_lapack_ps_dgetrf_small", None),
    # A planted vector-math name: the tag of a level without a build, a table, a bad accuracy.
    ("tav_vml_kernel_dAdd_U8HAynn", None),
    ("tav_vml_kernel_dAdd_ttab", None),
    ("tav_vml_kernel_dAdd_E7XXynn", None),
    ("tav_vml_kernel_dAdd_E7HAynnn", None),
    ("tav_avx2_f", None),
    ("blas_avx2_f", None),
    ("tav::service::path_tag(int)", None),
    ("tav::path_avx3::f()", None),
    ("tav::path_avx2x::f()", None),
    ("mytav::path_avx2::f()", None),
    ("other::tav::path_avx2::f()", None),
    ("tav::pathavx2::f()", None),
    ("std::min<int>(int const&, int const&)", None),
    (".omp_outlined.", None),
    ("printf@plt", None),
]

ALIAS_CASES = [
    (["tav_blas_avx2_f", "tav::path_avx2::f()"], "avx2"),
    (["tav_blas_avx512_f", "tav_blas_avx2_g"], "avx2"),
    (["tav_blas_avx2_f", "dgemm_"], "outside paths"),
    (["printf@plt"], "outside paths"),
]

ADDITIONS = {"def": "BASE", "cnr_def": "", "mc": "SSE3 SSSE3",
             "mc3": "SSE4.1 SSE4.2 POPCNT CX16 LAHF-SAHF", "avx": "AVX",
             "avx2": "AVX2 FMA F16C BMI1 BMI2 LZCNT MOVBE XSAVE",
             "avx512_tp": "AVX512F AVX512CD", "avx512": "AVX512BW AVX512DQ AVX512VL"}


def run(audit, source_dir):
    failures = 0
    for raw_text, text, expected in CASES:
        raw = [int(h, 16) for h in raw_text.split()]
        got = "+".join(audit.classify(raw, text))
        if got != expected:
            print(f"FAIL classify {raw_text!r} {text!r}: got {got}, expected {expected}")
            failures += 1
    for name, expected in NAME_CASES:
        tags = audit.paths_of_name(name)
        got = min(tags, key=lambda t: audit.PATH_LEVEL[t]) if tags else None
        if got != expected:
            print(f"FAIL path of {name!r}: got {got}, expected {expected}")
            failures += 1
    # Aliases: a function gets a path's rights only when all its names agree on them.
    for names, expected in ALIAS_CASES:
        got = audit.function_path(names)[0]
        if got != expected:
            print(f"FAIL path of aliases {names}: got {got}, expected {expected}")
            failures += 1
    # What each path adds to the one before it, as its compiler flags define it.
    expected_set = set()
    for tag, added in ADDITIONS.items():
        expected_set |= set(added.split())
        allowed = {f for f, v in audit.FEATURE_LEVEL.items() if v <= audit.PATH_LEVEL[tag]}
        if allowed != expected_set:
            print(f"FAIL path {tag} allows {sorted(allowed)}, expected {sorted(expected_set)}")
            failures += 1
    # The audit's path list must be the build's.
    with open(os.path.join(source_dir, "cmake", "paths.cmake")) as f:
        m = re.search(r"set\(TAV_PATHS ([^)]*)\)", f.read())
    build_paths = m.group(1).split() if m else []
    if build_paths != list(audit.PATH_LEVEL):
        print(f"FAIL paths.cmake lists {build_paths}, the audit knows {list(audit.PATH_LEVEL)}")
        failures += 1
    total = len(CASES) + len(NAME_CASES) + len(ALIAS_CASES) + len(ADDITIONS) + 1
    if failures:
        print(f"isa_audit cases: {failures} of {total} failed")
        return 1
    print(f"isa_audit cases: {len(CASES)} instructions, {len(NAME_CASES) + len(ALIAS_CASES)} "
          f"names, {len(ADDITIONS)} paths OK")
    return 0


def main():
    if len(sys.argv) != 2:
        print("usage: isa_audit_cases.py <source-dir>", file=sys.stderr)
        return 2
    source_dir = sys.argv[1]
    sys.path.insert(0, os.path.join(source_dir, "cmake"))
    sys.dont_write_bytecode = True  # leave no cache files in the source tree
    import isa_audit
    return run(isa_audit, source_dir)


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Disassembles a shared object; fails when a function holds instructions beyond its code path."""

# Usage: isa_audit.py [--objdump PROG] [--nm PROG] <shared-object>
# Exit status: 0 clean, 1 violations found, 2 the audit could not run.
#
# A function belongs to path P when its demangled name contains the namespace tav::path_P:: or
# its C name is tav_<component>_P_<name> (vector-math kernels: a family tag standing for P, see
# VML_FAMILY_PATH); every other function must stay at the x86-64 baseline,
# because the dispatcher may run it on any processor. The classifier reads the encoding from the
# raw bytes (legacy opcode map, VEX, EVEX, XOP) and the mnemonic and operands from the text, and
# errs towards the higher level: an instruction it cannot place never passes as baseline.

import argparse
import functools
import os
import re
import subprocess
import sys
import tempfile

# Levels form a chain: each path's flags add to those of the path before it.
LEVEL_NAMES = ["def", "mc", "mc3", "avx", "avx2", "avx512_tp", "avx512", "no path"]
NO_PATH = 7

# The highest level each path's flags allow; def and cnr_def differ in flags, not in instructions.
PATH_LEVEL = {"def": 0, "cnr_def": 0, "mc": 1, "mc3": 2, "avx": 3, "avx2": 4,
              "avx512_tp": 5, "avx512": 6}

# Components whose name holds an underscore; any other component is one word.
MULTIWORD_COMPONENTS = ("lapack_ps",)

FEATURE_LEVEL = {
    "BASE": 0,
    "SSE3": 1, "SSSE3": 1,
    "SSE4.1": 2, "SSE4.2": 2, "POPCNT": 2, "CX16": 2, "LAHF-SAHF": 2,
    "AVX": 3,
    "AVX2": 4, "FMA": 4, "F16C": 4, "BMI1": 4, "BMI2": 4, "LZCNT": 4, "MOVBE": 4, "XSAVE": 4,
    "AVX512F": 5, "AVX512CD": 5,
    "AVX512BW": 6, "AVX512DQ": 6, "AVX512VL": 6,
}


def feature_level(feature):
    # Anything not named above (AES, SHA, VNNI, an unknown encoding...) is in no path's flags.
    return FEATURE_LEVEL.get(feature, NO_PATH)


# ---------------------------------------------------------------------------------------------
# Legacy (non-VEX, non-EVEX) encodings: every mnemonic above SSE2, by extension.

def _table(feature, names):
    return {name: feature for name in names.split()}


LEGACY = {}
LEGACY.update(_table("SSE3", """addsubpd addsubps haddpd haddps hsubpd hsubps lddqu movddup
    movshdup movsldup fisttp monitor mwait"""))
LEGACY.update(_table("SSSE3", """pabsb pabsw pabsd palignr phaddw phaddd phaddsw phsubw phsubd
    phsubsw pmaddubsw pmulhrsw pshufb psignb psignw psignd"""))
LEGACY.update(_table("SSE4.1", """blendpd blendps blendvpd blendvps dppd dpps extractps insertps
    movntdqa mpsadbw packusdw pblendvb pblendw pcmpeqq pextrb pextrd pextrq pinsrb pinsrd pinsrq
    pmaxsb pmaxsd pmaxud pmaxuw pminsb pminsd pminud pminuw pmovsxbw pmovsxbd pmovsxbq pmovsxwd
    pmovsxwq pmovsxdq pmovzxbw pmovzxbd pmovzxbq pmovzxwd pmovzxwq pmovzxdq pmuldq pmulld ptest
    roundpd roundps roundsd roundss phminposuw"""))
LEGACY.update(_table("SSE4.2", "crc32 pcmpestri pcmpestrm pcmpistri pcmpistrm pcmpgtq"))
LEGACY.update(_table("POPCNT", "popcnt"))
LEGACY.update(_table("CX16", "cmpxchg16b"))
LEGACY.update(_table("LAHF-SAHF", "lahf sahf"))
LEGACY.update(_table("LZCNT", "lzcnt"))
LEGACY.update(_table("BMI1", "tzcnt"))
LEGACY.update(_table("MOVBE", "movbe"))
LEGACY.update(_table("XSAVE", "xsave xrstor xsave64 xrstor64"))
# Extensions that no path's flags enable; listed so that they never pass as baseline.
LEGACY.update(_table("ADX", "adcx adox"))
LEGACY.update(_table("RDRAND", "rdrand"))
LEGACY.update(_table("RDSEED", "rdseed"))
LEGACY.update(_table("RDTSCP", "rdtscp"))
LEGACY.update(_table("RDPID", "rdpid"))
LEGACY.update(_table("PRFCHW", "prefetchw prefetchwt1"))
LEGACY.update(_table("CLFLUSHOPT", "clflushopt"))
LEGACY.update(_table("CLWB", "clwb"))
LEGACY.update(_table("XSAVEOPT", """xsaveopt xsaveopt64 xsavec xsavec64 xsaves xsaves64 xrstors
    xrstors64"""))
LEGACY.update(_table("RTM", "xbegin xend xabort xtest"))
LEGACY.update(_table("SSE4A", "extrq insertq movntss movntsd"))
LEGACY.update(_table("FSGSBASE", "rdfsbase rdgsbase wrfsbase wrgsbase"))
LEGACY.update(_table("PKU", "rdpkru wrpkru"))
LEGACY.update(_table("WAITPKG", "umonitor umwait tpause"))
LEGACY.update(_table("MOVDIR", "movdiri movdir64b"))
LEGACY.update(_table("ENQCMD", "enqcmd enqcmds"))
LEGACY.update(_table("MISC-NEW", """serialize ptwrite cldemote wbnoinvd pconfig hreset clzero
    monitorx mwaitx femms rdsspd rdsspq incsspd incsspq saveprevssp rstorssp wrssd wrssq wrussd
    wrussq setssbsy clrssbsy uiret testui clui stui senduipi"""))
# Mnemonic prefixes of whole families outside every path.
LEGACY_FAMILY = (("aes", "AES"), ("pclmul", "PCLMUL"), ("sha1", "SHA"), ("sha256", "SHA"),
                 ("gf2p8", "GFNI"), ("encodekey", "KL"), ("loadiwkey", "KL"))

# The 0F 38 and 0F 3A opcode maps hold no baseline instruction at all (they arrived with SSSE3):
# an instruction from them that the tables do not name is unknown, never baseline. pextrw has an
# SSE2 form in the 0F map and an SSE4.1 form (memory destination) in 0F 3A.
MAP3_EXTRA = {"pextrw": "SSE4.1"}

# Size suffixes that AT&T syntax may append (popcntl, crc32q, fisttpll).
SUFFIXABLE = {"popcnt", "lzcnt", "tzcnt", "movbe", "crc32", "fisttp", "adcx", "adox", "rdrand",
              "rdseed", "andn", "bextr", "blsi", "blsmsk", "blsr", "bzhi", "mulx", "pdep", "pext",
              "rorx", "sarx", "shlx", "shrx"}

# ---------------------------------------------------------------------------------------------
# VEX encodings (C4/C5): AVX unless a table below says more.

BMI1_VEX = {"andn", "bextr", "blsi", "blsmsk", "blsr"}
BMI2_VEX = {"bzhi", "mulx", "pdep", "pext", "rorx", "sarx", "shlx", "shrx"}
FMA3_RE = re.compile(r"^vfn?m(add|sub|addsub|subadd)(132|213|231)(ps|pd|ss|sd)$")
FMA4_RE = re.compile(r"^vfn?m(add|sub|addsub|subadd)(ps|pd|ss|sd)$")
AVX2_VEX = set("""vpbroadcastb vpbroadcastw vpbroadcastd vpbroadcastq vbroadcasti128 vperm2i128
    vpermd vpermq vpermps vpermpd vinserti128 vextracti128 vgatherdps vgatherdpd vgatherqps
    vgatherqpd vpgatherdd vpgatherdq vpgatherqd vpgatherqq vpmaskmovd vpmaskmovq vpsllvd vpsllvq
    vpsrlvd vpsrlvq vpsravd vpblendd""".split())
# 256-bit forms that AVX already has although their names start with vp.
AVX1_VP_YMM = {"vptest", "vpermilps", "vpermilpd", "vperm2f128"}
# 256-bit integer forms that AVX2 added to names outside the vp family.
AVX2_YMM_OTHER = {"vmovntdqa", "vmpsadbw"}
VEX_BEYOND = (("vpdp", "AVX-VNNI"), ("vpmadd52", "AVX-IFMA"), ("vbcstne", "AVX-NE-CONVERT"),
              ("vcvtne", "AVX-NE-CONVERT"), ("vsha512", "SHA512"), ("vsm3", "SM3"),
              ("vsm4", "SM4"), ("vaes", "AES"), ("vpclmul", "PCLMUL"), ("vgf2p8", "GFNI"))

# ---------------------------------------------------------------------------------------------
# Mask registers (VEX-encoded k instructions): the element width of the mask decides the feature.

def mask_feature(mn):
    if mn in ("ktestw", "kaddw"):
        return "AVX512DQ"
    if mn in ("kunpckwd", "kunpckdq"):
        return "AVX512BW"
    if mn == "kunpckbw":
        return "AVX512F"
    last = mn[-1]
    if last == "w":
        return "AVX512F"
    if last == "b":
        return "AVX512DQ"
    if last in "dq":
        return "AVX512BW"
    return "UNKNOWN-MASK"


# ---------------------------------------------------------------------------------------------
# EVEX encodings (62): AVX512F unless a table below says more.

EVEX_CD = {"vpconflictd", "vpconflictq", "vplzcntd", "vplzcntq", "vpbroadcastmb2q",
           "vpbroadcastmw2d"}
EVEX_BW = set("""vpabsb vpabsw vpacksswb vpackssdw vpackusdw vpackuswb vpaddb vpaddw vpaddsb
    vpaddsw vpaddusb vpaddusw vpalignr vpavgb vpavgw vpblendmb vpblendmw vpbroadcastb vpbroadcastw
    vpcmpeqb vpcmpeqw vpcmpgtb vpcmpgtw vpcmpb vpcmpub vpcmpw vpcmpuw vpermw vpermi2w vpermt2w
    vpextrb vpextrw vpinsrb vpinsrw vpmaddubsw vpmaddwd vpmaxsb vpmaxsw vpmaxub vpmaxuw vpminsb
    vpminsw vpminub vpminuw vpmovb2m vpmovw2m vpmovm2b vpmovm2w vpmovswb vpmovuswb vpmovwb
    vpmovsxbw vpmovzxbw vpmulhrsw vpmulhuw vpmulhw vpmullw vpsadbw vpshufb vpshufhw vpshuflw
    vpsllvw vpsravw vpsrlvw vpsllw vpsraw vpsrlw vpslldq vpsrldq vpsubb vpsubw vpsubsb vpsubsw
    vpsubusb vpsubusw vptestmb vptestmw vptestnmb vptestnmw vpunpckhbw vpunpckhwd vpunpcklbw
    vpunpcklwd vmovdqu8 vmovdqu16 vdbpsadbw""".split())
# Byte and word compares under their predicate spellings (vpcmpltub, vpcmpnleuw...).
EVEX_BW_CMP_RE = re.compile(r"^vpcmp(eq|lt|le|false|neq|nlt|nle|true|gt|ge)?u?[bw]$")
EVEX_DQ = set("""vcvtqq2pd vcvtqq2ps vcvtuqq2pd vcvtuqq2ps vcvtpd2qq vcvtpd2uqq vcvttpd2qq
    vcvttpd2uqq vcvtps2qq vcvtps2uqq vcvttps2qq vcvttps2uqq vpmullq vandpd vandps vandnpd vandnps
    vorpd vorps vxorpd vxorps vinsertf64x2 vinserti64x2 vextractf64x2 vextracti64x2 vinsertf32x8
    vinserti32x8 vextractf32x8 vextracti32x8 vbroadcastf64x2 vbroadcasti64x2 vbroadcastf32x8
    vbroadcasti32x8 vbroadcasti32x2 vbroadcastf32x2 vpmovd2m vpmovq2m vpmovm2d vpmovm2q vpextrd
    vpextrq vpinsrd vpinsrq""".split())
EVEX_DQ_RE = re.compile(r"^v(fpclass|range|reduce)(ps|pd|ss|sd)$")
EVEX_BEYOND = ((re.compile(r"^vpdp(bu|ws)sds?$"), "AVX512-VNNI"),
               (re.compile(r"^vpmadd52"), "AVX512-IFMA"),
               (re.compile(r"^(vpermb|vperm[it]2b|vpmultishiftqb)$"), "AVX512-VBMI"),
               (re.compile(r"^(vpcompress[bw]|vpexpand[bw]|vpsh[lr]dv?[wdq])$"), "AVX512-VBMI2"),
               (re.compile(r"^(vpopcnt[bw]|vpshufbitqmb)$"), "AVX512-BITALG"),
               (re.compile(r"^vpopcnt[dq]$"), "AVX512-VPOPCNTDQ"),
               (re.compile(r"^vgf2p8"), "GFNI"),
               (re.compile(r"^vaes"), "VAES"),
               (re.compile(r"^vpclmul"), "VPCLMULQDQ"),
               (re.compile(r"^(vcvtne2ps2bf16|vcvtneps2bf16|vdpbf16ps)"), "AVX512-BF16"),
               (re.compile(r"^(vexp2p[sd]|vrcp28|vrsqrt28)"), "AVX512-ER"),
               (re.compile(r"^v(gather|scatter)pf"), "AVX512-PF"),
               (re.compile(r"^v4f"), "AVX512-4FMAPS"),
               (re.compile(r"^vp4dpw"), "AVX512-4VNNIW"),
               (re.compile(r"^vp2intersect"), "AVX512-VP2INTERSECT"),
               (re.compile(r"^(?!vcvtps2ph)v\w*(ph|sh)$"), "AVX512-FP16"))
# Forms that the EVEX vector length does not apply to: scalar arithmetic and conversions, moves
# between a general register and lane 0, and 128-bit-only moves and inserts. They need no VL.
EVEX_NO_VL = set("""vmovd vmovq vpextrb vpextrw vpextrd vpextrq vpinsrb vpinsrw vpinsrd vpinsrq
    vextractps vinsertps vmovhps vmovlps vmovhpd vmovlpd vmovhlps vmovlhps""".split())
SCALAR_CVT_RE = re.compile(r"^vcvt(t?(ss|sd)2u?si|u?si2(ss|sd))$")


def evex_scalar_or_fixed(mn):
    if mn in EVEX_NO_VL or SCALAR_CVT_RE.match(mn):
        return True
    # Packed integer names start with vp; the remaining names ending in ss/sd are scalar.
    return not mn.startswith("vp") and mn.endswith(("ss", "sd"))


def normalize_vector_mnemonic(mn):
    # AT&T syntax marks the source width of memory forms (vcvtpd2psx, vfpclasspsz) and the integer
    # width of conversions (vcvtsi2sdl); the instruction is the same.
    if mn[-1] in "xyz" and ("cvt" in mn or "fpclass" in mn):
        return mn[:-1]
    if mn[-1] in "lq" and re.match(r"^vcvtu?si2s[sd][lq]$", mn):
        return mn[:-1]
    return mn


# ---------------------------------------------------------------------------------------------
# Encoding.

LEGACY_PREFIXES = {0x26, 0x2E, 0x36, 0x3E, 0x64, 0x65, 0x66, 0x67, 0xF0, 0xF2, 0xF3}


def encoding(raw):
    """Returns (kind, map, vector_bits, evex_b) for the instruction bytes `raw` (ints)."""
    i = 0
    n = len(raw)
    while i < n and raw[i] in LEGACY_PREFIXES:
        i += 1
    if i < n and 0x40 <= raw[i] <= 0x4F:
        i += 1
        if i < n and raw[i] == 0x0F:
            return _legacy_map(raw, i)
        return ("legacy", 0, 0, 0)
    if i >= n:
        return ("legacy", 0, 0, 0)
    b = raw[i]
    if b == 0xC5 and i + 2 < n:
        return ("vex", 1, 256 if raw[i + 1] & 0x04 else 128, 0)
    if b == 0xC4 and i + 3 < n:
        return ("vex", raw[i + 1] & 0x1F, 256 if raw[i + 2] & 0x04 else 128, 0)
    if b == 0x62 and i + 4 < n:
        p0, p2 = raw[i + 1], raw[i + 3]
        ll = (p2 >> 5) & 3
        return ("evex", p0 & 0x07, (128, 256, 512, 512)[ll], (p2 >> 4) & 1)
    if b == 0x8F and i + 1 < n and (raw[i + 1] & 0x1F) >= 8:
        # POP r/m has a zero reg field, so a map number of 8 or more can only be XOP.
        return ("xop", raw[i + 1] & 0x1F, 0, 0)
    if b == 0x0F:
        return _legacy_map(raw, i)
    return ("legacy", 0, 0, 0)


def _legacy_map(raw, i):
    nxt = raw[i + 1] if i + 1 < len(raw) else -1
    if nxt == 0x38:
        return ("legacy", 0x38, 0, 0)
    if nxt == 0x3A:
        return ("legacy", 0x3A, 0, 0)
    if nxt == 0x0F:
        return ("legacy", 0x0F0F, 0, 0)
    return ("legacy", 0x0F, 0, 0)


# ---------------------------------------------------------------------------------------------
# Classification of one instruction.

PREFIX_WORDS = {"lock", "rep", "repz", "repnz", "repe", "repne", "notrack", "bnd", "data16",
                "data32", "addr32", "addr16", "cs", "ds", "es", "ss", "fs", "gs", "xacquire",
                "xrelease", "rex", "rex64"}


def split_instruction(text):
    """Splits objdump's instruction text into (mnemonic, operands), dropping prefixes."""
    mn, _, ops = text.strip().partition(" ")
    if mn in PREFIX_WORDS or mn.startswith(("rex.", "{")):
        tokens = text.split()
        k = 0
        while k < len(tokens) and (tokens[k] in PREFIX_WORDS or
                                   tokens[k].startswith(("rex.", "{"))):
            k += 1
        if k == len(tokens):
            return "", ""
        mn, ops = tokens[k], " ".join(tokens[k + 1:])
    if "<" in ops or "#" in ops:
        # Drop the symbolic target (call 1050 <f@plt>) and the comment (# 4fd0 <x>), which may
        # contain anything, including register-like names.
        for cut in ("#", "<"):
            j = ops.find(cut)
            if j >= 0:
                ops = ops[:j]
    return mn, ops.strip()


def classify(raw, text):
    """Returns the tuple of features that the instruction (bytes `raw`, objdump text) needs."""
    return classify_level(raw, text)[0]


def classify_level(raw, text):
    """Returns (features, level) for the instruction."""
    mn, ops = split_instruction(text)
    kind, opmap, vbits, bbit = encoding(raw)
    return _classify(kind, opmap, vbits, bbit, mn, "(" in ops, "%zmm" in ops, "%k" in ops,
                     ops.startswith("%xmm"))


@functools.lru_cache(maxsize=65536)
def _classify(kind, opmap, vbits, bbit, mn, has_mem, has_zmm, has_k, src_xmm):
    feats = _features(kind, opmap, vbits, bbit, mn, has_mem, has_zmm, has_k, src_xmm)
    return feats, max(feature_level(f) for f in feats)


def _features(kind, opmap, vbits, bbit, mn, has_mem, has_zmm, has_k, src_xmm):
    if mn == "":
        return ("BASE",)
    if mn.startswith((".", "(bad)")):
        return ("UNKNOWN",)
    if kind == "xop":
        return ("XOP",)
    if kind == "vex":
        feats = _classify_vex(opmap, vbits, mn, src_xmm)
    elif kind == "evex":
        feats = _classify_evex(opmap, vbits, bbit, mn, has_mem, has_zmm)
    else:
        feats = _classify_legacy(opmap, mn)
    if (has_zmm or has_k) and all(feature_level(f) < FEATURE_LEVEL["AVX512F"] for f in feats):
        # A zmm or mask register in any other encoding would be a decoding surprise; never
        # let it pass below AVX-512.
        feats = feats + ("AVX512F",)
    return feats


def _legacy_name(mn):
    if mn in LEGACY:
        return mn
    for cut in (1, 2):
        stem = mn[:-cut]
        if stem in SUFFIXABLE and mn[-cut:] in ("b", "w", "l", "q", "s", "ll"):
            return stem
    return mn


def _classify_legacy(opmap, mn):
    name = _legacy_name(mn)
    for prefix, feature in LEGACY_FAMILY:
        if name.startswith(prefix):
            return (feature,)
    if opmap == 0x0F0F:
        return ("3DNOW",)
    if opmap in (0x38, 0x3A):
        feature = MAP3_EXTRA.get(name) or LEGACY.get(name)
        return (feature if feature else "UNKNOWN-0F38/0F3A",)
    return (LEGACY.get(name, "BASE"),)


def _classify_vex(opmap, vbits, mn, src_xmm):
    if mn.startswith("k"):
        return (mask_feature(mn),)
    name = _legacy_name(mn)
    if name in BMI1_VEX:
        return ("BMI1",)
    if name in BMI2_VEX:
        return ("BMI2",)
    if not mn.startswith("v"):
        # AMX tile instructions and anything newer.
        return ("UNKNOWN-VEX",)
    mn = normalize_vector_mnemonic(mn)
    for prefix, feature in VEX_BEYOND:
        if mn.startswith(prefix):
            return (feature,)
    if FMA3_RE.match(mn):
        return ("FMA",)
    if FMA4_RE.match(mn):
        return ("FMA4",)
    if mn in ("vcvtph2ps", "vcvtps2ph"):
        return ("F16C",)
    if mn in AVX2_VEX:
        return ("AVX2",)
    if mn in ("vbroadcastss", "vbroadcastsd") and src_xmm:
        return ("AVX2",)
    if vbits == 256:
        if mn.startswith("vp") and mn not in AVX1_VP_YMM:
            return ("AVX2",)
        if mn in AVX2_YMM_OTHER:
            return ("AVX2",)
    return ("AVX",)


def _classify_evex(opmap, vbits, bbit, mn, has_mem, has_zmm):
    if opmap not in (1, 2, 3):
        # Maps 5 and 6 hold the half-precision instructions; others are not AVX-512 of any kind.
        return ("AVX512-FP16" if opmap in (5, 6) else "UNKNOWN-EVEX",)
    mn = normalize_vector_mnemonic(mn)
    for pattern, feature in EVEX_BEYOND:
        if pattern.match(mn):
            return (feature,)
    if mn in EVEX_CD:
        feats = ["AVX512CD"]
    elif mn in EVEX_BW or EVEX_BW_CMP_RE.match(mn):
        feats = ["AVX512BW"]
    elif mn in EVEX_DQ or EVEX_DQ_RE.match(mn):
        feats = ["AVX512DQ"]
    else:
        feats = ["AVX512F"]
    # Register forms with EVEX.b set carry rounding control in L'L and operate on 512 bits.
    length = 512 if (bbit and not has_mem) or has_zmm else vbits
    if length < 512 and not evex_scalar_or_fixed(mn):
        feats.append("AVX512VL")
    return tuple(feats)


# ---------------------------------------------------------------------------------------------
# Names and paths.

NAMESPACE_RE = re.compile(r"(?<![\w:])tav::path_(\w+?)::")


def paths_of_name(name):
    """Returns the set of path tags that the (demangled) symbol name places its function in."""
    tags = {tag for tag in NAMESPACE_RE.findall(name) if tag in PATH_LEVEL}
    tag = c_name_path(name)
    if tag:
        tags.add(tag)
    return tags


# Vector-math kernels carry a kernel family tag in the middle of the name instead of the path
# tag: tav_vml_kernel_<t><Func>_<FAM><ACC><flags>, e.g. tav_vml_kernel_dAdd_E7HAynn (avx2).
# U8 and H8 stand for levels without a build of their own and name no kernel.
VML_FAMILY_PATH = {"Z0": "def", "Y8": "cnr_def", "L9": "mc", "EX": "mc3", "E9": "avx",
                   "E7": "avx2", "E2": "avx512_tp", "B3": "avx512"}
VML_KERNEL_RE = re.compile(r"^tav_vml_kernel_[sdcz][A-Z][A-Za-z]*_([A-Z][A-Z0-9])(?:HA|LA|EP)"
                           r"[a-z]{3}$")


def c_name_path(name):
    if not name.startswith("tav_"):
        return None
    vml = VML_KERNEL_RE.match(name)
    if vml:
        return VML_FAMILY_PATH.get(vml.group(1))
    tokens = name.split("_")
    for comp_len in (1, 2):
        if comp_len == 2 and "_".join(tokens[1:3]) not in MULTIWORD_COMPONENTS:
            continue
        if not tokens[1] or len(tokens) < 2 + comp_len:
            continue
        rest = tokens[1 + comp_len:]
        # Two-word tags first: tav_blas_avx512_tp_f is f on avx512_tp, not tp_f on avx512.
        for tag_len in (2, 1):
            tag = "_".join(rest[:tag_len])
            if tag in PATH_LEVEL and len(rest) > tag_len and rest[tag_len]:
                return tag
    return None


def function_path(names):
    """Returns (label, allowed level) for a function known by `names`.

    Every name must place the function in a path for it to get that path's rights; when its
    names disagree (an alias, folded code), the strictest one wins.
    """
    label, level = None, NO_PATH
    for name in names:
        tags = paths_of_name(name)
        if not tags:
            return "outside paths", 0
        tag = min(tags, key=lambda t: PATH_LEVEL[t])
        if PATH_LEVEL[tag] < level:
            label, level = tag, PATH_LEVEL[tag]
    return (label, level) if label else ("outside paths", 0)


# ---------------------------------------------------------------------------------------------
# Reading the shared object.

NM_LINE_RE = re.compile(r"^([0-9a-f]+) (?:([0-9a-f]+) )?([A-Za-z]) (.*)$")
HEADER_RE = re.compile(r"^([0-9a-f]+) <(.*)>:$")


def read_symbols(nm, path):
    """Maps each function address to (names, size) from the static symbol table."""
    proc = subprocess.run([nm, "-C", "-S", "--defined-only", path], capture_output=True,
                          text=True)
    if proc.returncode != 0:
        raise RuntimeError(f"{nm} failed on {path}: {proc.stderr.strip()}")
    symbols = {}
    for line in proc.stdout.splitlines():
        m = NM_LINE_RE.match(line)
        if not m or m.group(3) not in "TtWwiu":
            continue
        addr = int(m.group(1), 16)
        size = int(m.group(2), 16) if m.group(2) else 0
        names, old = symbols.get(addr, ([], 0))
        names.append(m.group(4))
        symbols[addr] = (names, max(old, size))
    return symbols


class Function:
    __slots__ = ("names", "start", "end", "allowed", "label", "count", "violations")

    def __init__(self, names, start, size):
        self.names = names
        self.start = start
        self.end = start + size if size else None
        self.label, self.allowed = function_path(names)
        self.count = 0
        self.violations = []


# Clang's function-type sanitizer opens every function with 8 bytes: a short jump over a two-byte
# signature and a 32-bit type-information offset. A linear disassembly decodes that data as
# instructions and loses step with the code behind it, so the audit reads a copy of the file in
# which those six data bytes are nops.
SANITIZER_ENTRIES = (b"\xeb\x06\x76\x32", b"\xeb\x06\x46\x54")


def load_segments(data):
    """Returns (vaddr, offset, size) of each loadable segment of the ELF64 image `data`."""
    if data[:4] != b"\x7fELF" or data[4] != 2 or data[5] != 1:
        raise RuntimeError("not a little-endian ELF64 file")
    phoff = int.from_bytes(data[0x20:0x28], "little")
    phentsize = int.from_bytes(data[0x36:0x38], "little")
    phnum = int.from_bytes(data[0x38:0x3A], "little")
    segments = []
    for k in range(phnum):
        h = data[phoff + k * phentsize: phoff + (k + 1) * phentsize]
        if int.from_bytes(h[0:4], "little") == 1:  # PT_LOAD
            offset = int.from_bytes(h[8:16], "little")
            vaddr = int.from_bytes(h[16:24], "little")
            filesz = int.from_bytes(h[32:40], "little")
            segments.append((vaddr, offset, filesz))
    return segments


def without_sanitizer_entries(path, addresses):
    """Returns the path of a copy with sanitizer entry data made nops, or None if there is none."""
    with open(path, "rb") as f:
        data = bytearray(f.read())
    segments = load_segments(data)
    patched = 0
    for addr in addresses:
        for vaddr, offset, size in segments:
            if vaddr <= addr < vaddr + size - 8:
                at = offset + addr - vaddr
                if bytes(data[at:at + 4]) in SANITIZER_ENTRIES:
                    data[at + 2:at + 8] = b"\x90" * 6
                    patched += 1
                break
    if not patched:
        return None
    copy = tempfile.NamedTemporaryFile(prefix="isa_audit_", suffix=".so", delete=False)
    with copy:
        copy.write(data)
    return copy.name


def audit(objdump, nm, path, max_listed):
    symbols = read_symbols(nm, path)
    if not symbols:
        print(f"isa_audit: {path} has no static symbol table (stripped?); cannot attribute code "
              "to functions", file=sys.stderr)
        return 2
    copy = without_sanitizer_entries(path, symbols)
    try:
        return audit_disassembly(objdump, path, copy or path, symbols, max_listed)
    finally:
        if copy:
            os.unlink(copy)


def audit_disassembly(objdump, path, image, symbols, max_listed):
    cmd = [objdump, "-d", "-C", "-w", "--insn-width=16", image]
    # stderr goes to a file: a full pipe there would stall objdump while we read stdout.
    errors = tempfile.TemporaryFile(mode="w+")
    proc = subprocess.Popen(cmd, stdout=subprocess.PIPE, stderr=errors, text=True,
                            bufsize=1 << 20)
    functions = []
    current = None
    instructions = 0
    for line in proc.stdout:
        if line.endswith(">:\n"):
            m = HEADER_RE.match(line.rstrip("\n"))
            if m:
                addr = int(m.group(1), 16)
                names, size = symbols.get(addr, ([], 0))
                if m.group(2) not in names:
                    names = names + [m.group(2)]
                current = Function(names, addr, size)
                functions.append(current)
                continue
        fields = line.rstrip("\n").split("\t")
        if len(fields) < 3 or current is None:
            continue
        instructions += 1
        current.count += 1
        # The first eight bytes hold every prefix and opcode byte the classifier reads.
        feats, level = classify_level(bytes.fromhex(fields[1][:24]), fields[2])
        if level == 0:
            continue
        addr = int(fields[0].strip().rstrip(":"), 16)
        # Bytes past the symbol's size (padding, or code without a symbol of its own) belong to
        # no path.
        allowed = current.allowed if current.end is None or addr < current.end else 0
        if level > allowed:
            current.violations.append((addr, fields[2].strip(), feats, level, allowed))
    if proc.wait() != 0:
        errors.seek(0)
        print(f"isa_audit: {objdump} failed on {path}: {errors.read().strip()}",
              file=sys.stderr)
        return 2
    if instructions == 0:
        print(f"isa_audit: {objdump} found no instructions in {path}", file=sys.stderr)
        return 2

    bad = [f for f in functions if f.violations]
    if bad:
        total = sum(len(f.violations) for f in bad)
        print(f"isa_audit: {path}: {total} instructions beyond their code path "
              f"in {len(bad)} functions")
        for f in bad:
            print(f"FAIL {' = '.join(f.names)} [{f.label}]")
            for addr, text, feats, level, allowed in f.violations[:max_listed]:
                print(f"  {addr:#x}  {' '.join(text.split())}  needs {'+'.join(feats)}: "
                      f"level {LEVEL_NAMES[level]}, allowed {LEVEL_NAMES[allowed]}")
            if len(f.violations) > max_listed:
                print(f"  ... {len(f.violations) - max_listed} more")
        return 1

    per_path = {tag: 0 for tag in PATH_LEVEL}
    outside = 0
    for f in functions:
        if f.count == 0:
            continue
        if f.label == "outside paths":
            outside += 1
        else:
            per_path[f.label] += 1
    counts = " ".join(f"{tag} {n}" for tag, n in per_path.items())
    print(f"isa_audit: {os.path.basename(path)}: OK, {instructions} instructions in "
          f"{sum(per_path.values()) + outside} functions: baseline {outside}, {counts}")
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library", help="shared object to audit")
    parser.add_argument("--objdump", default="objdump", help="GNU objdump to run")
    parser.add_argument("--nm", default="nm", help="GNU nm to run")
    parser.add_argument("--max-listed", type=int, default=20,
                        help="violations listed per function")
    args = parser.parse_args()
    if not os.path.isfile(args.library):
        print(f"isa_audit: no such file: {args.library}", file=sys.stderr)
        return 2
    try:
        return audit(args.objdump, args.nm, args.library, args.max_listed)
    except (OSError, RuntimeError) as e:
        print(f"isa_audit: {e}", file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())

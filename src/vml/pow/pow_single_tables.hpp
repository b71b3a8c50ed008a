// The tables of the single-precision power function x^y = 2^(y·log2 x).
//
// Logarithm: x = 2^k·z, the subinterval of z read from the mantissa bits of x minus an offset,
// z = c·(1 + r) with invc ~ 1/c and log2c = -log2(invc) rounded. The subinterval that holds 1
// is centred on it and has invc = 1, so that x near 1 reduces exactly to r = x - 1.
// Exponential: 2^(j/N) as the bit pattern of its rounded value minus j << (mantissa bits -
// log2 N), so that adding ki << (mantissa bits - log2 N) for ki = k·N + j puts k into the
// exponent field and removes j.
//
// Generated once with mpmath at 60 digits (not part of the build): invc is 1/midpoint rounded
// to the table's precision, log2c the rounded log of that invc.
#pragma once

#include <bit>
#include <cstdint>

namespace tav::vml::pow_data {

// Double precision: 32 subintervals of [0x1.64p-1, 0x1.64p+0) (bit offset 0x3f320000, index
// the next five bits), |r| <= 2^-6; rows {invc, log2c}.
inline constexpr int32_t log2_offset = 0x3f320000;
inline constexpr int log2_bits = 5;
alignas(64) inline constexpr double log2_table[32][2] = {
    {0x1.6c16c16c16c17p+0, -0x1.042bd4b9a7c99p-1}, {0x1.642c8590b2164p+0, -0x1.e7df5fe538ab3p-2},
    {0x1.5c9882b931057p+0, -0x1.c819dc2d45fe4p-2}, {0x1.5555555555555p+0, -0x1.a8ff971810a5dp-2},
    {0x1.4e5e0a72f0539p+0, -0x1.8a8980abfbd30p-2}, {0x1.47ae147ae147bp+0, -0x1.6cb0f6865c8ebp-2},
    {0x1.4141414141414p+0, -0x1.4f6fbb2cec598p-2}, {0x1.3b13b13b13b14p+0, -0x1.32bfee370ee6ap-2},
    {0x1.3521cfb2b78c1p+0, -0x1.169c05363f157p-2}, {0x1.2f684bda12f68p+0, -0x1.f5fd8a9063e32p-3},
    {0x1.29e4129e4129ep+0, -0x1.bfc67a7fff4cap-3}, {0x1.2492492492492p+0, -0x1.8a8980abfbd30p-3},
    {0x1.1f7047dc11f70p+0, -0x1.563dc29ffacafp-3}, {0x1.1a7b9611a7b96p+0, -0x1.22dadc2ab3496p-3},
    {0x1.15b1e5f75270dp+0, -0x1.e0b1ae8f2fd56p-4}, {0x1.1111111111111p+0, -0x1.7d60496cfbb4bp-4},
    {0x1.0c9714fbcda3bp+0, -0x1.1bb32a60054a2p-4}, {0x1.0842108421084p+0, -0x1.77394c9d958d0p-5},
    {0x1.0410410410410p+0, -0x1.743ee861f353fp-6}, {1.0, 0.0},
    {0x1.f07c1f07c1f08p-1, 0x1.6bad3758efd81p-5},  {0x1.e1e1e1e1e1e1ep-1, 0x1.663f6fac91318p-4},
    {0x1.d41d41d41d41dp-1, 0x1.08c588cda79e5p-3},  {0x1.c71c71c71c71cp-1, 0x1.5c01a39fbd68bp-3},
    {0x1.bacf914c1bad0p-1, 0x1.acf5e2db4ec91p-3},  {0x1.af286bca1af28p-1, 0x1.fbc16b902680dp-3},
    {0x1.a41a41a41a41ap-1, 0x1.24407ab0e073ap-2},  {0x1.999999999999ap-1, 0x1.49a784bcd1b8ap-2},
    {0x1.8f9c18f9c18fap-1, 0x1.6e221cd9d0cddp-2},  {0x1.8618618618618p-1, 0x1.91bba891f170ap-2},
    {0x1.7d05f417d05f4p-1, 0x1.b47ebf73882a1p-2},  {0x1.745d1745d1746p-1, 0x1.d6753e032ea0ep-2},
};

// 2^(j/32) in double precision.
alignas(64) inline constexpr double exp2_table[32] = {
    std::bit_cast<double>(0x3ff0000000000000ull), std::bit_cast<double>(0x3fefd9b0d3158574ull),
    std::bit_cast<double>(0x3fefb5586cf9890full), std::bit_cast<double>(0x3fef9301d0125b51ull),
    std::bit_cast<double>(0x3fef72b83c7d517bull), std::bit_cast<double>(0x3fef54873168b9aaull),
    std::bit_cast<double>(0x3fef387a6e756238ull), std::bit_cast<double>(0x3fef1e9df51fdee1ull),
    std::bit_cast<double>(0x3fef06fe0a31b715ull), std::bit_cast<double>(0x3feef1a7373aa9cbull),
    std::bit_cast<double>(0x3feedea64c123422ull), std::bit_cast<double>(0x3feece086061892dull),
    std::bit_cast<double>(0x3feebfdad5362a27ull), std::bit_cast<double>(0x3feeb42b569d4f82ull),
    std::bit_cast<double>(0x3feeab07dd485429ull), std::bit_cast<double>(0x3feea47eb03a5585ull),
    std::bit_cast<double>(0x3feea09e667f3bcdull), std::bit_cast<double>(0x3fee9f75e8ec5f74ull),
    std::bit_cast<double>(0x3feea11473eb0187ull), std::bit_cast<double>(0x3feea589994cce13ull),
    std::bit_cast<double>(0x3feeace5422aa0dbull), std::bit_cast<double>(0x3feeb737b0cdc5e5ull),
    std::bit_cast<double>(0x3feec49182a3f090ull), std::bit_cast<double>(0x3feed503b23e255dull),
    std::bit_cast<double>(0x3feee89f995ad3adull), std::bit_cast<double>(0x3feeff76f2fb5e47ull),
    std::bit_cast<double>(0x3fef199bdd85529cull), std::bit_cast<double>(0x3fef3720dcef9069ull),
    std::bit_cast<double>(0x3fef5818dcfba487ull), std::bit_cast<double>(0x3fef7c97337b9b5full),
    std::bit_cast<double>(0x3fefa4afa2a490daull), std::bit_cast<double>(0x3fefd0765b6e4540ull),
};

// Single precision, eight entries each, loaded into one register: 8 subintervals of
// [0x1.7p-1, 0x1.7p+0) (bit offset 0x3f380000, index the next three bits), |r| <= 2^-4.
inline constexpr int32_t log2f_offset = 0x3f380000;
inline constexpr int log2f_bits = 3;
alignas(32) inline constexpr float log2f_invc[8] = {0x1.555556p+0f, 0x1.3b13b2p+0f, 0x1.24924ap+0f,
                                                    0x1.111112p+0f, 1.0f,           0x1.c71c72p-1f,
                                                    0x1.99999ap-1f, 0x1.745d18p-1f};
alignas(32) inline constexpr float log2f_logc[8] = {
    -0x1.a8ff9ap-2f, -0x1.32bff2p-2f, -0x1.8a898ap-3f, -0x1.7d605ep-4f, 0.0f,
    0x1.5c01a2p-3f,  0x1.49a784p-2f,  0x1.d6753cp-2f};

// 2^(j/8) in single precision.
alignas(32) inline constexpr float exp2f_table[8] = {
    std::bit_cast<float>(0x3f800000u), std::bit_cast<float>(0x3f7b95c2u),
    std::bit_cast<float>(0x3f7837f0u), std::bit_cast<float>(0x3f75fed7u),
    std::bit_cast<float>(0x3f7504f3u), std::bit_cast<float>(0x3f75672au),
    std::bit_cast<float>(0x3f7744fdu), std::bit_cast<float>(0x3f7ac0c7u),
};

}  // namespace tav::vml::pow_data

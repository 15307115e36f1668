#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "link/Products.h"

/// The simulator's canned texts.

// kept: docs/oddities.md#simulator-lists-end-at-15
inline constexpr std::string_view kListProdReply = "0_listprod_0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15";

/// What the simulator reports as connected until the registry says otherwise.
inline constexpr std::string_view kDefaultListConProdReply = "0_listconprod_9 12 15";

/// A command's first characters and the whole reply to it.
struct CannedReply {
    std::string_view command;
    std::string_view reply;
};

/// Searched from the top for the first whose command is the beginning of the one sent.
// kept: docs/oddities.md#simulator-listdev-prefix
inline constexpr std::array<CannedReply, 18> kDeviceLists{{
    {"listdev 0", "0_listdev 0_0 1"},
    {"listdev 1", "0_listdev 1_0 1"},
    {"listdev 2", "0_listdev 2_0"},
    {"listdev 3", "0_listdev 3_0"},
    {"listdev 4", "0_listdev 4_0"},
    {"listdev 5", "0_listdev 5_0"},
    {"listdev 6", "0_listdev 6_0"},
    {"listdev 7", "0_listdev 7_0"},
    {"listdev 8", "0_listdev 8_0"},
    {"listdev 9", "0_listdev 9_0"},
    {"listdev 10", "0_listdev 10_0"},
    {"listdev 11", "0_listdev 11_0"},
    {"listdev 12", "0_listdev 12_0 1"},
    {"listdev 13", "0_listdev 13_0 1"},
    {"listdev 14", "0_listdev 14_0"},
    {"listdev 15", "0_listdev 15_0"},
    {"listdev 16", "0_listdev 16_0 1 2"},
    {"listdev 17", "0_listdev 17_0 1 2 3 4 5 6"},
}};

/// Parameters and the payload that a read of any of them gives.
struct ParameterValue {
    std::span<const int> parameters;
    std::string_view payload;
};

inline constexpr std::array kTens{13, 14, 15,  18,  19,  20,  23,  24,  25,  28,  29,
                                  30, 73, 103, 104, 105, 106, 151, 190, 214, 215, 367};
inline constexpr std::array kNames{31, 35, 58, 62, 64, 68, 362, 366};
inline constexpr std::array kDates{32, 33, 59, 60, 65, 66, 363, 364};
inline constexpr std::array kSerialNumbers{34, 61, 67, 365};
inline constexpr std::array kZeros{83, 85, 115, 116, 117, 118, 184, 185, 186, 192};
inline constexpr std::array kTwenties{97, 138, 150, 153};
inline constexpr std::array kHundreds{98};
inline constexpr std::array kOnes{128, 129, 130, 233};

inline constexpr std::array<ParameterValue, 8> kParameterValues{{
    {kTens, "10"},
    {kNames, "simulator"},
    {kDates, "15/5/2015"},
    {kSerialNumbers, "12345"},
    {kZeros, "0"},
    {kTwenties, "20"},
    {kHundreds, "100"},
    {kOnes, "1"},
}};

/// A product's parameter list.
struct ParameterList {
    std::int32_t product;
    std::string_view payload;
};

inline constexpr std::array<ParameterList, 8> kParameterLists{{
    {product::kH201, "64 65 66 67 68 73 83 85 97 98 128 184 185 186"},
    {product::kH301,
     "64 65 66 67 68 103 104 105 106 107 108 109 110 111 112 113 114 115 116 117 118 119 123 124 125 127 128 132 139 "
     "140 189 190 191 192 193 194 195 196 239 240 241 242 243 244 245 251 252 253 254 383"},
    {product::kCo2, "13 15 18 20 23 25 28 30 31 32 33 34 35 58 59 60 61 62 129 138 153 154 206 209 215 233 375 376"},
    {product::kO2, "13 14 18 19 23 24 28 29 31 32 33 34 35 130 138 153 154 237 238 375 376"},
    {product::kMixer12,
     "13 14 15 18 19 20 23 24 25 28 29 30 31 32 33 34 35 37 41 101 129 130 138 153 154 161 199 203 204 205 206 207 "
     "208 209 210 211 212 213 214 215 216 217 220 221 222 233 235 236 237 238 255 256 257 375 376"},
    {product::kMixer13,
     "13 14 15 28 29 30 31 32 33 34 35 37 41 101 129 130 138 150 151 153 154 161 199 203 204 205 206 207 208 209 210 "
     "211 212 213 214 215 216 217 220 221 222 233 235 236 237 238 255 256 257"},
    {product::kH101, "64 65 66 67 68 107 115 119 123 124 128 132 189 190 192 254 259 383"},
    {product::kActiveHumidifier,
     "138 153 154 199 203 204 205 206 207 208 209 210 211 212 213 214 215 216 217 220 221 222 233 235 236 255 256 257 "
     "362 363 364 365 366 367 368"},
}};

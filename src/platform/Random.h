#pragma once

/// The largest number that NextRandom gives: RAND_MAX of the Microsoft C run-time.
inline constexpr int kRandomMax = 32767;

/// The C run-time's generator, srand and rand.
void SeedRandom(unsigned seed) noexcept;
int NextRandom() noexcept;

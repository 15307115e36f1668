#include "platform/Random.h"

#include <cstdlib>

static_assert(RAND_MAX == kRandomMax);

void SeedRandom(unsigned seed) noexcept { std::srand(seed); }

int NextRandom() noexcept {
    return std::rand();  // NOLINT(concurrency-mt-unsafe): Windows keeps a sequence for each thread
}

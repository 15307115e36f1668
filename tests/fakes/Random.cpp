#include "platform/Random.h"

#include <array>
#include <cstddef>
#include <mutex>
#include <vector>

#include "fakes/ScriptedPlatform.h"

namespace {

/// Both ends of the range, both parities, and every remainder that the library looks at.
constexpr std::array<int, 12> kFixedSequence{{16384, 5, 32767, 11, 0, 20002, 9001, 28653, 4, 13577, 31006, 7}};

}  // namespace

void ScriptedRandom::Script(std::vector<int> numbers) {
    const std::scoped_lock lock(m_mutex);
    m_script.assign(numbers.begin(), numbers.end());
}

std::vector<unsigned> ScriptedRandom::Seeds() const {
    const std::scoped_lock lock(m_mutex);
    return m_seeds;
}

std::size_t ScriptedRandom::DrawCount() const {
    const std::scoped_lock lock(m_mutex);
    return m_drawCount;
}

void ScriptedRandom::Seed(unsigned seed) {
    const std::scoped_lock lock(m_mutex);
    m_seeds.push_back(seed);
}

int ScriptedRandom::Next() {
    const std::scoped_lock lock(m_mutex);
    ++m_drawCount;
    if (m_script.empty()) {
        return kFixedSequence[m_position++ % kFixedSequence.size()];
    }
    const int number = m_script.front();
    m_script.pop_front();
    return number;
}

void SeedRandom(unsigned seed) noexcept { ScriptedPlatform::Current().random.Seed(seed); }

int NextRandom() noexcept { return ScriptedPlatform::Current().random.Next(); }

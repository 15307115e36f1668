// In a file of its own: a compiler that sees both sides takes the replaced operators for a mismatch.

#include "CountingAllocator.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

namespace {

std::atomic<bool> g_counting = false;
std::atomic<int> g_allocations = 0;

std::atomic<bool> g_noting = false;
std::atomic<std::size_t> g_frees = 0;
std::array<const void*, 1000> g_freed;

void* Allocate(std::size_t size) noexcept {
    if (g_counting) {
        ++g_allocations;
    }
    return std::malloc(size != 0 ? size : 1);
}

void Free(void* memory) noexcept {
    if (g_noting) {
        const std::size_t place = g_frees++;
        if (place < g_freed.size()) {
            g_freed[place] = memory;
        }
    }
    std::free(memory);
}

}  // namespace

void StartCountingAllocations() noexcept {
    g_allocations = 0;
    g_counting = true;
}

int StopCountingAllocations() noexcept {
    g_counting = false;
    return g_allocations;
}

void StartNotingFrees() noexcept {
    g_frees = 0;
    g_noting = true;
}

std::vector<const void*> StopNotingFrees() {
    g_noting = false;
    const auto count = static_cast<std::ptrdiff_t>(std::min(g_frees.load(), g_freed.size()));
    return std::vector<const void*>(g_freed.begin(), g_freed.begin() + count);
}

void* operator new(std::size_t size) {
    if (void* const memory = Allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { Free(memory); }

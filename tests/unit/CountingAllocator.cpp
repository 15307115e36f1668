// In a file of its own: a compiler that sees both sides takes the replaced operators for a mismatch.

#include "CountingAllocator.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> g_counting = false;
std::atomic<int> g_allocations = 0;

void* Allocate(std::size_t size) noexcept {
    if (g_counting) {
        ++g_allocations;
    }
    return std::malloc(size != 0 ? size : 1);
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

void* operator new(std::size_t size) {
    if (void* const memory = Allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

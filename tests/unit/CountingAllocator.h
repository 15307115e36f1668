#pragma once

#include <vector>

/// The test program's operator new counts between these two. All threads are counted.
void StartCountingAllocations() noexcept;

/// How often something was allocated since then.
int StopCountingAllocations() noexcept;

/// Its operator delete keeps the addresses of what it frees between these two, in order. On all threads.
void StartNotingFrees() noexcept;

/// The first addresses that were freed since then, a thousand at most.
std::vector<const void*> StopNotingFrees();

#pragma once

/// The test program's operator new counts between these two. All threads are counted.
void StartCountingAllocations() noexcept;

/// How often something was allocated since then.
int StopCountingAllocations() noexcept;

#pragma once

/// Ctrl+C, Ctrl+Break, a closed console, and on other systems SIGTERM. From now on the first one only asks; the second
/// ends the program at once with kExitInterrupted.
void CatchInterrupts();

/// Whether the user asked to end. Any thread.
bool Interrupted() noexcept;

/// What EndNow does first, and a console that is closed; null: nothing more. It must not wait for another thread.
void BeforeEndNow(void (*action)() noexcept) noexcept;

/// Ends the program at once: no destructor runs, no thread is waited for, no library says good-bye. For a device that
/// does not come back. What was written to files was flushed before.
[[noreturn]] void EndNow(int exitCode) noexcept;

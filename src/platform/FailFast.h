#pragma once

/// Ends the process at once, without clean-up, where going on would overrun memory.
[[noreturn]] void FailFast() noexcept;

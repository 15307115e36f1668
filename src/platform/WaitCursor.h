#pragma once

/// Shows the wait cursor while it lives and then the previous one again. On the user-interface thread.
class WaitCursor {
 public:
    WaitCursor() noexcept;
    ~WaitCursor();
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

 private:
    void* m_hPrevious;
};

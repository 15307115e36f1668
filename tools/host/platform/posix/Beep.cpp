#include "platform/Beep.h"

#include <sys/types.h>
#include <unistd.h>

void SoundWarning() noexcept {
    if (isatty(STDERR_FILENO) == 1) {
        [[maybe_unused]] const ssize_t rung = write(STDERR_FILENO, "\a", 1);
    }
}

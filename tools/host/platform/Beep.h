#pragma once

/// Makes the sound of a warning, where there is something to make it with. Returns at once.
void SoundWarning() noexcept;

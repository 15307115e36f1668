#include "platform/Shell.h"

#include <mutex>
#include <vector>

#include "fakes/ScriptedPlatform.h"

std::vector<RecordedShell::Launch> RecordedShell::Launches() const {
    const std::scoped_lock lock(m_mutex);
    return m_launches;
}

void RecordedShell::Open(Launch launch) {
    {
        const std::scoped_lock lock(m_mutex);
        m_launches.push_back(launch);
    }
    if (onOpen) {
        onOpen(launch);
    }
}

void OpenProgram(const wchar_t* program, const wchar_t* parameters, const wchar_t* folder) noexcept {
    ScriptedPlatform::Current().shell.Open({program, parameters, folder});
}

#include "fakes/Dialogs.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "core/CDevApiInterface_Impl.h"
#include "fakes/ScriptedPlatform.h"
#include "platform/WaitCursor.h"
#include "ui/ConfigurationDialog.h"
#include "ui/ConnectionDialog.h"
#include "ui/DialogEnd.h"
#include "ui/ProgressWindow.h"
#include "ui/ValuePanel.h"

namespace {

/// Over the records: a host may open dialogs on one thread while another one searches. A test scripts and reads them
/// while nobody opens any.
std::mutex s_mutex;

void Record(std::vector<oko::WindowHandle>& parents, oko::WindowHandle parent) {
    const std::scoped_lock lock(s_mutex);
    parents.push_back(parent);
}

}  // namespace

ScriptedDialogs& ScriptedDialogs::Current() {
    static ScriptedDialogs dialogs;
    return dialogs;
}

void ScriptedDialogs::Reset() {
    const std::scoped_lock lock(s_mutex);
    Current() = {};
}

oko::WindowHandle ScriptedDialogs::Open(std::string name, oko::WindowHandle parent, std::wstring caption) {
    constexpr std::uintptr_t kFirstHandle = 0x10000;
    const std::scoped_lock lock(s_mutex);
    const auto window = reinterpret_cast<oko::WindowHandle>(kFirstHandle + opened.size());
    opened.push_back({std::move(name), parent, std::move(caption), window});
    if (onOpened) {
        onOpened(opened.back());
    }
    return window;
}

DialogEnd RunConfigurationDialog(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept {
    ScriptedDialogs& dialogs = ScriptedDialogs::Current();
    Record(dialogs.configurationParents, parent);
    return dialogs.onConfiguration ? dialogs.onConfiguration(device) : DialogEnd::Cancelled;
}

DialogEnd RunConnectionDialog(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept {
    ScriptedDialogs& dialogs = ScriptedDialogs::Current();
    Record(dialogs.connectionParents, parent);
    return dialogs.onConnection ? dialogs.onConnection(device) : DialogEnd::CloseBox;
}

oko::WindowHandle OpenProgressWindow(CDevApiInterface_Impl&, oko::WindowHandle parent,
                                     const wchar_t* caption) noexcept {
    return ScriptedDialogs::Current().Open("IDD_PROGRESS", parent, caption != nullptr ? caption : L"");
}

oko::WindowHandle OpenValuePanel(CDevApiInterface_Impl&, oko::WindowHandle parent) noexcept {
    return ScriptedDialogs::Current().Open("INCUBATOR_DIALOG1", parent, L"");
}

void* ValuePanelProcedure() noexcept { return reinterpret_cast<void*>(&OpenValuePanel); }

WaitCursor::WaitCursor() noexcept : m_hPrevious(nullptr) { ++ScriptedPlatform::Current().windows.waitCursors; }

WaitCursor::~WaitCursor() { --ScriptedPlatform::Current().windows.waitCursors; }

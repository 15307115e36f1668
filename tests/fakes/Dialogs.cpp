#include "fakes/Dialogs.h"

#include <cstdint>

#include "core/CDevApiInterface_Impl.h"
#include "platform/WaitCursor.h"
#include "ui/ConfigurationDialog.h"
#include "ui/ConnectionDialog.h"
#include "ui/ProgressWindow.h"
#include "ui/ValuePanel.h"

ScriptedDialogs& ScriptedDialogs::Current() {
    static ScriptedDialogs dialogs;
    return dialogs;
}

void ScriptedDialogs::Reset() { Current() = {}; }

WindowHandle ScriptedDialogs::Open(std::string name, WindowHandle parent, std::wstring caption) {
    constexpr std::uintptr_t kFirstHandle = 0x10000;
    const auto window = reinterpret_cast<WindowHandle>(kFirstHandle + opened.size());
    opened.push_back({std::move(name), parent, std::move(caption), window});
    if (onOpened) {
        onOpened(opened.back());
    }
    return window;
}

DialogEnd RunConfigurationDialog(CDevApiInterface_Impl& device, WindowHandle parent) noexcept {
    ScriptedDialogs& dialogs = ScriptedDialogs::Current();
    dialogs.configurationParents.push_back(parent);
    return dialogs.onConfiguration ? dialogs.onConfiguration(device) : DialogEnd::Cancelled;
}

DialogEnd RunConnectionDialog(CDevApiInterface_Impl& device, WindowHandle parent) noexcept {
    ScriptedDialogs& dialogs = ScriptedDialogs::Current();
    dialogs.connectionParents.push_back(parent);
    return dialogs.onConnection ? dialogs.onConnection(device) : DialogEnd::CloseBox;
}

WindowHandle OpenProgressWindow(CDevApiInterface_Impl&, WindowHandle parent, const wchar_t* caption) noexcept {
    return ScriptedDialogs::Current().Open("IDD_PROGRESS", parent, caption != nullptr ? caption : L"");
}

WindowHandle OpenValuePanel(CDevApiInterface_Impl&, WindowHandle parent) noexcept {
    return ScriptedDialogs::Current().Open("INCUBATOR_DIALOG1", parent, L"");
}

void* ValuePanelProcedure() noexcept { return reinterpret_cast<void*>(&OpenValuePanel); }

WaitCursor::WaitCursor() noexcept : m_hPrevious(nullptr) {}

WaitCursor::~WaitCursor() = default;

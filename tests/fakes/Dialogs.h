#pragma once

#include <functional>
#include <string>
#include <vector>

#include "oko/WindowHandle.h"
#include "ui/DialogEnd.h"

class CDevApiInterface_Impl;

/// The dialogs' windows in the native build: what a person would do in them is a function of the test. One record for
/// the process, which a fixture resets.
class ScriptedDialogs {
 public:
    /// What happens in the modal dialogs; they are cancelled when there is nothing.
    std::function<DialogEnd(CDevApiInterface_Impl& device)> onConfiguration;
    std::function<DialogEnd(CDevApiInterface_Impl& device)> onConnection;

    /// The modeless windows that were opened: their parents, and their captions ("" for the template's own).
    struct Opened {
        std::string name;  // "IDD_PROGRESS" or "INCUBATOR_DIALOG1"
        oko::WindowHandle parent;
        std::wstring caption;
        oko::WindowHandle window;
        bool operator==(const Opened&) const = default;
    };
    std::vector<Opened> opened;

    /// Runs when a modeless window was opened.
    std::function<void(const Opened& window)> onOpened;

    /// The parents of the modal dialogs that ran.
    std::vector<oko::WindowHandle> configurationParents;
    std::vector<oko::WindowHandle> connectionParents;

    static ScriptedDialogs& Current();
    static void Reset();

    /// For the stand-ins: a handle that no test has seen yet.
    oko::WindowHandle Open(std::string name, oko::WindowHandle parent, std::wstring caption);
};

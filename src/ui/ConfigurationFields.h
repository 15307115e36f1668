#pragma once

#include <array>
#include <functional>
#include <string>

class CDevApiInterface_Impl;

/// What the configuration dialog shows and takes back: everything of it that needs no window.

/// One edit field.
struct FieldView {
    int id;
    bool enabled;
    std::wstring text;  // left as it is in the dialog when empty
};

struct ConfigurationView {
    std::array<FieldView, 8> fields;
    bool airModeEnabled;
    bool airModeChecked;
    bool showStatusEnabled;
};

/// What the dialog shows when it opens.
ConfigurationView DescribeConfiguration(CDevApiInterface_Impl& device);

/// Gives the whole text of an edit field; its first 255 characters are read.
using FieldReader = std::function<std::wstring(int id)>;

/// Takes the fields' numbers into the channels and writes the air mode to the products that have one. False at the
/// first empty field: what was taken before it stays, and so does m_bBusy, until an operation that takes the link frees
/// it.
bool TakeConfiguration(CDevApiInterface_Impl& device, const FieldReader& fieldText, bool airModeChecked);

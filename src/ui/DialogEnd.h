#pragma once

/// How a modal dialog ended; the numbers are the dialogs' own results.
enum class DialogEnd {
    Failed = -1,  // it could not be opened
    Ok = 1,
    Cancelled = 2,  // also when it was opened without a device
    CloseBox = 8,
    FindAndConnect = 1019
};

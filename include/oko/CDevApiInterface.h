#pragma once

#include <cstdint>

#include "oko/CDevApiInterface_GasConcentration.h"  // IWYU pragma: export
#include "oko/CDevApiInterface_Humidifier.h"        // IWYU pragma: export
#include "oko/CDevApiInterface_Temperature.h"       // IWYU pragma: export
#include "oko/HostCallback.h"                       // IWYU pragma: export
#include "oko/Result.h"                             // IWYU pragma: export
#include "oko/Settings.h"                           // IWYU pragma: export
#include "oko/WindowHandle.h"                       // IWYU pragma: export

// x64 only. There is one calling convention there, so that the functions here need no word for it.
static_assert(sizeof(void*) == 8, "the plug-in's binary contract is that of 64-bit Windows");

namespace oko {

/// Bounds of the channel arrays: indexes below them always give a channel object.
inline constexpr std::uint32_t kTemperatureChannels = 16;
inline constexpr std::uint32_t kGasChannels = 4;
inline constexpr std::uint32_t kHumidityChannels = 4;

}  // namespace oko

/// The device object: a real incubator or the simulator. It has exactly 15 slots and no virtual destructor; it lives
/// until the library is unloaded.
///
/// Order of use: ApplyConnection, Init, ApplyConfiguration, work with the channels and dialogs, Close. After Close the
/// same order may begin again. docs/host-integration.md tells the whole life of a host.
///
/// Thread rules, for the device and its channels:
/// - Slots 0 and 3 to 6 belong to the host's user-interface thread. Close, ApplyConnection and the channels' slots may
///   be called on any thread, at any time; each call takes its turn at the link.
/// - When Close or ApplyConnection takes the link away from an Init, a Find and Connect, an ApplyConfiguration or a new
///   temperature that is under way, that call fails with -1, sends nothing more and leaves the other link alone.
/// - While an Init or a Find and Connect is under way, Init and ShowConnection return -1 and do nothing: on another
///   thread, from the callback, or from a message that a box pumps. From the callback of any other call they are
///   carried out.
/// - The callback runs on the thread that called into the plug-in. It may call any slot, within the rule above. It must
///   not wait for another thread that needs a channel or Close: it may be called while a lock is held that these take
///   (during the gas channels' reading of the air mode).
/// - The read of an O2 controller's target holds that lock while it waits for the air mode: until the server answers,
///   the states, limits and tolerances of all channels wait too.
/// - A channel's DeletingDestructor is not for use while another thread uses the channel.
/// - Calls marked [blocks] wait while the server answers. The plug-in sets no timeout of its own: a server that keeps
///   silent is waited for endlessly, and whoever comes after waits, too. Two ways out, off unless set: m_nReplyTimeout
///   in the connection text (oko/Settings.h), and the registry value ReplyTimeout (REG_DWORD, milliseconds) in
///   HKEY_LOCAL_MACHINE\Software\Vellmark\Misc, read whenever a link is opened and by Init. An answer that takes longer
///   counts as none (-1).
///
/// The device is busy while Init, Find and Connect, ApplyConfiguration, an OK of the configuration dialog or the status
/// report has the link to itself, and after a failed one of them until the next that succeeds. Temperature and gas
/// channels then answer reads from memory.
class CDevApiInterface {
 public:
    /// Slot 0. Finds the server, learns what is connected and assigns the channels. `callback` may be null. `hostData`
    /// is kept and not used. 0: the counts below tell which channels are live; on the simulator their values move from
    /// now on. -1: the server did not answer or refused, and a message box told the user (of a silent server only once
    /// until Close; never on a link that only watches); an answer did not come in time; the link was closed or opened
    /// anew meanwhile; or an Init or a search is under way. Needs the link that ApplyConnection opens. [blocks: one
    /// exchange with the server for each of some 80 commands]
    virtual std::int32_t Init(oko::HostCallbackFunction callback, void* hostData) = 0;

    /// Slot 1. Stops the simulator's value thread (waits at most 5.1 s), tells the server to stop and to release its
    /// products, and closes the link. The channels stay, with their last known values; the real incubator's reads give
    /// -1 then. Harmless when repeated, or without an Init before it. [blocks]
    virtual void Close() = 0;

    /// Slot 2. Not used; returns false.
    virtual bool Unused2() = 0;

    /// Slot 3. Creates the value panel, a child window, in `parent` and returns its handle, or null. Where `procedure`
    /// is not null it receives the panel's dialog procedure. The panel goes with its parent.
    virtual oko::WindowHandle CreateValuePanel(oko::WindowHandle parent, oko::DialogProcedure* procedure) = 0;

    /// Slot 4. Runs the modal configuration dialog over `parent` (may be null). `text`: buffer of
    /// oko::kConfigurationTextLength wide characters that receives the alarm settings text (oko/Settings.h), ending in
    /// a zero; what it holds before is not read. `size` is kept and not used. 0: OK, the text is written and applied.
    /// -1: cancelled, refused (the first temperature channel is of product 16 or 17), or `text` is null; nothing is
    /// written. [blocks until the dialog is closed]
    virtual std::int32_t ShowConfiguration(wchar_t* text, std::int32_t size, oko::WindowHandle parent) = 0;

    /// Slot 5. Applies an alarm settings text (oko/Settings.h): stores the tolerances in temperature channel 0, gas
    /// channels 0 and 1 and humidity channel 0, sends the alarm commands, reads the air mode, closes the progress
    /// window. Values that the text lacks take their defaults. Returns 0, whatever the server says. -1 for null: the
    /// device is then busy until a text comes. -1, too, when the link was closed or opened anew meanwhile. [blocks]
    virtual std::int32_t ApplyConfiguration(const wchar_t* text) = 0;

    /// Slot 6. Runs the modal connection dialog over `parent` (may be null); on the simulator it returns 0 at once.
    /// `text`: buffer of oko::kConnectionTextLength wide characters with the connection settings text (oko/Settings.h),
    /// ending in a zero, which is written anew on success. `length`: the text's length; 0 when there is none yet, and
    /// the buffer is not read. 0: a port was chosen; or Find and Connect went its way, which leaves the link closed:
    /// go on with ApplyConnection; or there was no dialog to show, and nothing is written. -1: closed through the close
    /// box, `text` is null, an Init or a search is under way, Find and Connect was chosen on a link that only watches,
    /// or the search's link was closed or opened anew meanwhile; nothing is written. [blocks until it is closed, and
    /// while the server searches]
    virtual std::int32_t ShowConnection(wchar_t* text, std::int32_t length, oko::WindowHandle parent) = 0;

    /// Slot 7. Takes the connection settings text (oko/Settings.h; empty or null keeps the port) and opens the link, or
    /// opens it afresh. Returns 0, whether or not anybody listens: Init finds out. Waits for nobody but an exchange
    /// that is under way, on another thread, with a server that has not answered yet; a timeout limits that. [blocks
    /// then]
    virtual std::int32_t ApplyConnection(const wchar_t* text) = 0;

    /// Slot 8. Not used; returns 0.
    virtual std::int32_t Unused8() = 0;

    /// Slots 9, 11, 13. How many channels of the kind are live: 16, 4 and 4 before the first Init, 0 after one
    /// that failed; an Init that is under way counts them anew.
    /// Slots 10, 12, 14. Store channel `index` of the kind through `channel` and return 0. An index at or above the
    /// bound (oko::kTemperatureChannels, ...) returns 0 too and leaves `*channel` as it was: set it to null before the
    /// call. An index between the count and the bound gives a channel that stands for nothing.
    virtual std::int32_t GetTemperatureCount() = 0;
    virtual std::int32_t GetTemperature(std::uint32_t index, CDevApiInterface_Temperature** channel) = 0;
    virtual std::int32_t GetGasConcentrationCount() = 0;
    virtual std::int32_t GetGasConcentration(std::uint32_t index, CDevApiInterface_GasConcentration** channel) = 0;
    virtual std::int32_t GetHumidifierCount() = 0;
    virtual std::int32_t GetHumidifier(std::uint32_t index, CDevApiInterface_Humidifier** channel) = 0;

 protected:
    ~CDevApiInterface() = default;
};

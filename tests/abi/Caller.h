#pragma once

/// What the caller with the Microsoft object layout offers to the test program. Plain C: nothing here depends on a
/// layout.

extern "C" {

/// The results of all slots of a channel or the device, in slot order, as numbers that no other slot gives.
struct SlotResults {
    int results[16];
};

void CallTemperatureSlots(void* channel, SlotResults* results, double* numbers);
void CallGasSlots(void* channel, SlotResults* results, double* numbers);
void CallHumiditySlots(void* channel, SlotResults* results, double* numbers);

/// Slots 0 to 15 of the device but Init and Close, which have functions of their own, and the two modal dialogs.
void CallDeviceSlots(void* device, SlotResults* results, void** channels);
int CallInit(void* device, void (*callback)(int, const wchar_t*), void* hostData);
void CallClose(void* device);

/// `delete channel`, as a Microsoft compiler writes it.
void DeleteTemperature(void* channel);
void DeleteGas(void* channel);
void DeleteHumidity(void* channel);
}

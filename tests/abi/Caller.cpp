// A host as a Microsoft compiler would build it: the interfaces are declared afresh here, with real virtual
// destructors, and nothing of the library's own headers is used.

#include "Caller.h"

extern "C" int _fltused = 0;  // the Microsoft run-time's mark of a program with floating-point numbers

// The library frees its channels itself; the deleting destructor never comes here.
void operator delete(void*) noexcept { __builtin_trap(); }
void operator delete(void*, unsigned long long) noexcept { __builtin_trap(); }

namespace {

struct Notify {
    virtual int SetEnabled(unsigned char flag) = 0;
    virtual int GetName(wchar_t* buffer, int length) = 0;
    virtual int NoOperation() = 0;
};

struct Temperature : Notify {
    virtual int SetTarget(double value) = 0;
    virtual int GetTarget(double* value) = 0;
    virtual int GetCurrent(double* value) = 0;
    virtual int GetState(unsigned* state) = 0;
    virtual int SetRate(double value) = 0;
    virtual int GetStep(double* value) = 0;
    virtual int SetTolerance(double below, double above) = 0;
    virtual int GetTolerance(double* below, double* above) = 0;
    virtual int NotSupported() = 0;
    virtual int GetLimits(double* min, double* max) = 0;
    virtual bool HasFeature(int feature) = 0;
    virtual ~Temperature() {}
};

struct Percent : Notify {
    virtual int SetTarget(double value) = 0;
    virtual int GetTarget(double* value) = 0;
    virtual int GetCurrent(double* value) = 0;
    virtual int GetState(unsigned* state) = 0;
    virtual int SetTolerance(double below, double above) = 0;
    virtual int GetTolerance(double* below, double* above) = 0;
    virtual bool HasFeature(int feature) = 0;
    virtual ~Percent() {}
};

struct Device {
    virtual int Init(void (*callback)(int, const wchar_t*), void* hostData) = 0;
    virtual void Close() = 0;
    virtual bool Slot2() = 0;
    virtual void* ValuePanel(void* parent, void** procedure) = 0;
    virtual int ShowConfiguration(wchar_t* text, int size, void* parent) = 0;
    virtual int ApplyConfiguration(const wchar_t* text) = 0;
    virtual int ShowConnection(wchar_t* text, int length, void* parent) = 0;
    virtual int ApplyConnection(const wchar_t* text) = 0;
    virtual int Slot8() = 0;
    virtual int TemperatureCount() = 0;
    virtual int GetTemperature(unsigned index, Temperature** channel) = 0;
    virtual int GasCount() = 0;
    virtual int GetGas(unsigned index, Percent** channel) = 0;
    virtual int HumidityCount() = 0;
    virtual int GetHumidity(unsigned index, Percent** channel) = 0;
};

Device& DeviceAt(void* device) { return *static_cast<Device*>(device); }

void CallPercentSlots(void* object, SlotResults* out, double* numbers) {
    Percent& channel = *static_cast<Percent*>(object);
    wchar_t name[32] = {};
    unsigned state = 99;
    out->results[0] = channel.SetEnabled(1);
    out->results[1] = channel.GetName(name, 31) == 0 ? name[0] : -1;
    out->results[2] = channel.NoOperation();
    out->results[3] = channel.SetTarget(62.5);
    out->results[4] = channel.GetTarget(&numbers[0]);
    out->results[5] = channel.GetCurrent(&numbers[1]);
    out->results[6] = channel.GetState(&state) == 0 ? static_cast<int>(state) : -1;
    out->results[7] = channel.SetTolerance(3.5, 4.5);
    out->results[8] = channel.GetTolerance(&numbers[2], &numbers[3]);
    out->results[9] = channel.HasFeature(2) ? 1 : 0;
}

}  // namespace

void CallTemperatureSlots(void* object, SlotResults* out, double* numbers) {
    Temperature& channel = *static_cast<Temperature*>(object);
    wchar_t name[32] = {};
    unsigned state = 99;
    out->results[0] = channel.SetEnabled(1);
    out->results[1] = channel.GetName(name, 31) == 0 ? name[0] : -1;
    out->results[2] = channel.NoOperation();
    out->results[3] = channel.SetTarget(31.5);
    out->results[4] = channel.GetTarget(&numbers[0]);
    out->results[5] = channel.GetCurrent(&numbers[1]);
    out->results[6] = channel.GetState(&state) == 0 ? static_cast<int>(state) : -1;
    out->results[7] = channel.SetRate(0.0);
    out->results[8] = channel.GetStep(&numbers[2]);
    out->results[9] = channel.SetTolerance(1.5, 2.5);
    out->results[10] = channel.GetTolerance(&numbers[3], &numbers[4]);
    out->results[11] = channel.NotSupported();
    out->results[12] = channel.GetLimits(&numbers[5], &numbers[6]);
    out->results[13] = channel.HasFeature(4) ? 1 : 0;
}

void CallGasSlots(void* channel, SlotResults* results, double* numbers) { CallPercentSlots(channel, results, numbers); }

void CallHumiditySlots(void* channel, SlotResults* results, double* numbers) {
    CallPercentSlots(channel, results, numbers);
}

void CallDeviceSlots(void* object, SlotResults* out, void** channels) {
    Device& device = DeviceAt(object);
    wchar_t text[32] = {};
    out->results[2] = device.Slot2() ? 1 : 0;
    out->results[5] = device.ApplyConfiguration(L"dIncubatorBelow 0.75 | dIncubatorAbove 0.25");
    out->results[6] = device.ShowConnection(text, 0, nullptr);
    out->results[7] = device.ApplyConnection(L"m_iComPort 4");
    out->results[8] = device.Slot8();
    out->results[9] = device.TemperatureCount();
    out->results[10] = device.GetTemperature(0, reinterpret_cast<Temperature**>(&channels[0]));
    out->results[11] = device.GasCount();
    out->results[12] = device.GetGas(1, reinterpret_cast<Percent**>(&channels[1]));
    out->results[13] = device.HumidityCount();
    out->results[14] = device.GetHumidity(0, reinterpret_cast<Percent**>(&channels[2]));
}

int CallInit(void* device, void (*callback)(int, const wchar_t*), void* hostData) {
    return DeviceAt(device).Init(callback, hostData);
}

void CallClose(void* device) { DeviceAt(device).Close(); }

void DeleteTemperature(void* channel) { delete static_cast<Temperature*>(channel); }

void DeleteGas(void* channel) { delete static_cast<Percent*>(channel); }

void DeleteHumidity(void* channel) { delete static_cast<Percent*>(channel); }

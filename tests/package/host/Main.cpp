// Reads the simulator's name and goes through two interfaces. Uses no library but the plug-in, so that any compiler for
// Windows links it without one of its own.

#include <oko/LibQuery.h>

extern "C" int _fltused = 0;  // what Microsoft's compilers want of a program that calculates

/// 0 when all is as it should be, otherwise the number of the step.
extern "C" int Check() {
    char name[oko::kDeviceTextLength];
    if (LibQueryPhysDevice(oko::kSimulatorDevice, nullptr, nullptr, 0, name, oko::kDeviceTextLength, nullptr, 0,
                           nullptr, 0) != 0) {
        return 1;
    }
    if (name[0] != 'O' || name[18] != 'S') {
        return 2;
    }
    CDevApiInterface* device = nullptr;
    if (LibQueryInterface(oko::kSimulatorDevice, nullptr, &device) != 0 || device == nullptr) {
        return 3;
    }
    CDevApiInterface_Temperature* channel = nullptr;
    if (device->GetTemperature(0, &channel) != 0 || channel == nullptr) {
        return 4;
    }
    wchar_t channelName[oko::kChannelNameLength];
    channelName[0] = 0;
    channel->GetName(channelName, oko::kChannelNameLength - 1);
    return 0;
}

#ifdef __MINGW32__
int main() { return Check(); }
#endif

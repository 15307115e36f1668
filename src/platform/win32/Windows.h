#pragma once

// The Windows headers as this library wants them. Winsock first: windows.h would bring an older one.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <winsock2.h>
// clang-format off
#include <windows.h>
// clang-format on

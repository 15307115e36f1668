#pragma once

/// Whether the system knows a default configuration for a serial port ("COM3"): the port exists.
bool HasDefaultPortConfiguration(const wchar_t* name) noexcept;

/// Whether a port can be opened right now, without any access rights and without sharing. It is closed again at once.
bool CanOpenPort(const wchar_t* openName) noexcept;

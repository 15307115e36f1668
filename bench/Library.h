#pragma once

#include "platform/win32/Windows.h"

/// A library that lies beside the program, loaded as long as this object lives.
class Library {
 public:
    explicit Library(const wchar_t* name) : m_hModule(LoadLibraryW(name)) {}
    ~Library() {
        if (m_hModule != nullptr) {
            FreeLibrary(m_hModule);
        }
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    bool IsLoaded() const { return m_hModule != nullptr; }

    template <class Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(m_hModule, name)));
    }

 private:
    HMODULE m_hModule;
};

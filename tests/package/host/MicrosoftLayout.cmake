# Microsoft's object layout and linker, without Microsoft's libraries: clang with lld.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_CXX_FLAGS_INIT
    "-ffreestanding -fno-exceptions -fno-rtti -isystem \"${CMAKE_CURRENT_LIST_DIR}/../../abi/freestanding\"")
# CMake tries the compiler with a library, as it has nothing to link a program with.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_AR x86_64-w64-mingw32-ar CACHE STRING "")
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_CXX_STANDARD_LIBRARIES "" CACHE STRING "")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib -Wl,/entry:Check -Wl,/subsystem:console")

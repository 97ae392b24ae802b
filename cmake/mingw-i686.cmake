# Cross-compiling for 32-bit Windows with MinGW-w64 (the posix thread model, whose
# runtime links statically and has std::thread).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(ZORVAT_MINGW_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)

// The shared Win32 helpers (hosts/win32/raii.cpp) for the test servers that compile
// them into a DLL of their own instead of linking zorvat_win32 (tests/qbsim).
#include "../win32/raii.cpp"

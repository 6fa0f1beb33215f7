#pragma once

#include "platform/winapi/windows_header.h"

#include <objbase.h>

/// The system's library that makes objects of other libraries, such as those of the audio devices. Only for
/// Windows.
namespace KAV::Host {

struct SCom {
    decltype(&::CoInitializeEx) initialize;
    decltype(&::CoUninitialize) uninitialize;
    decltype(&::CoCreateInstance) createInstance;
    decltype(&::CoTaskMemFree) free;
};

/// The functions, for the life of the process; null if the library is missing. Any thread.
const SCom* Com() noexcept;

/// For tests: from now on these are used, which live as long as any use of them; null: the system's.
void UseCom(const SCom* functions) noexcept;

} // namespace KAV::Host

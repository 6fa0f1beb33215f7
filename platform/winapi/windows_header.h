#pragma once

#include <windows.h>

// Names of operations of ours, which that header takes for its own with another letter at the end.
#undef LoadImage

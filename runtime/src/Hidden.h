#pragma once

/// For what a class of the interface keeps to itself: it would leave the library with the class around it otherwise.
#if defined(_WIN32)
#define LUX_HIDDEN
#else
#define LUX_HIDDEN __attribute__((visibility("hidden")))
#endif

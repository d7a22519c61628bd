#pragma once

/// The version of the binary interface between the program, the runtime library and the decoders. It is the number in
/// the library's name (libAnalyzer.so.1), and changes only when a decoder that was built before could no longer run.
#define LUX_ANALYZER_ABI 1

#if defined(_WIN32)
#define LUX_PLUGIN_EXPORT __declspec(dllexport)
#if defined(LUX_ANALYZER_BUILD)
#define LUX_ANALYZER_API __declspec(dllexport)
#else
#define LUX_ANALYZER_API __declspec(dllimport)
#endif
#else
#define LUX_PLUGIN_EXPORT __attribute__((visibility("default")))
#define LUX_ANALYZER_API __attribute__((visibility("default")))
#endif

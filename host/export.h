// Marks what the host's shared library offers to programs and objects.
#pragma once

#if defined(_WIN32)
#if defined(TESK_HOST_BUILD)
#define TESK_EXPORT __declspec(dllexport)
#else
#define TESK_EXPORT __declspec(dllimport)
#endif
#else
#define TESK_EXPORT __attribute__((visibility("default")))
#endif

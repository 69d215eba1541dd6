// What the shared library shows to the outside; everything else stays hidden.
#pragma once

#if defined(_WIN32)
#define QKEL4X_EXPORT
#else
#define QKEL4X_EXPORT __attribute__((visibility("default")))
#endif

#ifndef RT305_4_PLUGIN_MEMORY_H
#define RT305_4_PLUGIN_MEMORY_H

#include <cstdint>

// Hints to the C and C++ runtime. They change no result.

/// Makes the C++ runtime allocate the exception record of the calling thread now. In a host without that runtime the
/// first throw would allocate it, and if memory had run out by then, end the process instead of raising std::bad_alloc.
void prepareToThrow();

/// Makes the C library keep about the working memory of a call mapped between calls. It takes the largest block ever
/// freed as its measure of what to return to the system (mallopt(3), M_MMAP_THRESHOLD and M_TRIM_THRESHOLD), so a block
/// of that size is allocated and freed unused. Otherwise every call of a host that measures again and again would map
/// 150 pages anew, which takes as long as the computation.
void keepMemoryMapped(std::uint64_t samplesNumber);

#endif

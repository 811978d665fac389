// How a host in C survives a call that runs out of memory: it calls through a function of this kind.
#include <cstdint>
#include <new>

#include "rt305_4/rt305_4.h"

/// Like process, but -1 when memory ran out.
extern "C" std::int32_t guarded(std::int32_t (*process)(DataProcessRequest), const DataProcessRequest* request) {
    try {
        return process(*request);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

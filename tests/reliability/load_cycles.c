/* Loads, calls and unloads the library many times; the heap must stay as the first cycles left it: load_cycles LIBRARY
 * CYCLES. The OpenMP runtime loses 8 bytes each time it is loaded, so this host keeps it loaded. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "rt305_4/easy.h"

static void* loaded(const char* library) {
    void* const handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(2);
    }
    return handle;
}

static void callOnce(const char* library) {
    static const double samples[16] = {0, 1, 2, 3, 2, 1, 0, -1, -2, -3, -2, -1, 0, 1, 2, 3};
    ChannelData channels[6];
    for (uint32_t i = 0; i < 6; ++i) {
        channels[i] = rt305_4_channel((int32_t)(i / 3), i % 3, samples, 16, 1.0);
    }
    RT305_4_Texts texts;
    DataProcessRequest request = rt305_4_request(channels, 6, &texts);
    request.operation = RT305_4_OPERATION_SIGNALS;
    void* const handle = loaded(library);
    void* const symbol = dlsym(handle, "dataProccess");
    int32_t (*process)(DataProcessRequest);
    memcpy(&process, &symbol, sizeof symbol);
    if (process(request) != 1) {
        fputs("a call failed\n", stderr);
        exit(1);
    }
    dlclose(handle);
}

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    loaded("libgomp.so.1");

    enum { settling = 100 };
    const int cycles = atoi(argv[2]);
    size_t before = 0;
    for (int i = 0; i < cycles; ++i) {
        if (i == settling) {
            before = mallinfo2().uordblks;
        }
        callOnce(argv[1]);
    }
    const size_t after = mallinfo2().uordblks;
    printf("heap after %d cycles: %zu bytes, after %d: %zu bytes\n", settling, before, cycles, after);
    const int stays = dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != NULL;
    /* The C library's caches settle within a few KiB; one lost block per cycle would be 32 bytes each. */
    return stays || after > before + 8192;
}

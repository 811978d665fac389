/* Loads the library, calls it and unloads it, again and again, as a host in C does: load_cycles LIBRARY CYCLES
 * The heap must stay as the first cycles left it. The OpenMP runtime itself loses 8 bytes with each load of it, so this
 * host keeps it. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "rt305_4/rt305_4.h"

static double milliseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec * 1e3 + (double)now.tv_nsec * 1e-6;
}

static void* loaded(const char* library) {
    void* const handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (handle == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(2);
    }
    return handle;
}

static void find(void* library, const char* name, void* function) {
    void* const symbol = dlsym(library, name);
    memcpy(function, &symbol, sizeof symbol);
}

/* Time until the version is known, ms. */
static double timeOfLoading(const char* library) {
    const char* (*version)(void);
    const double start = milliseconds();
    void* const handle = loaded(library);
    find(handle, "getVersion", &version);
    const int right = strcmp(version(), RT305_4_VERSION) == 0;
    const double time = milliseconds() - start;
    dlclose(handle);
    return right ? time : -1.0;
}

static int callOnce(const char* library) {
    static const double samples[16] = {0, 1, 2, 3, 2, 1, 0, -1, -2, -3, -2, -1, 0, 1, 2, 3};
    ChannelData channels[6];
    const char* texts[8] = {0};
    for (int i = 0; i < 6; ++i) {
        const ChannelData channel = {i / 3, (uint32_t)(i % 3), samples, 16, 1.0, 1.0, 0.0};
        channels[i] = channel;
    }
    const DataProcessRequest request = {
        channels,  6,         16,        1000.0,    0.0,       3,         RT305_4_INPUT_VOLTAGES_AND_CURRENTS,
        {0, 0},    1,         &texts[0], &texts[1], &texts[2], &texts[3], &texts[4],
        &texts[5], &texts[6], &texts[7]};
    int32_t (*process)(DataProcessRequest);
    void* const handle = loaded(library);
    find(handle, "dataProccess", &process);
    const int32_t result = process(request);
    dlclose(handle);
    return result == 1;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        fputs("usage: load_cycles LIBRARY CYCLES\n", stderr);
        return 2;
    }
    const double first = timeOfLoading(argv[1]);
    const double second = timeOfLoading(argv[1]);
    printf("dlopen and getVersion: %.2f ms the first time, %.2f ms the second\n", first, second);
    loaded("libgomp.so.1");

    enum { settling = 100 };
    const int cycles = atoi(argv[2]);
    size_t before = 0;
    for (int i = 0; i < cycles; ++i) {
        if (i == settling) {
            before = mallinfo2().uordblks;
        }
        if (!callOnce(argv[1])) {
            fprintf(stderr, "call %d failed\n", i);
            return 1;
        }
    }
    if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != NULL) {
        fputs("the library stays after dlclose\n", stderr);
        return 1;
    }
    const size_t after = mallinfo2().uordblks;
    printf("heap after %d cycles: %zu bytes, after %d: %zu bytes\n", settling, before, cycles, after);
    /* Block caches of the C library settle within a few KiB; one lost block per cycle would be 32 bytes each. */
    return first < 0.0 || after > before + 8192;
}

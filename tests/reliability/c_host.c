/* A host in C, without the C++ runtime until it loads the library: c_host LIBRARY GUARD CYCLES
 * - It runs out of memory in its first call, in its main thread and in another one, and continues. Its malloc fails on
 *   demand, also for the C++ runtime.
 * - It loads, calls and unloads the library many times. The heap stays as the first cycles left it. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "interposed_malloc.h"
#include "rt305_4/easy.h"

static _Thread_local int limited; /* whether the allocations of this thread are limited */
static _Thread_local long left;   /* how many of them still succeed */

static int mayAllocate(void) {
    return !limited || left-- > 0;
}

static void check(int holds, const char* what) {
    if (!holds) {
        fprintf(stderr, "%s\n", what);
        exit(1);
    }
}

static void* load(const char* file, const char* name, void* function) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* const symbol = library != NULL ? dlsym(library, name) : NULL;
    check(symbol != NULL, "cannot load the library");
    memcpy(function, &symbol, sizeof symbol);
    return library;
}

static int32_t (*process)(DataProcessRequest);
static int32_t (*guarded)(int32_t (*)(DataProcessRequest), const DataProcessRequest*);

/* One call in which only some allocations succeed, then one with enough memory. */
static void* callTwice(void* succeeding) {
    static const double samples[16] = {0, 1, 2, 3, 2, 1, 0, -1, -2, -3, -2, -1, 0, 1, 2, 3};
    ChannelData channels[6];
    for (uint32_t i = 0; i < 6; ++i) {
        channels[i] = rt305_4_channel((int32_t)(i / 3), i % 3, samples, 16, 1.0);
    }
    RT305_4_Texts texts;
    DataProcessRequest request = rt305_4_request(channels, 6, &texts);
    request.operation = RT305_4_OPERATION_SIGNALS;
    limited = 1;
    left = *(const long*)succeeding;
    const int32_t first = guarded(process, &request);
    limited = 0;
    check(first == -1 && *texts.paramData == '\0', "a call without memory does not end with std::bad_alloc");
    check(guarded(process, &request) == 1 && *texts.paramData != '\0', "the next call fails");
    return NULL;
}

int main(int argc, char** argv) {
    check(argc == 4, "usage: c_host LIBRARY GUARD CYCLES");
    load(argv[2], "guarded", &guarded);
    const clock_t start = clock();
    void* library = load(argv[1], "dataProccess", &process);
    printf("loading takes %.2f ms of processor time\n", 1e3 * (double)(clock() - start) / CLOCKS_PER_SEC);

    long succeeding = 0;
    callTwice(&succeeding);
    succeeding = 1; /* the first call in another thread may allocate the thread's exception record */
    pthread_t thread;
    check(pthread_create(&thread, NULL, callTwice, &succeeding) == 0, "no thread");
    pthread_join(thread, NULL);

    /* The OpenMP runtime loses 8 bytes each time it is loaded, so it stays loaded. */
    check(dlopen("libgomp.so.1", RTLD_NOW) != NULL, "no OpenMP runtime");
    size_t before = 0;
    succeeding = 0;
    for (int i = 0; i < atoi(argv[3]); ++i) {
        dlclose(library);
        check(dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) == NULL, "the library stays after dlclose");
        library = load(argv[1], "dataProccess", &process);
        callTwice(&succeeding);
        before = i == 100 ? mallinfo2().uordblks : before;
    }
    const size_t after = mallinfo2().uordblks;
    printf("heap after 100 cycles: %zu bytes, at the end: %zu bytes\n", before, after);
    /* The C library's caches settle within a few KiB; one lost block per cycle would be 32 bytes each. */
    check(after <= before + 8192, "the heap grows");
    return 0;
}

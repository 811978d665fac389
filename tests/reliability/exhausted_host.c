/* A host in C, without the C++ runtime until it loads the library, runs out of memory in the first call that it makes,
 * in its main thread and in another one, and goes on: exhausted_host LIBRARY GUARD
 * Its malloc fails when told so, the C++ runtime's own use of it included. */
#include <dlfcn.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "rt305_4/rt305_4.h"

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

static _Thread_local int limited; /* whether the allocations of this thread are limited */
static _Thread_local long left;   /* how many of them still succeed */

static int mayAllocate(void) {
    return !limited || left-- > 0;
}

void* malloc(size_t size) {
    return mayAllocate() ? __libc_malloc(size) : NULL;
}
void* calloc(size_t count, size_t size) {
    return mayAllocate() ? __libc_calloc(count, size) : NULL;
}
void* realloc(void* block, size_t size) {
    return mayAllocate() ? __libc_realloc(block, size) : NULL;
}
void* memalign(size_t alignment, size_t size) {
    return mayAllocate() ? __libc_memalign(alignment, size) : NULL;
}
void* aligned_alloc(size_t alignment, size_t size) {
    return memalign(alignment, size);
}

typedef int32_t (*Process)(DataProcessRequest);
typedef int32_t (*Guarded)(Process, const DataProcessRequest*);

static Process process;
static Guarded guarded;

static void* symbolOf(const char* file, const char* name) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* const symbol = library != NULL ? dlsym(library, name) : NULL;
    if (symbol == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(2);
    }
    return symbol;
}

/* One call in which only so many allocations succeed, then one with all the memory there is. */
static const char* callTwice(long succeeding) {
    enum { n = 64 };
    double samples[n];
    ChannelData channels[6];
    const char* texts[8] = {0};
    for (int i = 0; i < n; ++i) {
        samples[i] = i % 8;
    }
    for (int i = 0; i < 6; ++i) {
        const ChannelData channel = {i / 3, (uint32_t)(i % 3), samples, n, 1.0, 1.0, 0.0};
        channels[i] = channel;
    }
    const DataProcessRequest request = {
        channels,  6,         n,         10000.0,   0.0,       3,         RT305_4_INPUT_VOLTAGES_AND_CURRENTS,
        {0, 0},    0,         &texts[0], &texts[1], &texts[2], &texts[3], &texts[4],
        &texts[5], &texts[6], &texts[7]};
    limited = 1;
    left = succeeding;
    const int32_t first = guarded(process, &request);
    limited = 0;
    if (first != -1 || texts[0] != NULL) {
        return "the call without memory did not end with std::bad_alloc";
    }
    return guarded(process, &request) == 1 && strstr(texts[0], "paramData") != NULL ? NULL : "the next call failed";
}

/* The first call in a thread other than the loading one may take the one block for the thread's exception record. */
static void* callInThread(void* result) {
    *(const char**)result = callTwice(1);
    return NULL;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        fputs("usage: exhausted_host LIBRARY GUARD\n", stderr);
        return 2;
    }
    void* symbol = symbolOf(argv[1], "dataProccess");
    memcpy(&process, &symbol, sizeof process);
    symbol = symbolOf(argv[2], "guarded");
    memcpy(&guarded, &symbol, sizeof guarded);

    const char* error = callTwice(0);
    pthread_t thread;
    if (error == NULL) {
        if (pthread_create(&thread, NULL, callInThread, &error) != 0) {
            return 2;
        }
        pthread_join(thread, NULL);
    }
    if (error != NULL) {
        fprintf(stderr, "%s\n", error);
    }
    return error != NULL;
}

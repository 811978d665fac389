/* A host in C, without the C++ runtime until it loads the library, runs out of memory in its first call, in its main
 * thread and in another one, and continues: exhausted_host LIBRARY GUARD
 * Its malloc fails on demand, also for the C++ runtime. */
#include <dlfcn.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "rt305_4/easy.h"

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

static int32_t (*process)(DataProcessRequest);
static int32_t (*guarded)(int32_t (*)(DataProcessRequest), const DataProcessRequest*);

static void find(const char* file, const char* name, void* function) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* const symbol = library != NULL ? dlsym(library, name) : NULL;
    if (symbol == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        exit(2);
    }
    memcpy(function, &symbol, sizeof symbol);
}

/* One call in which only some allocations succeed, then one with enough memory. NULL: both ended as they must. */
static const char* callTwice(long succeeding) {
    enum { n = 64 };
    double samples[n];
    for (int i = 0; i < n; ++i) {
        samples[i] = i % 8;
    }
    ChannelData channels[6];
    for (uint32_t i = 0; i < 6; ++i) {
        channels[i] = rt305_4_channel((int32_t)(i / 3), i % 3, samples, n, 1.0);
    }
    RT305_4_Texts texts;
    const DataProcessRequest request = rt305_4_request(channels, 6, &texts);
    limited = 1;
    left = succeeding;
    const int32_t first = guarded(process, &request);
    limited = 0;
    if (first != -1 || *texts.paramData != '\0') {
        return "the call without memory did not end with std::bad_alloc";
    }
    return guarded(process, &request) == 1 && *texts.paramData != '\0' ? NULL : "the next call failed";
}

/* The first call in a thread may allocate one block, for the thread's exception record. */
static void* callInThread(void* result) {
    *(const char**)result = callTwice(1);
    return NULL;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    find(argv[1], "dataProccess", &process);
    find(argv[2], "guarded", &guarded);
    const char* error = callTwice(0);
    pthread_t thread;
    if (error == NULL && pthread_create(&thread, NULL, callInThread, &error) == 0) {
        pthread_join(thread, NULL);
    }
    return error == NULL ? 0 : fprintf(stderr, "%s\n", error);
}

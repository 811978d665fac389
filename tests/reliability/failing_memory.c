/* Preloaded into a program, lets its allocations fail: allocation number RT305_FAIL_AT, counted from 1, and with
 * RT305_FAIL_FOR_GOOD all later ones. The dynamic loader's allocations before main are not counted. Writes the number
 * of allocations to the file descriptor RT305_COUNT_TO at the end. */
#define _GNU_SOURCE
#include <errno.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

static long failAt = -1, countTo = -1, forGood, count;

__attribute__((constructor)) static void readEnvironment(void) {
    const char* const at = getenv("RT305_FAIL_AT");
    const char* const to = getenv("RT305_COUNT_TO");
    failAt = at != NULL ? atol(at) : -1;
    countTo = to != NULL ? atol(to) : -1;
    forGood = getenv("RT305_FAIL_FOR_GOOD") != NULL;
    count = 0;
}

__attribute__((destructor)) static void writeCount(void) {
    if (countTo >= 0) {
        dprintf((int)countTo, "%ld\n", count);
    }
}

static int mayAllocate(void) {
    ++count;
    const int fails = failAt > 0 && (count == failAt || (forGood && count > failAt));
    if (fails) {
        errno = ENOMEM;
    }
    return !fails;
}
void* malloc(size_t size) {
    return mayAllocate() ? __libc_malloc(size) : NULL;
}
void* calloc(size_t number, size_t size) {
    return mayAllocate() ? __libc_calloc(number, size) : NULL;
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
int posix_memalign(void** block, size_t alignment, size_t size) {
    *block = memalign(alignment, size);
    return *block != NULL ? 0 : ENOMEM;
}

/* The allocation functions of the C library, each of which asks mayAllocate() first. For one file of a program or of a
 * preloaded library, which defines mayAllocate(). */
#ifndef RT305_4_TESTS_RELIABILITY_INTERPOSED_MALLOC_H
#define RT305_4_TESTS_RELIABILITY_INTERPOSED_MALLOC_H

#include <errno.h>
#include <stddef.h>

static int mayAllocate(void); /* whether this allocation succeeds */

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

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

#endif

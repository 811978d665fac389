/* Preloaded into a program, lets its allocations fail: allocation number RT305_FAIL_AT, counted from 1, and with
 * RT305_FAIL_FOR_GOOD all later ones. The dynamic loader's allocations before main are not counted. Writes the number
 * of allocations to the file descriptor RT305_COUNT_TO at the end. */
#define _GNU_SOURCE
#include <errno.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#include "interposed_malloc.h"

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

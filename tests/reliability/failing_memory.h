#ifndef RT305_4_TESTS_RELIABILITY_FAILING_MEMORY_H
#define RT305_4_TESTS_RELIABILITY_FAILING_MEMORY_H

/// Which allocations of the C++ runtime fail while it lives: the k-th (from 0), and all later ones when failing for
/// good. The program that links failing_memory.cpp has its operators new and delete replaced, libraries included.
class FailingMemory {
public:
    enum Mode { once, forGood };

    FailingMemory(long k, Mode mode);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory();

    /// Whether an allocation has failed.
    bool struck() const;
};

/// Number of blocks that were allocated and not yet freed.
long liveBlocks();

#endif

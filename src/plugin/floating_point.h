#ifndef RT305_4_PLUGIN_FLOATING_POINT_H
#define RT305_4_PLUGIN_FLOATING_POINT_H

#include <cfenv>

/// Masks the floating-point traps that the host may have enabled (feenableexcept), for a division by an amplitude of
/// zero is no error here. At the end the host has its traps and exception flags back. Rounding and denormals stay in
/// the host's mode.
class FloatingPointGuard {
public:
    FloatingPointGuard() { std::feholdexcept(&hosts_); }
    FloatingPointGuard(const FloatingPointGuard&) = delete;
    FloatingPointGuard& operator=(const FloatingPointGuard&) = delete;
    ~FloatingPointGuard() { std::fesetenv(&hosts_); }

private:
    std::fenv_t hosts_;
};

#endif

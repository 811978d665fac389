#include "extras/thd.h"

namespace coder {
namespace {

HarmonicResult measureOnce(samples x, const HarmonicSettings& settings) {
    return HarmonicDistortion(static_cast<int>(x.size()), settings).measure(x);
}

}  // namespace

HarmonicResult thd(samples x) {
    return measureOnce(x, thdSettings);
}

HarmonicResult b_thd(samples x) {
    return measureOnce(x, b_thdSettings);
}

}  // namespace coder

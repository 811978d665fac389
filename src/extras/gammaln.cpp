#include "extras/gammaln.h"

#include <array>
#include <cmath>

#include "toolkit/non_finite.h"
#include "toolkit/polynomial.h"

namespace coder {
namespace {

// Extended precision throughout: the terms of these sums partly cancel.

constexpr long double eulersConstant = 0.5772156649015328606065121L;

/// p(y) / q(y), both by rising powers.
struct Rational {
    std::array<long double, 8> p;
    std::array<long double, 9> q;

    long double operator()(long double y) const { return polynomial(p, y) / polynomial(q, y); }
};

constexpr Rational aroundOne{
    {7.225813979700288197698961e3L, 2.637748787624195437963534e4L, 3.848496228443793359990269e4L,
     2.855724635671635335736389e4L, 1.131967205903380828685045e4L, 2.290838373831346393026739e3L,
     2.018112620856775083915565e2L, 4.945235359296727046734888e0L},
    {8.785536302431013170870835e3L, 3.635127591501940507276287e4L, 6.161122180066002127833352e4L,
     5.499310206226157329794414e4L, 2.763987074403340708898585e4L, 7.738757056935398733233834e3L,
     1.113332393857199323513008e3L, 6.748212550303777196073036e1L, 1.0L}};

constexpr Rational aroundTwo{
    {3.074109054850539556250927e6L, 5.106661678927352456275255e6L, 3.338152967987029735917223e6L,
     1.088204769468828767498470e6L, 1.847932904445632425417223e5L, 1.550693864978364947665077e4L,
     5.424138599891070494101986e2L, 4.974607845568932035012064e0L},
    {9.533095591844353613395747e6L, 1.782736530353274213975932e7L, 1.346701454311101692290052e7L,
     5.267964117437946917577538e6L, 1.136705821321969608938755e6L, 1.331903827966074194402448e5L,
     7.765049321445005871323047e3L, 1.830328399370592604055942e2L, 1.0L}};

constexpr Rational aboveFour{
    {5.606251856223951465078242e11L, 4.926125793377430887588120e11L, 1.702665737765398868392998e11L,
     2.940378956634553899906876e10L, 2.663432449630976949898078e9L, 1.214755574045093227939592e8L,
     2.426813369486704502836312e6L, 1.474502166059939948905062e4L},
    {4.463158187419713286462081e11L, 3.417476345507377132798597e11L, 1.016803586272438228077304e11L,
     1.488613728678813811542398e10L, 1.120872109616147941376570e9L, 4.135599930241388052042842e7L,
     6.393885654300092398984238e5L, 2.690530175870899333379843e3L, -1.0L}};

/// Stirling's series in powers of 1/x^2, the higher coefficients fitted for x > 12.
constexpr std::array<long double, 7> stirling{8.333333333333333331554247e-2L,
                                              -2.777777777777681622553e-3L,
                                              7.93650793500350248e-4L,
                                              -5.952379913043012e-4L,
                                              8.4171387781295e-4L,
                                              -1.910444077728e-3L,
                                              5.7083835261e-3L};

/// (x - 1)! for x = 1 ... 100, exact up to 22!.
constexpr auto factorials = [] {
    std::array<double, 100> f{1.0};
    for (std::size_t i = 1; i < f.size(); ++i) {
        f[i] = f[i - 1] * static_cast<double>(i);
    }
    return f;
}();

/// ln Gamma(1 + y)
long double gammalnFromOne(long double y) {
    return y * (y * aroundOne(y) - eulersConstant);
}

/// ln Gamma(2 + y)
long double gammalnFromTwo(long double y) {
    return y * (y * aroundTwo(y) + (1.0L - eulersConstant));
}

/// ln Gamma(4 + y)
long double gammalnFromFour(long double y) {
    constexpr long double logSix = 1.791759469228055000812477L;
    return y * aboveFour(y) + logSix;
}

long double gammalnForLarge(long double x) {
    constexpr long double halfLogTwoPi = 0.9189385332046727417803297L;
    const long double logarithm = std::log(x);
    return polynomial(stirling, 1.0L / (x * x)) / x + halfLogTwoPi - 0.5L * logarithm + x * (logarithm - 1.0L);
}

}  // namespace

double gammaln(double x) {
    if (std::isnan(x) || x == rtInf) {
        return x;
    }
    if (x <= 2.220446049250313e-16) {
        return -std::log(x);
    }
    const long double exact = x;
    if (x <= 0.5) {
        return static_cast<double>(gammalnFromOne(exact) - std::log(exact));
    }
    if (x <= 0.6796875) {
        return static_cast<double>(gammalnFromTwo(exact - 1.0L) - std::log(exact));
    }
    if (x <= 100.0 && x == std::floor(x)) {
        return std::log(factorials[static_cast<std::size_t>(x) - 1]);
    }
    if (x <= 1.5) {
        return static_cast<double>(gammalnFromOne(exact - 1.0L));
    }
    if (x <= 4.0) {
        return static_cast<double>(gammalnFromTwo(exact - 2.0L));
    }
    if (x <= 12.0) {
        return static_cast<double>(gammalnFromFour(exact - 4.0L));
    }
    return static_cast<double>(gammalnForLarge(exact));
}

}  // namespace coder

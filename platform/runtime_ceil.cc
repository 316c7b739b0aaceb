// The one function of the C math library that the libraries' copy of the
// C++ runtime calls: the hash tables' growth rule rounds a bucket count up
// with ceil. Defined here, inside each optimised library and hidden, it
// saves every CGI request loading and relocating libm for that one call.
// It gives libm's result for every double (signed zeros, halves, values of
// 2^52 and above, infinities and NaN among them).

extern "C" __attribute__((visibility("hidden"))) double ceil(double x);

extern "C" double ceil(double x) {
    // From 2^52 up every double is whole; infinities and NaN come back as they are.
    if (!(__builtin_fabs(x) < 0x1p52)) return x;
    const double truncated = static_cast<double>(static_cast<long long>(x));
    const double up = truncated < x ? truncated + 1.0 : truncated;
    // ceil(-0.5) is -0.0: the result keeps the sign of x.
    return __builtin_copysign(up, x);
}

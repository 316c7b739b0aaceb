// Calling one conversion handler the way the dispatcher does.
#ifndef KX_TESTS_CONVERT_SUPPORT_H
#define KX_TESTS_CONVERT_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kx_convert.h"

namespace kx::test {

// The handler's result for a writable copy of argument and for value (NULL
// when value is NULL); "<null>" for a null result. The argument must come
// back as it went in, and a handler's own text is freed.
inline std::string Convert(KonvertierungsFunktion handler, const std::string &argument,
                           const char *value, int cycleIndex = -1) {
    std::string writable = argument;
    std::string valueCopy = value ? value : "";
    char *passed = value ? valueCopy.data() : nullptr;
    char *result = handler(writable.data(), passed, cycleIndex);
    EXPECT_EQ(writable, argument) << "the argument is left as it was";
    if (value != nullptr) {
        EXPECT_EQ(valueCopy, value) << "the value is left as it was";
    }
    std::string printed = result ? result : "<null>";
    if (result != passed) std::free(result);
    return printed;
}

// One handler call and the text it must give.
struct HandlerCase {
    KonvertierungsFunktion handler;
    std::string argument;
    const char *value;
    std::string result;
};

inline void ExpectAll(const std::vector<HandlerCase> &cases) {
    for (const HandlerCase &c : cases)
        EXPECT_EQ(Convert(c.handler, c.argument, c.value), c.result)
            << "argument \"" << c.argument << "\" value \"" << (c.value ? c.value : "<null>") << '"';
}

}  // namespace kx::test

#endif

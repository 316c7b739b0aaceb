// Regular-expression matching with POSIX extended expressions.
#include <regex.h>


#include "companion/libparser.h"

namespace parser {
namespace {

// A compiled expression, released with its owner.
class Expression {
public:
    explicit Expression(const char *source) : ok_(regcomp(&regex_, source, REG_EXTENDED) == 0) {}
    ~Expression() {
        if (ok_) regfree(&regex_);
    }
    Expression(const Expression &) = delete;
    Expression &operator=(const Expression &) = delete;

    // Length of the match that starts at the beginning of text, or -1.
    int MatchAtStart(const char *text) const {
        regmatch_t match;
        if (!ok_ || regexec(&regex_, text, 1, &match, 0) != 0 || match.rm_so != 0) return -1;
        return static_cast<int>(match.rm_eo);
    }

private:
    regex_t regex_;
    bool ok_;
};

}  // namespace
}  // namespace parser

extern "C" int Wertuebereinstimmung(const char *text, const char *expression) {
    if (text == nullptr || expression == nullptr) return -1;
    const parser::Expression compiled(expression);
    return compiled.MatchAtStart(text);
}

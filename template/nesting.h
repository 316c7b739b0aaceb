// Bounds how deeply the page engine re-enters itself: MatchIt runs the
// processor on texts found inside placeholders, and controls nest. A text
// nested deeper than kMaxNesting evaluations is left as it stands, so that
// neither a template nor a value can exhaust the stack.
#ifndef KX_TEMPLATE_NESTING_H
#define KX_TEMPLATE_NESTING_H

namespace kx::tmpl {

inline constexpr int kMaxNesting = 48;

class NestingGuard {
public:
    NestingGuard() { ++Depth(); }
    ~NestingGuard() { --Depth(); }
    NestingGuard(const NestingGuard &) = delete;
    NestingGuard &operator=(const NestingGuard &) = delete;
    bool TooDeep() const { return Depth() > kMaxNesting; }

private:
    static int &Depth() {
        thread_local int depth = 0;
        return depth;
    }
};

}  // namespace kx::tmpl

#endif

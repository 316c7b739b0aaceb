// Bounds how deeply and how much the page engine re-enters itself: MatchIt
// runs the processor on texts found inside placeholders, and controls nest.
// A text nested deeper than kMaxNesting evaluations, or met when the line's
// budget of evaluations is spent, is left as it stands, so that neither a
// template nor a value can exhaust the stack or hold the process.
#ifndef KX_TEMPLATE_NESTING_H
#define KX_TEMPLATE_NESTING_H

#include <cstddef>

namespace kx::tmpl {

inline constexpr int kMaxNesting = 48;

// The budget of evaluations of one line of a page (a replayed CYCLE line
// counts as a line): kLineBudget plus one per kBytesPerEvaluation bytes of
// the line. Nested selections evaluate their inner texts again at each
// level, which without a budget costs time exponential in the depth; with
// it, the work of a page grows with its lines and bytes. A placeholder with
// a control or a selection takes a few evaluations and at least a dozen
// bytes, so real pages stay far inside the budget.
inline constexpr long kLineBudget = 128;
inline constexpr long kBytesPerEvaluation = 2;

class NestingGuard {
public:
    NestingGuard() {
        // An outermost call starts with the budget of an empty line.
        if (Depth()++ == 0) Budget() = kLineBudget;
        else --Budget();
    }
    ~NestingGuard() { --Depth(); }
    NestingGuard(const NestingGuard &) = delete;
    NestingGuard &operator=(const NestingGuard &) = delete;
    bool TooDeep() const { return Depth() > kMaxNesting || Budget() < 0; }

    // A line of the outermost call begins: its evaluations get a new budget.
    static void StartLine(std::size_t bytes) {
        if (Depth() == 1) Budget() = kLineBudget + static_cast<long>(bytes) / kBytesPerEvaluation;
    }

private:
    static int &Depth() {
        thread_local int depth = 0;
        return depth;
    }
    static long &Budget() {
        thread_local long budget = 0;
        return budget;
    }
};

}  // namespace kx::tmpl

#endif

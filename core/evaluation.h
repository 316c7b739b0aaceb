// The one way back from the conversions and the page actions into the page
// engine: MatchIt evaluates the placeholders ("{") inside an argument text by
// running the processor in string mode over it. Every re-entry goes through
// Evaluation, so the recursion the engine allows (and its nesting limit) is
// found in one place.
#ifndef KX_CORE_EVALUATION_H
#define KX_CORE_EVALUATION_H

#include <string>
#include <string_view>

#include "core/text.h"

namespace kx::core {

// MatchIt over a copy of text: the result is owned here.
class Evaluation {
public:
    // encode: characters to percent-encode in the result (nullptr: none).
    Evaluation(std::string_view text, int cycleIndex, const char *encode = nullptr);
    Evaluation(const char *text, int cycleIndex, const char *encode = nullptr)
        : Evaluation(std::string_view(text), cycleIndex, encode) {}
    // The same over a text the caller gives up, which needs no copy.
    Evaluation(std::string &&text, int cycleIndex, const char *encode = nullptr);

    // True when MatchIt replaced something (or ran out of memory).
    bool Changed() const { return changed_; }
    // True when memory ran out; Text() is then empty.
    bool Failed() const { return changed_ && !result_; }
    // The evaluated text; the text itself when nothing was replaced.
    std::string_view Text() const { return changed_ ? result_.View() : std::string_view(operand_); }
    // Text() for a C interface: both texts it can be end with a NUL, so no
    // copy is needed to pass it on.
    const char *CText() const {
        if (!changed_) return operand_.c_str();
        return result_ ? result_.Get() : "";
    }
    // The evaluated text as a heap text for a caller; nullptr when memory runs out.
    char *Release();

private:
    void Run(int cycleIndex, const char *encode);

    std::string operand_;
    HeapText result_;
    bool changed_ = false;
};

// The evaluated text as a string (empty when memory runs out).
std::string Evaluated(std::string_view text, int cycleIndex, const char *encode = nullptr);

}  // namespace kx::core

#endif

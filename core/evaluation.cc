#include "core/evaluation.h"

#include <utility>

#include "kx_template.h"

namespace kx::core {

Evaluation::Evaluation(std::string_view text, int cycleIndex, const char *encode) : operand_(text) {
    Run(cycleIndex, encode);
}

Evaluation::Evaluation(std::string &&text, int cycleIndex, const char *encode) : operand_(std::move(text)) {
    Run(cycleIndex, encode);
}

void Evaluation::Run(int cycleIndex, const char *encode) {
    char *result = MatchIt(operand_.c_str(), "{", cycleIndex, encode);
    changed_ = result != operand_.c_str();
    if (changed_) result_.Reset(result);
}

char *Evaluation::Release() { return changed_ ? result_.Release() : HeapCopy(operand_); }

std::string Evaluated(std::string_view text, int cycleIndex, const char *encode) {
    return std::string(Evaluation(text, cycleIndex, encode).Text());
}

}  // namespace kx::core

// The process-wide output stream and directory separator, the two integers
// kept for the calling programs, and the helpers that read them.
#include <cstdio>

#include "core/page_output.h"
#include "input/request_internal.h"

extern "C" {

FILE *_Utilsfpout = nullptr;
const char *Verzeichnistrenner = "/";
int _UtilsFirst = 0;
int _UtilsWhat = 0;

}  // extern "C"

namespace kx::request {

// What the running page has buffered goes first.
std::FILE *PageStream() {
    core::FlushPageOutput();
    return _Utilsfpout != nullptr ? _Utilsfpout : stdout;
}

std::string_view Separator() {
    // A program that cleared the separator still gets usable paths.
    if (Verzeichnistrenner == nullptr || *Verzeichnistrenner == '\0') return "/";
    return Verzeichnistrenner;
}

char SeparatorCharacter() { return Separator().front(); }

}  // namespace kx::request

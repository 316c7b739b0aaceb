// What std::terminate calls inside each optimised library's copy of the C++
// runtime. The runtime's default handler names the pending exception's type
// in readable form, which links the runtime's whole symbol demangler into
// every library: tens of kilobytes of code and some hundred relocated table
// entries that each CGI request maps and relocates at start and never uses.
// The libraries let no exception leave their C interface, so reaching this
// handler is a bug: it says so on standard error and aborts, as the default
// handler does after its message.
#include <unistd.h>

#include <cstdlib>
#include <exception>

namespace {

[[noreturn]] void TerminateQuietly() {
    static const char message[] = "terminate called: an exception was not caught\n";
    (void)!write(2, message, sizeof message - 1);
    std::abort();
}

}  // namespace

// The runtime's own variable, defined here instead of taken from its archive
// (which would bring the demangler along with its default value).
namespace __cxxabiv1 {
__attribute__((visibility("hidden"))) std::terminate_handler __terminate_handler = TerminateQuietly;
}

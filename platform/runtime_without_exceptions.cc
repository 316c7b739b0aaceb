// The pieces of the C++ runtime that a library built without exception
// support still calls, for the optimised builds, which carry the runtime
// inside each library. The standard containers call them when memory runs
// out or a length is impossible; the runtime's own versions throw, and so
// link its whole exception machinery into the library: the unwinder, the
// personality routine, a thread-local block and an emergency buffer of
// 72 KB that every process allocates at start. A library whose interface
// is plain C functions has nobody to throw to (an exception leaving such a
// function ends the process anyway), so here these end the process at
// once, with a message on standard error, as the runtime's terminate does.
#include <unistd.h>

#include <cstdlib>
#include <new>

namespace {

[[noreturn]] void Abort(const char *what) {
    static const char prefix[] = "terminated: ";
    (void)!write(2, prefix, sizeof prefix - 1);
    (void)!write(2, what, __builtin_strlen(what));
    (void)!write(2, "\n", 1);
    std::abort();
}

}  // namespace

namespace std {
[[noreturn]] void __throw_bad_alloc() { Abort("out of memory"); }
[[noreturn]] void __throw_length_error(const char *what) { Abort(what); }
[[noreturn]] void __throw_logic_error(const char *what) { Abort(what); }
[[noreturn]] void __throw_out_of_range_fmt(const char *what, ...) { Abort(what); }
}  // namespace std

void *operator new(std::size_t size) {
    if (void *block = std::malloc(size != 0 ? size : 1)) return block;
    std::__throw_bad_alloc();
}

void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }

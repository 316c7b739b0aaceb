// Paths that pages hand to the file and program conversions: how they are
// read from the value and the argument, and the confinement that keeps them
// inside the application's tree.
#ifndef KX_CONVERT_PATHS_H
#define KX_CONVERT_PATHS_H

#include <optional>
#include <string>
#include <string_view>

namespace kx::convert {

// The value's text decoded (ServerDecoding); nullopt for a NULL value and for
// a text holding an encoded NUL, which would silently cut the path short.
std::optional<std::string> DecodedValue(const char *value);

// An argument text evaluated (MatchIt with "{" and encode), or decoded when
// it holds no placeholder; nullopt when decoding meets an encoded NUL.
std::optional<std::string> EvaluatedOrDecoded(std::string_view argument, int cycleIndex,
                                              const char *encode = nullptr);

// The absolute path that path names, when it lies inside the working
// directory (the application's tree): no ".." component, and its directory
// and (when it is a symbolic link) its target resolve inside the tree.
// nullopt for an empty text, a refused path or a missing directory.
std::optional<std::string> Confined(std::string_view path);

// DecodedValue then Confined.
std::optional<std::string> ConfinedValue(const char *value);

}  // namespace kx::convert

#endif

// "_suboid": a part of a dotted OID, by components or character offsets, or
// from the end of the object that the MIB knows.
#include <algorithm>
#include <optional>
#include <string>

#include "companion/libKXsnmp_names.h"
#include "convert/convert_internal.h"
#include "kx_convert.h"

namespace kx::convert {
namespace {

std::size_t Clamp(int64_t offset, std::size_t size) {
    return offset < 0 ? 0 : std::min(static_cast<std::size_t>(offset), size);
}

// Offset of component n (from 1), a leading "." not counted; the OID's
// length when it has fewer components.
std::size_t ComponentStart(std::string_view oid, int64_t n) {
    std::size_t at = !oid.empty() && oid[0] == '.' ? 1 : 0;
    for (int64_t component = 1; component < n; ++component) {
        at = oid.find('.', at);
        if (at == std::string_view::npos) return oid.size();
        ++at;
    }
    return at;
}

// "i" and a number is an offset; a plain number a component.
std::size_t StartOffset(std::string_view oid, std::string_view bound) {
    if (!bound.empty() && bound[0] == 'i') return Clamp(ReadInt(bound.substr(1)), oid.size());
    return ComponentStart(oid, ReadInt(bound));
}

// Where an end text ends the part that begins at start; nothing when the
// part is empty.
std::optional<std::size_t> EndOffset(std::string_view oid, std::size_t start, std::string_view bound) {
    if (bound.empty()) return oid.size();
    if (bound[0] == 'i') {
        const int64_t end = ReadInt(bound.substr(1));
        if (end < 0) return std::nullopt;
        return Clamp(end, oid.size());
    }
    const int64_t components = ReadInt(bound);
    if (components < 1) return std::nullopt;
    std::size_t at = start < oid.size() && oid[start] == '.' ? start + 1 : start;
    for (int64_t i = 0; i < components; ++i) {
        at = oid.find('.', at);
        if (at == std::string_view::npos) return oid.size();
        if (i + 1 < components) ++at;
    }
    return at;
}

// The length of the OID of the object the MIB knows the value under.
std::optional<std::size_t> KnownObjectEnd(const std::string &oid) {
    KXMib *mib = nullptr;
    char *mibName = KXGetMibname(&mib, oid.c_str());
    if (mibName == nullptr) {
        KXFreeResources(mib);
        return std::nullopt;
    }
    char *object = nullptr;
    char *objectOid = nullptr;
    std::optional<std::size_t> end;
    if (KXGetName(mib, oid.c_str(), &object, &objectOid, 0) == 0 && objectOid != nullptr)
        end = Clamp(static_cast<int64_t>(std::string_view{objectOid}.size()), oid.size());
    KXFreeResources(objectOid);
    KXFreeResources(object);
    KXFreeResources(mibName);
    KXFreeResources(mib);
    return end;
}

char *SubOid(std::string_view argument, std::string_view value) {
    const bool fromMib = argument.empty() || argument.starts_with(",,");
    std::size_t start = 0;
    std::string_view endText;
    if (fromMib) {
        const std::string oid{value};
        std::optional<std::size_t> known = KnownObjectEnd(oid);
        if (!known) return HeapCopy(value);
        start = *known;
        endText = argument.substr(std::min<std::size_t>(2, argument.size()));
    } else {
        const Cut parts = CutAt(argument.substr(1), ',');
        start = StartOffset(value, parts.head);
        endText = parts.rest;
    }
    std::optional<std::size_t> end = EndOffset(value, start, endText);
    if (!end || *end <= start) return HeapCopy(kNotAvailable);
    return HeapCopy(value.substr(start, *end - start));
}

}  // namespace
}  // namespace kx::convert

extern "C" char *ConvertToSubOID(char *argument, char *value, int /*cycleIndex*/) {
    return kx::convert::SubOid(kx::convert::ValueText(argument), kx::convert::ValueText(value));
}

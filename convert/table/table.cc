// The conversion table: one row a conversion, in the order in which names
// are tried. A row's length is derived from its name.
#include <cstddef>

#include "convert/convert_internal.h"
#include "kx_convert.h"

namespace kx::convert {
namespace {

template <std::size_t N>
constexpr KonvertierungsEintrag Row(const char (&name)[N], KonvertierungsFunktion handler) {
    // The dispatch finds rows by the character after the "_".
    static_assert(N >= 3, "a conversion name is \"_\" and at least one more character");
    return {name, static_cast<int>(N - 1), handler};
}

}  // namespace
}  // namespace kx::convert

using kx::convert::Row;

extern "C" {

const KonvertierungsEintrag ConvertTable[] = {
    Row("_mb", ConvertToMB),
    Row("_hextime", ConvertHexTime),
    Row("_hex", ConvertToHex),
    Row("_ctime", ConvertToCtime),
    Row("_count", ConvertToCount),
    Row("_bitfield,", ConvertBitFieldToText),
    Row("_div,", ConvertByDivide),
    Row("_substring,", ConvertToSubstring),
    Row("_strstr,", ConvertToStringString),
    Row("_format,", ConvertByFormat),
    Row("_plus,", ConvertByPlus),
    Row("_minus,", ConvertByMinus),
    Row("_suboid", ConvertToSubOID),
    Row("_after,", ConvertToStringAfter),
    Row("_uptime", ConvertUpTime),
    Row("_+,", ConvertByPlus),
    Row("_-,", ConvertByMinus),
    Row("_multiply,", ConvertByMultiply),
    Row("_*,", ConvertByMultiply),
    Row("_minusr,", ConvertByMinusReversed),
    Row("_-r,", ConvertByMinusReversed),
    Row("_valueindex,", ConvertToValueIndex),
    Row("_strchange,", ConvertToStringChange),
    Row("_strreplace,", ConvertToStringReplace),
    Row("_cputime", ConvertCPUTime),
    Row("_processtime,", ConvertProcessTime),
    Row("_before,", ConvertToStringBefore),
    Row("_call,", ConvertByCall),
    Row("_callp,", ConvertByCallBasic),
    Row("_gmtime", ConvertToGmtime),
    Row("_localtime", ConvertToLocaltime),
    Row("_rbefore,", ConvertToStringRBefore),
    Row("_tolower", ConvertToLower),
    Row("_toupper", ConvertToUpper),
    Row("_fremove", ConvertFileRemove),
    Row("_mktemp", ConvertCreateTemplateFile),
    Row("_mod,", ConvertByModulo),
    Row("_createdir", ConvertCreateDir),
    Row("_listdir", ConvertListDir),
    Row("_fcreate", ConvertCreateFile),
    Row("_frename,", ConvertRenameFile),
    Row("_fexists,", ConvertFileRegexpExists),
    Row("_fexists", ConvertFileExists),
    Row("_fcopy,", ConvertFileCopy),
    Row("_time", ConvertCreateTime),
    Row("_dividelist,", ConvertDivideList),
    Row("_ping", ConvertPing),
    Row("_hostname", ConvertToHostname),
    Row("_ipaddress", ConvertToIPAddress),
    Row("_iniread,", ConvertToIniRead),
    Row("_fwrite,", ConvertWriteFile),
};

const int ConvertTableCount = sizeof ConvertTable / sizeof ConvertTable[0];

}  // extern "C"

static_assert(sizeof ConvertTable / sizeof ConvertTable[0] == kx::convert::kConvertTableSize);

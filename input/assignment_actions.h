// The page actions that WertzuweisungEingabe carries out once per list.
#ifndef KX_INPUT_ASSIGNMENT_ACTIONS_H
#define KX_INPUT_ASSIGNMENT_ACTIONS_H

#include <string>
#include <string_view>

#include "kx_input.h"

namespace kx::input {

// False when the list has an entry "PLSet" already (its actions were done);
// otherwise declares it with the default "yes" and returns true.
bool DeclarePLSet(int *pCount, EingabeElement **pList, std::string_view divider);

// "MibPath": hands its value (or default) to the MIB library.
void ApplyMibPath(EingabeElement *list, int count);

// "ParameterList": declares and sets the entries of its name--value pairs,
// then keeps the list URL-encoded for the next page.
void ApplyParameterList(int *pCount, EingabeElement **pList, std::string_view divider);

// The names "SetIniValue" may write, from the default of the entry
// "SetIniValueNames" (values separated by "~"); taken before the request's
// own actions can change anything. Without that entry every name may be
// written.
struct WritableNames {
    bool restricted = false;
    std::string names;  // "~" + each name + "~"
    bool Allows(std::string_view name) const;
};
WritableNames WritableNamesOf(const EingabeElement *list, int count);

// "SetIniValue": writes the value of the entry it names into the definition
// file as that entry's default. A save that does not happen is reported in
// the entry "ErrorText" when the list has one.
void ApplySetIniValue(EingabeElement *list, int count, const WritableNames &writable);

// ChangeFileContent under a lock on the file, with the reason of a failure:
// 0 when the file was written, otherwise an errno value (ESRCH: the key or a
// stop byte after it is missing; EWOULDBLOCK: the lock did not come).
int ChangeFileContentBecause(const char *path, const char *key, const char *text, const char *stopSet,
                             int stopSetLength);

}  // namespace kx::input

#endif

// The page actions that WertzuweisungEingabe carries out once per list.
#ifndef KX_INPUT_ASSIGNMENT_ACTIONS_H
#define KX_INPUT_ASSIGNMENT_ACTIONS_H

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

// "SetIniValue": writes the value of the entry it names into the definition
// file as that entry's default.
void ApplySetIniValue(EingabeElement *list, int count);

}  // namespace kx::input

#endif

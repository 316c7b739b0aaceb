/* The exported headers are C headers: this file is compiled as C. */
#include "kx_input.h"
#include "kx_template.h"
#include "kx_list.h"
#include "kx_convert.h"
#include "companion/libKXUtils.h"
#include "companion/libparser.h"
#include "companion/libKXsnmp.h"
#include "companion/libKXsnmp_names.h"

/* A C caller sees the records as plain structs. */
int kx_c_entry_size(void) { return (int)sizeof(EingabeElement); }

/*
 * libForwarding: the console's forwarding service, here its popup alarm. A
 * raised popup is one line appended to the popup queue "./AlarmPopups" in
 * the working directory (the console's CGI directory); the console's pages
 * show the queue as a banner until an operator acknowledges it. The format
 * is described in docs/formats.md.
 */
#ifndef KX_COMPANION_LIBFORWARDING_H
#define KX_COMPANION_LIBFORWARDING_H

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* The popup queue, relative to the working directory. */
#define ALARM_POPUP_QUEUE "AlarmPopups"

/* Results below 0. */
#define ALARM_FWD_BAD_ARGUMENT (-1)  /* message NULL */
#define ALARM_FWD_UNWRITABLE (-2)    /* the queue cannot be opened, locked or written */

/* Raises a popup alarm with message for target (a station name; NULL or
 * empty: every station): appends one line to the popup queue in one write
 * under an exclusive lock, so that popups raised at the same time by several
 * processes stay whole lines. kind, flags and reserved are 0. Returns 0 or an
 * ALARM_FWD_ code. */
KX_API int AlarmFwdPopup(int kind, const char *target, const char *message, int flags, int reserved);

KX_EXTERN_C_END

#endif

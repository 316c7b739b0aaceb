/* Common declarations of the exported interface of libKXSnmpTrapDll. */
#ifndef KX_API_H
#define KX_API_H

#ifdef __cplusplus
#define KX_EXTERN_C_BEGIN extern "C" {
#define KX_EXTERN_C_END }
#else
#define KX_EXTERN_C_BEGIN
#define KX_EXTERN_C_END
#endif

/* Marks a name that leaves the shared library; everything else stays inside. */
#define KX_API __attribute__((visibility("default")))

#endif

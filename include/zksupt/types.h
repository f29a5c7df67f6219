/* Basic types and the export marker shared by every libzksupt header. */
#ifndef ZKSUPT_TYPES_H
#define ZKSUPT_TYPES_H

#include <stddef.h>
#include <stdint.h>

/* A UCS-2 code unit in host byte order; UCS-2 strings end with a zero unit. */
typedef uint16_t ucs2;

#if defined(ZKSUPT_BUILDING) && defined(__GNUC__)
#define ZKSUPT_API __attribute__((visibility("default")))
#else
#define ZKSUPT_API
#endif

#ifdef __cplusplus
#define ZKSUPT_BEGIN_DECLS extern "C" {
#define ZKSUPT_END_DECLS }
#define ZKSUPT_NOEXCEPT noexcept
#else
#define ZKSUPT_BEGIN_DECLS
#define ZKSUPT_END_DECLS
#define ZKSUPT_NOEXCEPT
#endif

#endif /* ZKSUPT_TYPES_H */

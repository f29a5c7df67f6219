/**
 * @file
 * Basic types and the markers shared by every libzksupt header. The headers
 * compile as C89 and later and as C++98 and later; in C++ their declarations
 * have C linkage and promise not to throw.
 */
#ifndef ZKSUPT_TYPES_H
#define ZKSUPT_TYPES_H

#include <stddef.h>
#include <stdint.h>

/** A UCS-2 code unit in host byte order; UCS-2 strings end with a zero unit. */
typedef uint16_t ucs2;

#if defined(ZKSUPT_BUILDING) && defined(__GNUC__)
#define ZKSUPT_API __attribute__((visibility("default")))
#else
/** Marks a function the shared library exports (visible while the library itself is built). */
#define ZKSUPT_API
#endif

#ifdef __cplusplus
#define ZKSUPT_BEGIN_DECLS extern "C" {
#define ZKSUPT_END_DECLS }
#if __cplusplus >= 201103L
#define ZKSUPT_NOEXCEPT noexcept
#else
#define ZKSUPT_NOEXCEPT throw()
#endif
#define ZKSUPT_INLINE inline
#else
/** Opens the declarations of a header (C linkage in C++). */
#define ZKSUPT_BEGIN_DECLS
/** Closes what ZKSUPT_BEGIN_DECLS opened. */
#define ZKSUPT_END_DECLS
/** Follows every declaration: no function of the library throws (noexcept in C++11, throw() before it). */
#define ZKSUPT_NOEXCEPT
#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 199901L
#define ZKSUPT_INLINE inline
#elif defined(__GNUC__)
#define ZKSUPT_INLINE __inline__
#else
/** The inline keyword of the compiling language (none in strict C89 without a GNU compiler). */
#define ZKSUPT_INLINE
#endif
#endif

#endif /* ZKSUPT_TYPES_H */

/**
 * @file
 * The library's version, known at compile time.
 *
 * The package version is MAJOR.MINOR.PATCH and its major number is the
 * SONAME's (libzksupt.so.9) and the symbol version's (ZKSUPT_9), while
 * SUPTGetMajorVersion(), SUPTGetMinorVersion() and SUPTGetRevision() report
 * the suite's interface level, which stays 1.1.1 whatever the package version.
 */
#ifndef ZKSUPT_VERSION_H
#define ZKSUPT_VERSION_H

/** The major number: the SONAME's and the symbol version's. */
#define ZKSUPT_VERSION_MAJOR 9
/** The minor number: grows with additions that keep the ABI. */
#define ZKSUPT_VERSION_MINOR 1
/** The patch number: grows with fixes. */
#define ZKSUPT_VERSION_PATCH 1
/** The package version as text. */
#define ZKSUPT_VERSION_STRING "9.1.1"

/** One number that grows with every release, for comparisons in \#if. */
#define ZKSUPT_VERSION_ENCODE(major, minor, patch) (((major)*1000000L) + ((minor)*1000L) + (patch))
/** The headers' version as one number. */
#define ZKSUPT_VERSION ZKSUPT_VERSION_ENCODE(ZKSUPT_VERSION_MAJOR, ZKSUPT_VERSION_MINOR, ZKSUPT_VERSION_PATCH)

/** True when the headers are of version major.minor.patch or later. */
#define ZKSUPT_VERSION_CHECK(major, minor, patch) (ZKSUPT_VERSION >= ZKSUPT_VERSION_ENCODE(major, minor, patch))

#endif /* ZKSUPT_VERSION_H */

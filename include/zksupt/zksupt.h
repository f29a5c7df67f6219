/**
 * @file
 * libzksupt: every public header of the library.
 */
#ifndef ZKSUPT_ZKSUPT_H
#define ZKSUPT_ZKSUPT_H

#include <zksupt/version.h>
#include <zksupt/types.h>
#include <zksupt/status.h>
#include <zksupt/frame.h>
#include <zksupt/text.h>
#include <zksupt/format.h>
#include <zksupt/containers.h>
#include <zksupt/digest.h>
#include <zksupt/file.h>
#include <zksupt/sdo.h>
#include <zksupt/xlt.h>
#include <zksupt/net.h>
#include <zksupt/config.h>
#include <zksupt/xml.h>
#include <zksupt/ipc.h>
#include <zksupt/os.h>
#include <zksupt/log.h>
#include <zksupt/constants.h>

#endif /* ZKSUPT_ZKSUPT_H */

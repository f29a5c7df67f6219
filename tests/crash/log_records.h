// The crash driver's view of the event logs: whether a log a killed writer
// left behind holds whole records, and whether the next append landed whole.
#pragma once

#include <string>

#include <gtest/gtest.h>

namespace zksupt::test {

// Before the survivor's append (afterAppend false): a missing or empty log,
// or one that starts with its header and holds whole records, but perhaps
// the last, besides the knownBroken records earlier checks found (a kill in
// the middle of a write leaves one). After it: the log ends with the
// survivor's whole record; the XML log's tags pair up, and with thorough
// xmllint (where installed) finds it well-formed, which takes far longer.
testing::AssertionResult textLogIsWhole(const std::string &path, bool afterAppend, bool thorough,
                                        std::size_t &knownBroken);
testing::AssertionResult xmlLogIsWhole(const std::string &path, bool afterAppend, bool thorough,
                                       std::size_t &knownBroken);

}  // namespace zksupt::test

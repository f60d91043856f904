// What the sedutil-compatible tool prints, as pure functions of what the
// drive said: the scan line, the query report, the range listing and the
// failure lines. Text, blanks and odd spots are those of sedutil 1.20.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ata.h"
#include "discovery.h"
#include "method.h"
#include "tables.h"

namespace veltrak_opal::sedutil {

// A drive's fixed-width identity field as printed: padded to width, ended
// early by a NUL as a C string would be.
std::string Field(const std::string& text, size_t width);

// One scan line: the path in 10 columns, the SSC flags (" 12E " or " No  ")
// and the model and firmware fields, a blank between them even when there
// is no identity.
std::string ScanLine(const std::string& path, const opal::Discovery* discovery, const opal::Identity* identity);

// The --query report from its first (empty) line on, without the
// Properties block.
std::string QueryReport(const std::string& path, const opal::Identity& identity, const opal::Discovery& discovery);
// The Properties block that ends the --query report.
std::string PropertiesBlock(const opal::Properties& tper, const opal::Properties& host);

// The two lines of one range in --listLockingRanges.
std::vector<std::string> RangeLines(unsigned range, const opal::RangeInfo& info);

// The lines of a refused StartSession, from the status line to
// "EndSession Failed". status < 0: no method status; why says what failed.
std::vector<std::string> SessionFailureLines(int status, const std::string& why);
// The line for a method the drive refused, or for a failure without status.
std::string CallFailureLine(int status, const std::string& why);

// Exit status for a failure: the method status, else sedutil's code for a
// response without one.
int ExitCode(int status);

// Exit statuses of sedutil's own.
constexpr int kGlobalRangeUnchangeable = 0x81;
constexpr int kBadUserId = 0x83;
constexpr int kNoImageFile = 0x84;
constexpr int kWrongLifeCycle = 0x85;
constexpr int kBadDiskOrOption = 0x88;
constexpr int kNoMethodStatus = 0x89;
constexpr int kNoLockingInfo = 0x8A;

}  // namespace veltrak_opal::sedutil

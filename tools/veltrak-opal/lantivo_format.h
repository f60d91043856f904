// The companion tool's pure parts: its lines, and the access expressions it
// writes, as functions of what the drive holds.
#pragma once

#include <string>
#include <vector>

#include "ace.h"

namespace veltrak_opal::lantivo {

// An expression in postfix words: "Admins User1 OR".
std::string Describe(const opal::BooleanExpr& expr);

// The read-lock and write-lock expression after granting users: the Admins
// class first, then the authorities already listed, then the new ones, each
// once, joined by OR.
opal::BooleanExpr Granted(const std::vector<opal::Uid>& listed, const std::vector<opal::Uid>& added);

// "Admin1 User1 User3 can access Locking Range 1": Admin1 first, then every
// other authority either expression names, in UID order, each once.
std::string AccessLine(unsigned range, const opal::BooleanExpr& readLock, const opal::BooleanExpr& writeLock);

// "User3 : Enabled".
std::string UserStatusLine(unsigned user, bool enabled);

}  // namespace veltrak_opal::lantivo

// Access control: which ACEs guard a method on an object (the ACL), which
// columns each opens, and whether the authorities of a session satisfy an
// ACE's BooleanExpr. Every access decision of the emulated drive is made
// here, column by column.
#pragma once

#include <vector>

#include "drive.h"

namespace opalsim {

// Local ACEs of the Admin SP: their UIDs are this emulator's own numbers.
constexpr Uid kAceCpinSidGetNoPin = 0x0000000800008C02;
constexpr Uid kAceCpinSidSetPin = 0x0000000800008C03;
constexpr Uid kAceSpSid = 0x0000000800030002;
constexpr Uid kAceSpPsid = 0x00000008000100E1;

// The columns an ACE opens on its object: a span, or every column but the PIN.
struct Columns {
  uint64_t first = 0;
  uint64_t last = 255;
  bool exceptPin = false;
  bool Has(uint64_t column) const { return column >= first && column <= last && !(exceptPin && column == 3); }
};

struct Grant {
  Uid ace;
  Columns columns;
};

// The ACEs that guard method on object in sp. Empty when the method may not
// be called on the object by anyone.
std::vector<Grant> AccessControlList(const Drive& drive, Uid sp, Uid object, Uid method);

// Whether ace is a row of sp's ACE table.
bool AceExists(const Drive& drive, Uid sp, Uid ace);
// Whether a client may rewrite the ACE's BooleanExpr.
bool AceChangeable(const Drive& drive, Uid ace);
// The ACE's current BooleanExpr.
BooleanExpr AceExpression(const Drive& drive, Uid sp, Uid ace);

// Whether the authorities a session has proven satisfy expr (a malformed
// expression satisfies no one).
bool Satisfies(const Drive& drive, Uid sp, const std::vector<Uid>& authorities, const BooleanExpr& expr);

// Whether some ACE of the ACL that the session satisfies opens column (or,
// for kAnyColumn, lets the method be called at all).
constexpr uint64_t kAnyColumn = UINT64_MAX;
bool Permits(const Drive& drive, Uid sp, const std::vector<Uid>& authorities, Uid object, Uid method,
             uint64_t column = kAnyColumn);

}  // namespace opalsim

// The Opal objects as named operations, each one method call in an open
// session: credentials, SP life cycle, locking ranges and their keys, the
// shadow MBR, authorities and their ACEs. Tools are step lists of these.
#pragma once

#include "ace.h"
#include "session.h"

namespace opal {

// The MSID credential's PIN (readable by Anybody in the Admin SP).
Result<Bytes> ReadMsid(Session& session);
// Writes a credential's PIN (C_PIN column PIN).
Status SetPin(Session& session, Uid cpin, const Bytes& pin);

// An SP's life cycle state, read in an Admin SP session.
Result<uint64_t> ReadLifeCycle(Session& session, Uid sp);
// Activates the Locking SP (an Admin SP session as SID).
Status ActivateLockingSp(Session& session);

// LockingInfo's MaxRanges: ranges 1..MaxRanges exist beside the global one.
Result<uint64_t> ReadMaxRanges(Session& session);

struct RangeInfo {
  uint64_t start = 0;
  uint64_t length = 0;
  bool readLockEnabled = false, writeLockEnabled = false, readLocked = false, writeLocked = false;
};
Result<RangeInfo> ReadRange(Session& session, unsigned range);
// The range's ActiveKey: the key object that GenKey replaces.
Result<Uid> ReadActiveKey(Session& session, unsigned range);
Status GenKey(Session& session, Uid key);

// RevertSP on the Locking SP (keeping the global range's key, or not) and
// Revert of the whole TPer; after either the drive closes the session.
Status RevertLockingSp(Session& session, bool keepGlobalRangeKey);
Status RevertTper(Session& session);

// Writes data into the shadow MBR table at offset.
Status WriteMbr(Session& session, uint64_t offset, const Bytes& data);

// An authority's Enabled column.
Result<bool> ReadEnabled(Session& session, Uid authority);
Status SetEnabled(Session& session, Uid authority, bool enabled);

// An ACE's BooleanExpr.
Result<BooleanExpr> ReadAce(Session& session, Uid ace);
Status WriteAce(Session& session, Uid ace, const BooleanExpr& expr);

}  // namespace opal

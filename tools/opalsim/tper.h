// The emulated TPer: the drive's side of IF-SEND and IF-RECV. A ComPacket
// in is decoded with the same framing and token code the host uses; the
// session manager opens sessions, and methods in a session read and change
// the drive's tables as the ACEs allow. The answer waits for the IF-RECV
// that fetches it.
#pragma once

#include <string>
#include <vector>

#include "discovery.h"
#include "drive.h"

namespace opalsim {

struct OpenSession {
  uint32_t tsn = 0;
  uint32_t hsn = 0;
  Uid sp = 0;
  bool write = true;
  std::vector<Uid> authorities;  // proven in this session (Anybody holds always)
  uint64_t generation = 0;       // the drive's, when the session began
};

// What the drive keeps for one host process: its sessions and the answer
// waiting to be fetched. A process's sessions end with it, as if they had
// timed out.
struct Connection {
  std::vector<OpenSession> sessions;
  Bytes pending;
  bool hasPending = false;
  uint32_t nextTsn = 4096;
  uint64_t hostMaxComPacket = 2048;
};

// The drive's Level 0 discovery, as its state is now.
opal::Discovery DiscoveryOf(const Drive& drive);

// IF-SEND. False when the drive does not serve protocol (the transport then
// reports an error). mbrPath is where the drive's shadow MBR bytes live.
bool TperSend(Drive& drive, Connection& connection, const std::string& mbrPath, uint8_t protocol, uint16_t comId,
              const Bytes& data);
// IF-RECV of length bytes into out. False when the drive does not serve
// protocol.
bool TperReceive(const Drive& drive, Connection& connection, uint8_t protocol, uint16_t comId, size_t length,
                 Bytes& out);

}  // namespace opalsim

// Tool output in the shapes the real tools print, for scripting fakes.
#pragma once

#include <string>
#include <vector>

struct ScanEntry {
  std::string device;
  std::string version;  // "2", "12" or "No"
  std::string model;
  std::string firmware;
};

inline std::string Padded(std::string text, size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

// "--scan": device in 10 columns, the version framed by blanks, the model
// padded to 40, one blank, the firmware padded to 8.
inline std::string ScanText(const std::vector<ScanEntry>& drives) {
  std::string text = "Scanning for Opal compliant disks\n";
  for (const ScanEntry& d : drives) {
    // Opal flags "1", "2" in fixed places: "2" reads " 2 ", "12" "12 ", "No" "No ".
    const std::string version = " " + Padded(d.version == "2" ? " 2" : d.version, 3) + " ";
    text += Padded(d.device, 10) + version + Padded(d.model, 40) + " " + Padded(d.firmware, 8) + "\n";
  }
  return text + "No more disks present ending scan\n";
}

inline const char* YN(bool flag) { return flag ? "Y" : "N"; }

// "--query": the Locking function block with its flags line.
inline std::string QueryText(const std::string& device, bool locked, bool enabled, bool supported = true) {
  return "\n" + device + " ATA KVX 480GB                                SBFK71F3 50026B7782AB1234    \n"
         "TPer function (0x0001)\n"
         "    ACKNAK = N, ASYNC = N. BufferManagement = N, comIDManagement  = N, Streaming = Y, SYNC = Y\n"
         "Locking function (0x0002)\n"
         "    Locked = " + YN(locked) + ", LockingEnabled = " + YN(enabled) +
         ", LockingSupported = " + YN(supported) + ", MBRDone = N, MBREnabled = N, MediaEncrypt = Y\n"
         "Geometry function (0x0003)\n"
         "    Align = Y, Alignment Granularity = 8 (4096), Logical Block size = 512, Lowest Aligned LBA = 0\n";
}

struct RangeEntry {
  unsigned index;
  long long start;
  long long length;
  bool rlkena = false, wlkena = false, rlocked = false, wlocked = false;
};

// "--listLockingRanges": a header, then a header and a flags line per range.
inline std::string RangesText(const std::string& device, const std::vector<RangeEntry>& ranges) {
  std::string text = "Locking Range Configuration for " + device + "\n";
  for (const RangeEntry& r : ranges) {
    text += "LR" + std::to_string(r.index) + " Begin " + std::to_string(r.start) + " for " +
            std::to_string(r.length) + "\n";
    text += std::string("            RLKEna = ") + YN(r.rlkena) + "  WLKEna = " + YN(r.wlkena) +
            "  RLocked = " + YN(r.rlocked) + "  WLocked = " + YN(r.wlocked) + " \n";
  }
  return text;
}

// The block every authenticated sedutil command prints for a wrong password.
inline const char* kWrongPasswordText =
    "method status code NOT_AUTHORIZED\n"
    "Session start failed rc = 1\n"
    "One or more header fields have 0 length\n"
    "EndSession Failed\n";

#include "sedutil_format.h"

#include <cstdio>
#include <sstream>

namespace veltrak_opal::sedutil {

namespace {

const char* YesNo(bool flag) { return flag ? "Y" : "N"; }

std::string Hex(uint64_t value, int digits) {
  char text[24];
  std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(value));
  return text;
}

void TperBlock(std::ostream& o, const opal::TperFeature& t) {
  o << "TPer function (0x0001)\n"
    << "    ACKNAK = " << YesNo(t.ackNak) << ", ASYNC = " << YesNo(t.async) << (t.async ? ", " : ". ")
    << "BufferManagement = " << YesNo(t.bufferManagement) << ", comIDManagement  = " << YesNo(t.comIdManagement)
    << ", Streaming = " << YesNo(t.streaming) << ", SYNC = " << YesNo(t.sync) << "\n";
}

void LockingBlock(std::ostream& o, const opal::LockingFeature& l) {
  o << "Locking function (0x0002)\n"
    << "    Locked = " << YesNo(l.locked) << ", LockingEnabled = " << YesNo(l.enabled)
    << ", LockingSupported = " << YesNo(l.supported) << ", MBRDone = " << YesNo(l.mbrDone)
    << ", MBREnabled = " << YesNo(l.mbrEnabled) << ", MediaEncrypt = " << YesNo(l.mediaEncryption) << "\n";
}

void GeometryBlock(std::ostream& o, const opal::GeometryFeature& g) {
  o << "Geometry function (0x0003)\n"
    << "    Align = " << YesNo(g.align) << ", Alignment Granularity = " << g.alignmentGranularity << " ("
    << g.alignmentGranularity * g.logicalBlockSize << "), Logical Block size = " << g.logicalBlockSize
    << ", Lowest Aligned LBA = " << g.lowestAlignedLba << "\n";
}

void EnterpriseBlock(std::ostream& o, const opal::SscFeature& e) {
  o << "Enterprise function (0x0100)\n"
    << "    Range crossing = " << YesNo(e.rangeCrossing) << ", Base comID = 0x" << Hex(e.baseComId, 4)
    << ", comIDs = " << Hex(e.numComIds, 1) << "\n";
}

void Opal1Block(std::ostream& o, const opal::SscFeature& s) {
  o << "Opal V1.0 function (0x0200)\n"
    << "Base comID = 0x" << Hex(s.baseComId, 4) << ", comIDs = " << s.numComIds << "\n";
}

void SingleUserBlock(std::ostream& o, const opal::SingleUserFeature& s) {
  o << "SingleUser function (0x0201)\n"
    << "    ALL = " << YesNo(s.all) << ", ANY = " << YesNo(s.any) << ", Policy = " << YesNo(s.policy)
    << ", Locking Objects = " << s.lockingObjects << "\n";
}

void DataStoreBlock(std::ostream& o, const opal::DataStoreFeature& d) {
  o << "DataStore function (0x0202)\n"
    << "    Max Tables = " << d.maxTables << ", Max Size Tables = " << d.maxSize
    << ", Table size alignment = " << d.alignment << "\n";
}

void Opal2Block(std::ostream& o, const opal::SscFeature& s) {
  o << "OPAL 2.0 function (0x0203)\n"
    << "    Base comID = 0x" << Hex(s.baseComId, 4) << ", Initial PIN = 0x" << Hex(s.initialPin, 2)
    << ", Reverted PIN = 0x" << Hex(s.revertedPin, 2) << ", comIDs = " << s.numComIds << "\n"
    << "    Locking Admins = " << s.lockingAdmins << ", Locking Users = " << s.lockingUsers
    << ", Range Crossing = " << YesNo(s.rangeCrossing) << "\n";
}

const char* TypeWord(const std::string& path) {
  switch (opal::KindOfPath(path)) {
    case opal::DeviceKind::kSata: return " ATA ";
    case opal::DeviceKind::kNvme: return " NVMe ";
    default: return " OTHER ";
  }
}

}  // namespace

std::string Field(const std::string& text, size_t width) {
  std::string field = opal::Padded(text, width);
  return field.substr(0, field.find('\0'));
}

std::string ScanLine(const std::string& path, const opal::Discovery* discovery, const opal::Identity* identity) {
  char device[64];
  std::snprintf(device, sizeof device, "%-10s", path.c_str());
  std::string line = device;
  if (discovery != nullptr && discovery->Ssc() != nullptr) {
    line += std::string(" ") + (discovery->opal1 ? "1" : " ") + (discovery->opal2 ? "2" : " ") +
            (discovery->enterprise ? "E" : " ") + " ";
  } else {
    line += " No  ";
  }
  // Without an identity the model and firmware print as empty strings, with
  // their separating blank.
  if (identity == nullptr) return line + " ";
  return line + Field(identity->model, 40) + " " + Field(identity->firmware, 8);
}

std::string QueryReport(const std::string& path, const opal::Identity& identity, const opal::Discovery& d) {
  std::ostringstream o;
  o << "\n"
    << path << TypeWord(path) << Field(identity.model, 40) << " " << Field(identity.firmware, 8) << " "
    << Field(identity.serial, 20) << "\n";
  if (d.tper) TperBlock(o, *d.tper);
  if (d.locking) LockingBlock(o, *d.locking);
  if (d.geometry) GeometryBlock(o, *d.geometry);
  if (d.enterprise) EnterpriseBlock(o, *d.enterprise);
  if (d.opal1) Opal1Block(o, *d.opal1);
  if (d.singleUser) SingleUserBlock(o, *d.singleUser);
  if (d.dataStore) DataStoreBlock(o, *d.dataStore);
  if (d.opal2) Opal2Block(o, *d.opal2);
  if (d.unknownFeatures > 0) o << "**** " << d.unknownFeatures << " **** Unknown function codes IGNORED \n";
  return o.str();
}

// sedutil walks the tokens of the Properties answer, printing each property
// at its StartName, and breaks the line after every token whose index is a
// multiple of 6. The answer's layout is fixed: call, two UIDs, two list
// starts, four tokens per TPer property, the end of that list, the three
// tokens opening HostProperties, four tokens per host property, and the
// closing tokens.
std::string PropertiesBlock(const opal::Properties& tper, const opal::Properties& host) {
  std::vector<std::string> printedAt = {"", "", "", "", ""};
  auto add = [&](const opal::Properties& properties) {
    for (const auto& p : properties) {
      printedAt.insert(printedAt.end(), {"  " + p.first + " = " + std::to_string(p.second), "", "", ""});
    }
  };
  add(tper);
  printedAt.insert(printedAt.end(), {"", "\nHost Properties: \n", "", ""});
  add(host);
  printedAt.insert(printedAt.end(), 9, "");
  std::string block = "\nTPer Properties: ";
  for (size_t index = 0; index < printedAt.size(); ++index) {
    block += printedAt[index];
    if (index % 6 == 0) block += "\n";
  }
  return block;
}

std::vector<std::string> RangeLines(unsigned range, const opal::RangeInfo& r) {
  return {"LR" + std::to_string(range) + " Begin " + std::to_string(r.start) + " for " + std::to_string(r.length),
          std::string("            RLKEna = ") + YesNo(r.readLockEnabled) + "  WLKEna = " + YesNo(r.writeLockEnabled) +
              "  RLocked = " + YesNo(r.readLocked) + "  WLocked = " + YesNo(r.writeLocked) + " "};
}

std::string CallFailureLine(int status, const std::string& why) {
  if (status >= 0) return std::string("method status code ") + opal::StatusName(status);
  return why;
}

std::vector<std::string> SessionFailureLines(int status, const std::string& why) {
  return {CallFailureLine(status, why), "Session start failed rc = " + std::to_string(ExitCode(status)),
          "One or more header fields have 0 length", "EndSession Failed"};
}

int ExitCode(int status) { return status >= 0 ? status : kNoMethodStatus; }

}  // namespace veltrak_opal::sedutil

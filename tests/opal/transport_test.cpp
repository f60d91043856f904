// The SATA and NVMe encodings: pass-through CDBs, NVMe command words and the
// identity strings, against traced commands and known data layouts.
#include <gtest/gtest.h>

#include "nvme.h"
#include "opal_testing.h"

static Bytes Of(const AtaCdb& cdb) { return Bytes(cdb.begin(), cdb.end()); }

TEST(AtaTest, PassThroughCdbsMatchTracedCommands) {
  // want: the command as a drive reads it (command, protocol, ComID, length, to the device).
  struct Case { const char* name; Bytes built; const char* wire; AtaCommand want; } cases[] = {
      {"IDENTIFY DEVICE", Of(AtaIdentifyCdb()), "A1 08 0E 00 01 00 00 00 00 EC 00 00", {0xEC, 0, 0, 512, false}},
      {"discovery", Of(AtaTrustedCdb(false, 1, 1, 2048)), "A1 08 0E 01 04 00 01 00 00 5C 00 00", {0x5C, 1, 1, 2048}},
      {"send", Of(AtaTrustedCdb(true, 1, 0x1000, 512)), "A1 0A 06 01 01 00 00 10 00 5E 00 00",
       {0x5E, 1, 0x1000, 512, true}},
      {"receive of 256 blocks", Of(AtaTrustedCdb(false, 1, 0x07FE, 131072)), "A1 08 0E 01 00 01 FE 07 00 5C 00 00",
       {0x5C, 1, 0x07FE, 131072}},
      {"16-byte send, read only", {}, "85 0A 06 00 01 00 02 00 00 00 00 00 10 00 5E 00", {0x5E, 1, 0x1000, 1024, true}},
  };
  for (const Case& c : cases) {
    const Bytes wire = H(c.wire);
    EXPECT_TRUE(c.built.empty() || c.built == wire) << c.name << ": " << Hex(c.built);
    Result<AtaCommand> r = DecodeAtaCdb(wire.data(), wire.size());
    EXPECT_TRUE(r && r->command == c.want.command && r->protocol == c.want.protocol && r->comId == c.want.comId &&
                r->length == c.want.length && r->toDevice == c.want.toDevice) << c.name;
  }
}

TEST(NvmeTest, SecurityCommandsCarryProtocolComIdAndLength) {
  Bytes buffer(2048);
  const nvme_passthru_cmd discovery = NvmeSecurityCommand(false, 1, 0x0001, buffer.data(), 2048, 1000);
  const nvme_passthru_cmd send = NvmeSecurityCommand(true, 1, 0x1000, buffer.data(), 512, 1000);
  EXPECT_TRUE(discovery.opcode == 0x82 && discovery.cdw10 == 0x01000100 && discovery.cdw11 == 2048 &&
              discovery.data_len == 2048 && discovery.nsid == 0 && discovery.addr == uintptr_t(buffer.data()));
  EXPECT_TRUE(send.opcode == 0x81 && send.cdw10 == 0x01100000 && send.cdw11 == 512 && send.data_len == 512);
}

TEST(IdentifyTest, AtaStringsAreByteSwappedWordsNvmeOnesRawAtTheirOffsets) {
  // ATA: serial at 20, firmware at 46, model at 54, each pair of bytes swapped.
  Bytes ata = H(std::string(40, '0') + "\"NS1032547698BADCFE  \" 000000000000 \"BSKF173FVK X84G0 B\"");
  ata.resize(512, ' ');
  Result<Identity> read = DecodeAtaIdentify(ata);
  EXPECT_TRUE(read && read->model == Padded("KVX 480GB", 40) && read->serial == "SN0123456789ABCDEF  " &&
              read->firmware == "SBFK71F3");
  EXPECT_FALSE(DecodeAtaIdentify(Bytes(512, 0)).ok()) << "all-zero IDENTIFY data is no ATA device";
  // NVMe: serial at 4, model at 24, firmware at 64, as they are.
  Bytes nvme = H("00000000 \"S4EWNX0R123456      ZEP NV2000 1TB" + std::string(26, ' ') + "2B2QEXM7\"");
  nvme.resize(4096, 0);
  read = DecodeNvmeIdentify(nvme);
  EXPECT_TRUE(read && read->serial == "S4EWNX0R123456      " && read->model == Padded("ZEP NV2000 1TB", 40) &&
              read->firmware == "2B2QEXM7");
}

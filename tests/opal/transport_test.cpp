// The SATA and NVMe encodings: pass-through CDBs, NVMe command words and the
// identity strings, against traced commands and known data layouts.
#include <gtest/gtest.h>

#include <cstring>

#include "nvme.h"
#include "opal_testing.h"

using namespace opal;
using opaltest::H;
using opaltest::Hex;

namespace {

Bytes Placed(size_t size, const std::vector<std::pair<size_t, std::string>>& fields) {
  Bytes data(size, 0);
  for (const auto& [at, text] : fields) std::memcpy(&data[at], text.data(), text.size());
  return data;
}

Bytes Of(const AtaCdb& cdb) { return Bytes(cdb.begin(), cdb.end()); }

}  // namespace

TEST(AtaTest, PassThroughCdbsMatchTracedCommands) {
  struct Case { const char* name; Bytes built; const char* wire; uint8_t command; uint16_t comId; size_t length;
                bool toDevice; } cases[] = {
      {"IDENTIFY DEVICE", Of(AtaIdentifyCdb()), "A1 08 0E 00 01 00 00 00 00 EC 00 00", 0xEC, 0, 512, false},
      {"discovery", Of(AtaTrustedCdb(false, 1, 0x0001, 2048)), "a1 08 0e 01 04 00 01 00 00 5c 00 00", 0x5C, 1, 2048,
       false},
      {"send on ComID 0x1000", Of(AtaTrustedCdb(true, 1, 0x1000, 512)), "a1 0a 06 01 01 00 00 10 00 5e 00 00", 0x5E,
       0x1000, 512, true},
      {"largest send", Of(AtaTrustedCdb(true, 1, 0x1000, 61440)), "A1 0A 06 01 78 00 00 10 00 5E 00 00", 0x5E, 0x1000,
       61440, true},
      {"receive of 256 blocks", Of(AtaTrustedCdb(false, 1, 0x07FE, 131072)), "A1 08 0E 01 00 01 FE 07 00 5C 00 00",
       0x5C, 0x07FE, 131072, false},
      {"16-byte receive", {}, "85 08 0E 00 01 00 04 00 00 00 00 00 10 00 5C 00", 0x5C, 0x1000, 2048, false},
      {"16-byte send", {}, "85 0A 06 00 01 00 02 00 00 00 00 00 10 00 5E 00", 0x5E, 0x1000, 1024, true},
  };
  for (const Case& c : cases) {
    const Bytes wire = H(c.wire);
    EXPECT_TRUE(c.built.empty() || c.built == wire) << c.name << ": " << Hex(c.built);
    Result<AtaCommand> read = DecodeAtaCdb(wire.data(), wire.size());
    ASSERT_TRUE(read.ok()) << c.name << ": " << read.error().message;
    EXPECT_TRUE(read->command == c.command && read->protocol == (c.command == 0xEC ? 0 : 1) &&
                read->comId == c.comId && read->length == c.length && read->toDevice == c.toDevice) << c.name;
  }
}

TEST(AtaTest, IdentifyStringsAreByteSwappedWords) {
  // Serial at 20, firmware at 46, model at 54, each pair of bytes swapped.
  const Bytes raw =
      Placed(512, {{20, "NS1032547698BADCFE  "}, {46, "BSKF173F"}, {54, "VK X84G0 B"}, {64, std::string(30, ' ')}});
  Result<Identity> read = DecodeAtaIdentify(raw);
  ASSERT_TRUE(read.ok()) << read.error().message;
  EXPECT_EQ(read->model, Padded("KVX 480GB", 40));
  EXPECT_EQ(read->serial, "SN0123456789ABCDEF  ");
  EXPECT_EQ(read->firmware, "SBFK71F3");
  const Bytes written = EncodeAtaIdentify(*read, 1000000);
  EXPECT_EQ(Hex(Bytes(written.begin() + 20, written.begin() + 94)), Hex(Bytes(raw.begin() + 20, raw.begin() + 94)));
  EXPECT_FALSE(DecodeAtaIdentify(Bytes(512, 0)).ok()) << "all-zero IDENTIFY data is no ATA device";
}

TEST(NvmeTest, SecurityCommandsCarryProtocolComIdAndLength) {
  struct Case { const char* name; bool send; uint16_t comId; uint32_t length; uint8_t opcode; uint32_t cdw10, cdw11; }
  cases[] = {
      {"discovery", false, 0x0001, 2048, 0x82, 0x01000100, 0x800},
      {"session send", true, 0x1000, 512, 0x81, 0x01100000, 0x200},
      {"session receive", false, 0x1000, 2048, 0x82, 0x01100000, 0x800},
  };
  Bytes buffer(2048);
  for (const Case& c : cases) {
    const nvme_passthru_cmd command = NvmeSecurityCommand(c.send, 1, c.comId, buffer.data(), c.length, 1000);
    EXPECT_TRUE(command.opcode == c.opcode && command.nsid == 0 && command.cdw10 == c.cdw10 &&
                command.cdw11 == c.cdw11 && command.data_len == c.length &&
                command.addr == reinterpret_cast<uintptr_t>(buffer.data())) << c.name;
    const NvmeSecurity read = DecodeNvmeSecurity(command);
    EXPECT_TRUE(read.protocol == 1 && read.comId == c.comId && read.length == c.length) << c.name;
  }
  const nvme_passthru_cmd identify = NvmeIdentifyCommand(buffer.data(), 1000);
  EXPECT_TRUE(identify.opcode == 0x06 && identify.cdw10 == 1 && identify.data_len == 4096 && identify.nsid == 0);
}

TEST(NvmeTest, IdentifyStringsAreRawAtTheirOffsets) {
  const std::string model = "ZEP NV2000 1TB" + std::string(26, ' ');
  const Bytes raw = Placed(4096, {{4, "S4EWNX0R123456      "}, {24, model}, {64, "2B2QEXM7"}, {256, "\x01"}});
  Result<Identity> read = DecodeNvmeIdentify(raw);
  ASSERT_TRUE(read.ok()) << read.error().message;
  EXPECT_TRUE(read->serial == "S4EWNX0R123456      " && read->model == model && read->firmware == "2B2QEXM7");
  EXPECT_TRUE(EncodeNvmeIdentify(*read, true) == raw);
}

// The custom commands of the simulated ISO 15693 families behind manufacturer code 02:
// Initiate and Inventory Initiated, the fast forms answered only at the double data rate,
// sector passwords that protect reads and writes, Write Kill and Kill, the energy-harvesting
// and data-out configuration; and what AFI, DSFID and their locks change in Inventory and
// Get System Info.
#include <gtest/gtest.h>

#include "SimSupport.h"
#include "simulator/chip.h"
#include "simulator/fieldfile.h"
#include "simulator/tags/iso15693.h"

namespace {

using sim::Iso15693Tag;

hex::Bytes bytes(std::string_view text) { return *hex::toBytes(hex::withoutBlanks(text)); }

std::string tagAnswer(const std::string& response, const std::string& tail = "00") {
  const std::string raw(reinterpret_cast<const char*>(bytes(response).data()), bytes(response).size());
  const std::uint16_t crc = simtest::referenceCrc13239(raw);
  const std::string crcText = hex::byte(static_cast<std::uint8_t>(crc & 0xFF)) + hex::byte(static_cast<std::uint8_t>(crc >> 8));
  return "80" + hex::byte(static_cast<std::uint8_t>(response.size() / 2 + 3)) + response + crcText + tail;
}

// One tag of each kind of family: a killable VAX30, a VAS60E with passwords and energy
// harvesting, a VAS70 with passwords only.
constexpr const char* kTags = R"({ "tags": [
  { "type": "iso15693", "product": "VAX30", "uid": "E002000000000010", "dsfid": "A1", "afi": "12",
    "blockSize": 4, "blockCount": 64, "memory": "00010203" },
  { "type": "iso15693", "product": "VAS60E", "uid": "E002000000000021", "dsfid": "B2",
    "blockSize": 4, "blockCount": 2048, "memory": "CAFEBABE" },
  { "type": "iso15693", "product": "VAS70", "uid": "E002000000000032", "blockSize": 4, "blockCount": 512,
    "inField": false }
]})";

const std::string kA = "10000000000002E0";  // VAX30, as it travels
const std::string kB = "21000000000002E0";  // VAS60E

class Iso15693VendorTest : public ::testing::Test {
 protected:
  sim::Chip chip;
  sim::FieldContents field;

  void SetUp() override {
    sim::ParseOutcome out = sim::parseField(kTags, "field text");
    ASSERT_EQ(out.error, "");
    field = std::move(out.contents);
    select("010D");
  }
  void select(const std::string& parameters) { ASSERT_EQ(chip.execute(bytes("0202 01" + parameters.substr(2)), field), "0000"); }
  std::string send(const std::string& frame) {
    hex::Bytes command{0x04, static_cast<std::uint8_t>(frame.size() / 2)};
    const hex::Bytes f = bytes(frame);
    command.insert(command.end(), f.begin(), f.end());
    return chip.execute(command, field);
  }
  Iso15693Tag& tag(int i) { return dynamic_cast<Iso15693Tag&>(*field.tags[static_cast<std::size_t>(i)]); }
};

TEST_F(Iso15693VendorTest, OnlyInitiatedTagsAnswerInventoryInitiated) {
  EXPECT_EQ(send("26D10200"), "8700");
  // Park B out of the way, then initiate A alone.
  ASSERT_EQ(send("2202" + kB), "8700");
  EXPECT_EQ(send("02D202"), tagAnswer("00" "A1" + kA));
  EXPECT_TRUE(tag(0).initiated());
  EXPECT_FALSE(tag(1).initiated());
  EXPECT_EQ(send("26D10200"), tagAnswer("00" "A1" + kA));
  // A plain inventory is still answered by A alone (B is quiet).
  EXPECT_EQ(send("260100"), tagAnswer("00" "A1" + kA));
  // The initiation goes with the field.
  ASSERT_EQ(chip.execute(bytes("0202 0000"), field), "0000");
  select("010D");
  EXPECT_FALSE(tag(0).initiated());
  EXPECT_EQ(send("26D10200"), "8700");
}

TEST_F(Iso15693VendorTest, FastCommandsAnswerOnlyAtTheDoubleDataRate) {
  ASSERT_EQ(send("2202" + kB), "8700");  // B quiet, A alone answers what is not addressed
  EXPECT_EQ(send("02C202"), "8700");
  EXPECT_EQ(send("22C002" + kA + "00"), "8700");
  EXPECT_EQ(send("22C302" + kA + "0000"), "8700");
  select("011D");
  EXPECT_EQ(send("02C202"), tagAnswer("00" "A1" + kA));
  EXPECT_EQ(send("26C10200"), tagAnswer("00" "A1" + kA));
  EXPECT_EQ(send("22C002" + kA + "00"), tagAnswer("00" "00010203"));
  EXPECT_EQ(send("22C302" + kA + "0000"), tagAnswer("00" "00010203"));
  select("010D");
  EXPECT_EQ(send("26C10200"), "8700");
  // The plain forms do not care about the rate.
  EXPECT_EQ(send("2220" + kA + "00"), tagAnswer("00" "00010203"));
}

TEST_F(Iso15693VendorTest, SectorPasswordProtectsBlocksUntilPresented) {
  // A fresh password 1 is zero; it must be presented before it is changed.
  EXPECT_EQ(send("22B102" + kB + "01" "11223344"), tagAnswer("010F"));
  EXPECT_EQ(send("22B302" + kB + "01" "00000000"), tagAnswer("00"));
  EXPECT_EQ(send("22B102" + kB + "01" "11223344"), tagAnswer("00"));
  // Sector 0 (blocks 0 to 31): reads and writes need password 1 (status 01011).
  EXPECT_EQ(send("2AB202" + kB + "0000" "0B"), tagAnswer("00"));
  EXPECT_EQ(tag(1).sectorStatus(0), 0x0B);
  EXPECT_EQ(send("2A20" + kB + "0000"), tagAnswer("0115"));
  EXPECT_EQ(send("2A20" + kB + "1F00"), tagAnswer("0115"));
  EXPECT_EQ(send("2A23" + kB + "000001"), tagAnswer("0115"));
  EXPECT_EQ(send("2A21" + kB + "0000" "01020304"), tagAnswer("0112"));
  // Sector 1 is free.
  EXPECT_EQ(send("2A20" + kB + "2000"), tagAnswer("00" "00000000"));
  // A wrong password keeps it shut; the right one opens it.
  EXPECT_EQ(send("22B302" + kB + "01" "00000000"), tagAnswer("010F"));
  EXPECT_EQ(send("2A20" + kB + "0000"), tagAnswer("0115"));
  EXPECT_EQ(send("22B302" + kB + "01" "11223344"), tagAnswer("00"));
  EXPECT_EQ(send("2A20" + kB + "0000"), tagAnswer("00" "CAFEBABE"));
  EXPECT_EQ(send("2A21" + kB + "0000" "01020304"), tagAnswer("00"));
  EXPECT_EQ(send("2A20" + kB + "0000"), tagAnswer("00" "01020304"));
  // A second lock of the sector is refused; the field going off shuts it again.
  EXPECT_EQ(send("2AB202" + kB + "0000" "01"), tagAnswer("0111"));
  ASSERT_EQ(chip.execute(bytes("0202 0000"), field), "0000");
  select("010D");
  EXPECT_EQ(send("2A20" + kB + "0000"), tagAnswer("0115"));
}

TEST_F(Iso15693VendorTest, WriteProtectionLeavesReadsFree) {
  EXPECT_EQ(send("2AB202" + kB + "0000" "11"), tagAnswer("00"));  // password 2, writes need it
  EXPECT_EQ(send("2A20" + kB + "0000"), tagAnswer("00" "CAFEBABE"));
  EXPECT_EQ(send("2A21" + kB + "0000" "01020304"), tagAnswer("0112"));
  EXPECT_EQ(send("22B302" + kB + "02" "00000000"), tagAnswer("00"));
  EXPECT_EQ(send("2A21" + kB + "0000" "01020304"), tagAnswer("00"));
  // Past the memory, and the families without passwords.
  EXPECT_EQ(send("2AB202" + kB + "4000" "01"), tagAnswer("0110"));
  EXPECT_EQ(send("22B302" + kA + "01" "00000000"), tagAnswer("0101"));
}

TEST_F(Iso15693VendorTest, KillSilencesTheTagForGood) {
  ASSERT_EQ(send("2202" + kB), "8700");
  // The panel's Write Kill and Kill put the kill number in front of the UID; sent without
  // the address they reach the tag as they should.
  EXPECT_EQ(send("02A60200" "00000000"), tagAnswer("010F"));  // no kill password yet
  EXPECT_EQ(send("02B10200" "A5A5A5A5"), tagAnswer("00"));
  EXPECT_EQ(send("02A60200" "11111111"), tagAnswer("010F"));
  EXPECT_FALSE(tag(0).killed());
  EXPECT_EQ(send("02A60200" "A5A5A5A5"), tagAnswer("00"));
  EXPECT_TRUE(tag(0).killed());
  EXPECT_EQ(send("2220" + kA + "00"), "8700");
  EXPECT_EQ(send("260100"), "8700");
  ASSERT_EQ(chip.execute(bytes("0202 0000"), field), "0000");
  select("010D");
  EXPECT_EQ(send("2220" + kA + "00"), "8700");
  // Addressed, the kill number stands where the tag reads the UID: not its frame.
  EXPECT_EQ(send("22A60200" + kB + "00000000"), "8700");
  // The password families have no kill: B, awake again since the field came back, says so.
  EXPECT_EQ(send("02A60200" "00000000"), tagAnswer("0101"));
  EXPECT_FALSE(tag(1).killed());
}

TEST_F(Iso15693VendorTest, EnergyHarvestingAndDataOutBytesAreKeptAndReadBack) {
  EXPECT_EQ(send("22A002" + kB), tagAnswer("00" "00"));
  EXPECT_EQ(send("22A102" + kB + "05"), tagAnswer("00"));
  EXPECT_EQ(send("22A402" + kB + "01"), tagAnswer("00"));
  EXPECT_EQ(send("22A002" + kB), tagAnswer("00" "0D"));
  EXPECT_EQ(tag(1).configuration(), 0x0D);
  EXPECT_EQ(send("22A102" + kB + "FA"), tagAnswer("00"));  // only bits 0-2 are EH
  EXPECT_EQ(send("22A002" + kB), tagAnswer("00" "0A"));
  EXPECT_EQ(send("22A302" + kB), tagAnswer("00" "00"));
  EXPECT_EQ(send("22A202" + kB + "01"), tagAnswer("00"));
  EXPECT_EQ(send("22A302" + kB), tagAnswer("00" "01"));
  EXPECT_EQ(send("22A202" + kB + "00"), tagAnswer("00"));
  EXPECT_EQ(send("22A302" + kB), tagAnswer("00" "00"));
  EXPECT_EQ(send("22A102" + kB), tagAnswer("0102"));
  // VAX30 harvests nothing.
  EXPECT_EQ(send("22A002" + kA), tagAnswer("0101"));
}

TEST_F(Iso15693VendorTest, AfiAndDsfidWritesShowInInventoryAndSystemInfoUntilLocked) {
  EXPECT_EQ(send("2227" + kA + "77"), tagAnswer("00"));
  EXPECT_EQ(send("2229" + kA + "5A"), tagAnswer("00"));
  EXPECT_EQ(send("222B" + kA), tagAnswer("00" "0F" + kA + "5A" "77" "3F" "03" "20"));
  ASSERT_EQ(send("2202" + kB), "8700");
  EXPECT_EQ(send("36017700"), tagAnswer("00" "5A" + kA));
  EXPECT_EQ(send("36011200"), "8700");
  EXPECT_EQ(send("2228" + kA), tagAnswer("00"));
  EXPECT_EQ(send("222A" + kA), tagAnswer("00"));
  EXPECT_EQ(send("2227" + kA + "12"), tagAnswer("0112"));
  EXPECT_EQ(send("2229" + kA + "00"), tagAnswer("0112"));
  EXPECT_EQ(send("2228" + kA), tagAnswer("0111"));
  EXPECT_EQ(send("222B" + kA), tagAnswer("00" "0F" + kA + "5A" "77" "3F" "03" "20"));
}

}  // namespace

// The simulated ISO 15693 tag (ISO/IEC 15693-3) through the chip's Send Receive, and the
// board controller's anticollision: states, inventory with one and sixteen slots, AFI
// and mask, addressed and selected requests, block reads, writes and locks, the AFI and
// DSFID commands, system information, errors, CRCs and collisions.
#include <gtest/gtest.h>

#include "SimSupport.h"
#include "simulator/chip.h"
#include "simulator/fieldfile.h"
#include "simulator/tags/iso15693.h"

namespace {

using sim::Iso15693Tag;

hex::Bytes bytes(std::string_view text) { return *hex::toBytes(hex::withoutBlanks(text)); }

// The answer the chip gives for a tag response: "80", length, response, its CRC, tail.
std::string tagAnswer(const std::string& response, const std::string& tail = "00") {
  const std::string raw(reinterpret_cast<const char*>(bytes(response).data()), bytes(response).size());
  const std::uint16_t crc = simtest::referenceCrc13239(raw);
  const std::string crcText = hex::byte(static_cast<std::uint8_t>(crc & 0xFF)) + hex::byte(static_cast<std::uint8_t>(crc >> 8));
  return "80" + hex::byte(static_cast<std::uint8_t>(response.size() / 2 + 3)) + response + crcText + tail;
}

constexpr const char* kTwoTags = R"({ "tags": [
  { "type": "iso15693", "product": "VAX30", "uid": "E002000000000010", "dsfid": "A1", "afi": "12",
    "blockSize": 4, "blockCount": 64, "memory": "00010203 04050607 08090A0B", "lockedBlocks": [2] },
  { "type": "iso15693", "product": "QLN43", "uid": "E002000000000027", "dsfid": "B2", "afi": "20",
    "blockSize": 4, "blockCount": 2048, "icReference": "5C" }
]})";

// UIDs as they travel, least significant byte first.
const std::string kA = "10000000000002E0";
const std::string kB = "27000000000002E0";

class Iso15693TagTest : public ::testing::Test {
 protected:
  sim::Chip chip;
  sim::FieldContents field;

  void SetUp() override { load(kTwoTags); }
  void load(const char* json) {
    sim::ParseOutcome out = sim::parseField(json, "field text");
    ASSERT_EQ(out.error, "");
    field = std::move(out.contents);
    ASSERT_EQ(chip.execute(bytes("0202 010D"), field), "0000");
  }
  // One frame through Send Receive, the reader's CRC appended by the chip.
  std::string send(const std::string& frame) {
    hex::Bytes command{0x04, static_cast<std::uint8_t>(frame.size() / 2)};
    const hex::Bytes f = bytes(frame);
    command.insert(command.end(), f.begin(), f.end());
    return chip.execute(command, field);
  }
  Iso15693Tag& tag(int i) { return dynamic_cast<Iso15693Tag&>(*field.tags[static_cast<std::size_t>(i)]); }
  std::string controller(const std::string& command) {
    return sim::iso15693ControllerCommand(bytes(command), chip.protocol(), field);
  }
};

TEST_F(Iso15693TagTest, LoaderMakesIso15693Tags) {
  EXPECT_EQ(tag(0).uid(), bytes(kA));
  EXPECT_EQ(tag(0).addressBytes(), 1);
  EXPECT_EQ(tag(1).addressBytes(), 2);
  EXPECT_EQ(tag(0).state(), Iso15693Tag::State::Ready);
}

TEST_F(Iso15693TagTest, TwoTagsInOneSlotCollideWithTheMarkAndABadCrc) {
  // 00 A1 10.. and 00 B2 27.. heard at once.
  const std::string answer = send("260100");
  // The bits of both answers on top of each other; the tail carries collision and CRC error.
  ASSERT_EQ(answer.substr(0, 4), "800D");
  EXPECT_EQ(answer.substr(4, 20), "00B3" "37000000000002E0");
  EXPECT_EQ(answer.substr(answer.size() - 2), "03");
}

TEST_F(Iso15693TagTest, SixteenSlotsAnswerOnlyTheTagOfSlotZero) {
  // Tag A's UID ends in nibble 0, tag B's in 7.
  EXPECT_EQ(send("060100"), tagAnswer("00A1" + kA));
  // With a four-bit mask 7, slot 0 holds the tags whose next nibble is 0: tag B (27).
  EXPECT_EQ(send("06010407"), "8700");
  EXPECT_EQ(send("0601040702"), "8700");  // a mask byte too many: not a valid request
}

TEST_F(Iso15693TagTest, OneSlotWithAMaskSelectsOneTag) {
  EXPECT_EQ(send("26010827"), tagAnswer("00B2" + kB));
  EXPECT_EQ(send("26010410"), tagAnswer("00A1" + kA));  // four bits: 0 matches the low nibble of 10
  EXPECT_EQ(send("26010807"), "8700");
}

TEST_F(Iso15693TagTest, AfiSelectsFamilies) {
  EXPECT_EQ(send("36011200"), tagAnswer("00A1" + kA));
  EXPECT_EQ(send("36012000"), tagAnswer("00B2" + kB));
  EXPECT_EQ(send("36011000"), tagAnswer("00A1" + kA));  // family 1, any sub-family
  EXPECT_EQ(send("36013000"), "8700");
}

TEST_F(Iso15693TagTest, StayQuietSelectAndResetToReady) {
  EXPECT_EQ(send("2202" + kB), "8700");  // no answer to Stay Quiet
  EXPECT_EQ(tag(1).state(), Iso15693Tag::State::Quiet);
  // The quiet tag keeps out of inventories and non-addressed requests.
  EXPECT_EQ(send("260100"), tagAnswer("00A1" + kA));
  EXPECT_EQ(send("022000"), tagAnswer("0000010203"));
  // It still hears its address.
  EXPECT_EQ(send("2220" + kB + "00"), tagAnswer("0000000000"));
  EXPECT_EQ(send("2225" + kB), tagAnswer("00"));
  EXPECT_EQ(tag(1).state(), Iso15693Tag::State::Selected);
  // Select flag: only the selected tag answers.
  EXPECT_EQ(send("122001"), tagAnswer("0000000000"));
  // Selecting the other tag sends this one back to ready.
  EXPECT_EQ(send("2225" + kA), tagAnswer("00"));
  EXPECT_EQ(tag(1).state(), Iso15693Tag::State::Ready);
  EXPECT_EQ(send("122001"), tagAnswer("0004050607"));
  EXPECT_EQ(send("2226" + kA), tagAnswer("00"));
  EXPECT_EQ(tag(0).state(), Iso15693Tag::State::Ready);
  EXPECT_EQ(send("122001"), "8700");
}

TEST_F(Iso15693TagTest, FieldOffWakesAQuietTag) {
  send("2202" + kA);
  EXPECT_EQ(tag(0).state(), Iso15693Tag::State::Quiet);
  chip.execute(bytes("0201 00"), field);
  EXPECT_EQ(tag(0).state(), Iso15693Tag::State::Ready);
}

TEST_F(Iso15693TagTest, ReadSingleBlockWithAndWithoutTheSecurityStatus) {
  EXPECT_EQ(send("2220" + kA + "01"), tagAnswer("0004050607"));
  EXPECT_EQ(send("6220" + kA + "01"), tagAnswer("000004050607"));
  EXPECT_EQ(send("6220" + kA + "02"), tagAnswer("0001" "08090A0B"));
  EXPECT_EQ(send("2220" + kA + "40"), tagAnswer("0110"));
  EXPECT_EQ(send("2220" + kA), tagAnswer("0102"));
}

TEST_F(Iso15693TagTest, TwoByteBlockNumbersTravelWithTheProtocolExtensionFlag) {
  EXPECT_EQ(send("2A21" + kB + "0501" "DEADBEEF"), tagAnswer("00"));
  EXPECT_EQ(send("2A20" + kB + "0501"), tagAnswer("00DEADBEEF"));
  EXPECT_EQ(send("2A20" + kB + "0008"), tagAnswer("0110"));  // block 0800 is past 2048
}

TEST_F(Iso15693TagTest, WriteChangesTheMemoryAndTheDumpShowsIt) {
  EXPECT_EQ(send("2221" + kA + "00" "11223344"), tagAnswer("00"));
  EXPECT_EQ(send("2220" + kA + "00"), tagAnswer("0011223344"));
  EXPECT_NE(sim::fieldToJson(field).find("\"memory\": \"112233440405060708090A0B"), std::string::npos);
  // A data length other than the block size is refused.
  EXPECT_EQ(send("2221" + kA + "00" "1122"), tagAnswer("010F"));
}

TEST_F(Iso15693TagTest, LockedBlocksRefuseWritesAndLocks) {
  EXPECT_EQ(send("2221" + kA + "02" "FFFFFFFF"), tagAnswer("0112"));
  EXPECT_EQ(send("2222" + kA + "02"), tagAnswer("0111"));
  EXPECT_EQ(send("2222" + kA + "03"), tagAnswer("00"));
  EXPECT_TRUE(tag(0).blockLocked(3));
  EXPECT_EQ(send("2221" + kA + "03" "FFFFFFFF"), tagAnswer("0112"));
  EXPECT_NE(sim::fieldToJson(field).find("\"lockedBlocks\": [\n        2,\n        3\n      ]"), std::string::npos);
}

TEST_F(Iso15693TagTest, OneByteProductsIgnoreTheProtocolExtensionFlag) {
  // The panel sends every Lock Block with flags 08; a tag that numbers its blocks with one
  // byte has no extended format and takes the flag as reserved.
  load(R"({ "tags": [ { "type": "iso15693", "product": "VAX30", "uid": "E002000000000010" } ]})");
  EXPECT_EQ(send("082205"), tagAnswer("00"));
  EXPECT_TRUE(tag(0).blockLocked(5));
  EXPECT_EQ(send("0A2005"), tagAnswer("0000000000"));
  // Without the Address flag the UID is no UID: the request is malformed.
  EXPECT_EQ(send("0822" + kA + "06"), tagAnswer("0102"));
}

TEST_F(Iso15693TagTest, ReadMultipleBlocks) {
  EXPECT_EQ(send("2223" + kA + "0001"), tagAnswer("00" "00010203" "04050607"));
  EXPECT_EQ(send("6223" + kA + "0102"), tagAnswer("00" "0004050607" "0108090A0B" "0000000000"));
  EXPECT_EQ(send("2223" + kA + "3F01"), tagAnswer("0110"));
}

TEST_F(Iso15693TagTest, MultipleBlockSecurityStatus) {
  EXPECT_EQ(send("222C" + kA + "0003"), tagAnswer("00" "00000100"));
  EXPECT_EQ(send("2A2C" + kB + "0001" "0200"), tagAnswer("00" "000000"));
}

TEST_F(Iso15693TagTest, AfiAndDsfidWritesAndLocks) {
  EXPECT_EQ(send("2227" + kA + "77"), tagAnswer("00"));
  EXPECT_EQ(send("2228" + kA), tagAnswer("00"));
  EXPECT_EQ(send("2227" + kA + "78"), tagAnswer("0112"));
  EXPECT_EQ(send("2228" + kA), tagAnswer("0111"));
  EXPECT_EQ(send("2229" + kA + "55"), tagAnswer("00"));
  EXPECT_EQ(send("222A" + kA), tagAnswer("00"));
  EXPECT_EQ(send("2229" + kA + "56"), tagAnswer("0112"));
  EXPECT_EQ(send("36011200"), "8700");  // its AFI is 77 now
  EXPECT_EQ(send("36017700"), tagAnswer("0055" + kA));
  const std::string dump = sim::fieldToJson(field);
  EXPECT_NE(dump.find("\"afi\": \"77\""), std::string::npos);
  EXPECT_NE(dump.find("\"afiLocked\": true"), std::string::npos);
  EXPECT_NE(dump.find("\"dsfidLocked\": true"), std::string::npos);
}

TEST_F(Iso15693TagTest, SystemInformationByAddressWidth) {
  // VAX30 has no icReference in the entry: its product's IC reference stands.
  EXPECT_EQ(send("222B" + kA), tagAnswer("00" "0F" + kA + "A1" "12" "3F" "03" "20"));
  EXPECT_EQ(send("2A2B" + kB), tagAnswer("00" "0F" + kB + "B2" "20" "FF07" "03" "5C"));
  // Without the protocol extension flag a two-byte product leaves its memory size out.
  EXPECT_EQ(send("222B" + kB), tagAnswer("00" "0B" + kB + "B2" "20" "5C"));
  // A one-byte product takes the flag as reserved.
  EXPECT_EQ(send("2A2B" + kA), tagAnswer("00" "0F" + kA + "A1" "12" "3F" "03" "20"));
}

TEST_F(Iso15693TagTest, BadCrcOrShortFramesAreNotHeard) {
  ASSERT_EQ(chip.execute(bytes("0202 010C"), field), "0000");  // append CRC off
  EXPECT_EQ(send("2220" + kA + "01" "0000"), "8700");
  EXPECT_EQ(send("02"), "8700");
}

TEST_F(Iso15693TagTest, UnknownCommandsAndOtherManufacturers) {
  EXPECT_EQ(send("2299" + kA), tagAnswer("0101"));
  EXPECT_EQ(send("22A002" + kA), tagAnswer("0101"));
  EXPECT_EQ(send("22A004" + kA), "8700");
}

TEST_F(Iso15693TagTest, ControllerAnticollisionFindsEveryTag) {
  for (const char* flags : {"26", "06", "24", "07"}) {
    SCOPED_TRACE(flags);
    EXPECT_EQ(controller(std::string("A001") + flags), "8013" "02" "A1" + kA + "B2" + kB);
  }
}

TEST_F(Iso15693TagTest, ControllerAnticollisionResolvesDeepCollisions) {
  load(R"({ "tags": [
    { "type": "iso15693", "uid": "E002000000000110", "dsfid": "01" },
    { "type": "iso15693", "uid": "E002000000000210", "dsfid": "02" },
    { "type": "iso15693", "uid": "E002000000000010", "dsfid": "03" },
    { "type": "iso15693", "uid": "E002000000000010", "dsfid": "03", "inField": false }
  ]})");
  const std::string sixteen = controller("A00106");
  ASSERT_EQ(sixteen.substr(0, 6), "801C03");
  EXPECT_NE(sixteen.find("01" "10010000000002E0"), std::string::npos);
  EXPECT_NE(sixteen.find("02" "10020000000002E0"), std::string::npos);
  EXPECT_NE(sixteen.find("03" "10000000000002E0"), std::string::npos);
  EXPECT_EQ(controller("A00126").substr(0, 6), "801C03");
}

TEST_F(Iso15693TagTest, ControllerAnticollisionWithoutTagsOrProtocol) {
  load(R"({ "tags": [] })");
  EXPECT_EQ(controller("A00126"), "800100");
  chip.execute(bytes("0201 00"), field);
  EXPECT_EQ(controller("A00126"), "8700");
  EXPECT_EQ(controller("A0"), "8200");
  EXPECT_EQ(controller("0803620100"), "8200");
}

TEST_F(Iso15693TagTest, QuietTagsAreLeftOutOfTheControllerAnticollision) {
  send("2202" + kB);
  EXPECT_EQ(controller("A00126"), "800A" "01" "A1" + kA);
}

TEST(Iso15693Collision, SuperposedBytesAreAsLongAsTheLongest) {
  EXPECT_EQ(sim::superposeIso15693({bytes("0102"), bytes("100000")}), bytes("110200"));
}

}  // namespace

// The simulated ISO 14443-A tags (ISO/IEC 14443-3 type A with NFC Forum Type 2 memory)
// and Topaz tags (NFC Forum Type 1) through the chip's Send Receive: activation of single,
// double and triple size UIDs, bit-oriented anticollision with collisions, HLTA and WUPA,
// page reads and writes with their 4-bit answers, and the Topaz command set.
#include <gtest/gtest.h>

#include <functional>

#include "SimSupport.h"
#include "simulator/chip.h"
#include "simulator/fieldfile.h"
#include "simulator/tags/iso14443a.h"
#include "simulator/tags/topaz.h"

namespace {

using sim::Iso14443ATag;
using sim::TopazTag;

hex::Bytes bytes(std::string_view text) { return *hex::toBytes(hex::withoutBlanks(text)); }

// CRC_A as ISO/IEC 14443-3 annex B writes it out (preset 6363, no final complement), low
// byte first: a check of the board's CRCs that does not share its code.
std::string referenceCrcA(std::string_view frameText) {
  std::uint16_t crc = 0x6363;
  for (std::uint8_t b : bytes(frameText)) {
    b = static_cast<std::uint8_t>(b ^ (crc & 0xFF));
    b = static_cast<std::uint8_t>(b ^ (b << 4));
    crc = static_cast<std::uint16_t>((crc >> 8) ^ (b << 8) ^ (b << 3) ^ (b >> 4));
  }
  return hex::byte(static_cast<std::uint8_t>(crc & 0xFF)) + hex::byte(static_cast<std::uint8_t>(crc >> 8));
}

constexpr const char* kSingle =
    R"({ "type": "iso14443a", "uid": "1A2B3C4D", "atqa": "0400", "sak": "08", "blockSize": 4, "blockCount": 16,
         "memory": "1A2B3C4D 40000000 00000000 E1100600 00010203 04050607 08090A0B 0C0D0E0F
                    10111213 14151617 18191A1B 1C1D1E1F 20212223 24252627 28292A2B 2C2D2E2F" })";
constexpr const char* kDouble =
    R"({ "type": "iso14443a", "uid": "04A1B2C3D4E5F6", "atqa": "4400", "sak": "00", "blockSize": 4, "blockCount": 16 })";
constexpr const char* kTriple =
    R"({ "type": "iso14443a", "uid": "0102030405060708090A", "atqa": "8400", "sak": "20" })";
constexpr const char* kTopaz =
    R"({ "type": "topaz", "uid": "5E7A1122334455", "hr0": "11", "hr1": "48",
         "memory": "5E7A112233445500 E1100E000310D101 0C55016578616D70 6C652E636F6DFE00" })";

class Iso14443ATagsTest : public ::testing::Test {
 protected:
  sim::Chip chip;
  sim::FieldContents field;

  // A field with these entries; the protocol of the panel's normal variant is selected.
  void load(std::initializer_list<std::string> entries) {
    std::string json = R"({ "tags": [)";
    bool first = true;
    for (const std::string& e : entries) {
      json += (first ? "" : ",") + e;
      first = false;
    }
    json += "]}";
    std::string text;
    for (char c : json) text += c == '\n' ? ' ' : c;
    sim::ParseOutcome out = sim::parseField(text, "field text");
    ASSERT_EQ(out.error, "");
    field = std::move(out.contents);
    ASSERT_EQ(run("0204 02000180"), "0000");
  }
  std::string run(std::string_view frame) { return chip.execute(bytes(frame), field); }
  // One Send Receive: the tag frame with its transmission flag.
  std::string send(std::string_view frame) {
    const hex::Bytes f = bytes(frame);
    hex::Bytes command{0x04, static_cast<std::uint8_t>(f.size())};
    command.insert(command.end(), f.begin(), f.end());
    return chip.execute(command, field);
  }
  Iso14443ATag& a(int i) { return dynamic_cast<Iso14443ATag&>(*field.tags[static_cast<std::size_t>(i)]); }
  TopazTag& topaz(int i) { return dynamic_cast<TopazTag&>(*field.tags[static_cast<std::size_t>(i)]); }
  std::string memory(int i) { return hex::fromBytes(field.tags[static_cast<std::size_t>(i)]->memory()); }
  std::string page(int tag, int p) { return memory(tag).substr(static_cast<std::size_t>(p) * 8, 8); }
  void activateSingle() {
    ASSERT_EQ(send("2607"), "8005" "0400" "080000");
    ASSERT_EQ(send("932008"), "8008" "1A2B3C4D40" "080000");
    ASSERT_EQ(send("93701A2B3C4D4028"), "8006" "08B6DD" "080000");
  }
};

TEST_F(Iso14443ATagsTest, LoaderMakesTheTagsOfBothKinds) {
  load({kSingle, kTopaz});
  EXPECT_EQ(a(0).uid(), bytes("1A2B3C4D"));
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
  EXPECT_EQ(a(0).pageCount(), 16);
  EXPECT_EQ(topaz(1).state(), TopazTag::State::Idle);
}

TEST_F(Iso14443ATagsTest, CascadeLevelsCarryTheCascadeTagAndTheCheckByte) {
  using sim::iso14443a::cascadeLevels;
  EXPECT_EQ(cascadeLevels(bytes("1A2B3C4D")), (std::vector<hex::Bytes>{bytes("1A2B3C4D40")}));
  EXPECT_EQ(cascadeLevels(bytes("04A1B2C3D4E5F6")),
            (std::vector<hex::Bytes>{bytes("8804A1B29F"), bytes("C3D4E5F604")}));
  EXPECT_EQ(cascadeLevels(bytes("0102030405060708090A")),
            (std::vector<hex::Bytes>{bytes("8801020388"), bytes("880405068F"), bytes("0708090A0C")}));
  EXPECT_TRUE(cascadeLevels(bytes("010203")).empty());
}

TEST_F(Iso14443ATagsTest, SingleSizeUidAnswersAtqaUidAndSakWithTheTail) {
  load({kSingle});
  // ATQA without CRC: eight bits in the first byte, no error, no collision.
  EXPECT_EQ(send("2607"), "8005" "0400" "080000");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Ready);
  EXPECT_EQ(send("932008"), "8008" "1A2B3C4D40" "080000");
  // The SAK closes with CRC_A; the chip finds it good.
  EXPECT_EQ(referenceCrcA("08"), "B6DD");
  EXPECT_EQ(send("93701A2B3C4D4028"), "8006" "08B6DD" "080000");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Active);
}

TEST_F(Iso14443ATagsTest, DoubleSizeUidTakesTwoCascadeLevels) {
  load({kDouble});
  EXPECT_EQ(send("2607"), "8005" "4400" "080000");
  EXPECT_EQ(send("932008"), "8008" "8804A1B29F" "080000");
  // More levels follow: SAK 04, the cascade bit.
  EXPECT_EQ(send("93708804A1B29F28"), "8006" "04" + referenceCrcA("04") + "080000");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Ready);
  EXPECT_EQ(a(0).cascadeLevel(), 1);
  EXPECT_EQ(send("952008"), "8008" "C3D4E5F604" "080000");
  EXPECT_EQ(send("9570C3D4E5F60428"), "8006" "00" + referenceCrcA("00") + "080000");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Active);
}

TEST_F(Iso14443ATagsTest, TripleSizeUidTakesThreeLevelsAndAnswersAtItsOwnLevel) {
  load({kTriple});
  EXPECT_EQ(send("2607"), "8005" "8400" "080000");
  EXPECT_EQ(send("932008"), "8008" "8801020388" "080000");
  EXPECT_EQ(send("93708801020388" "28"), "8006" "04DA17" "080000");
  EXPECT_EQ(send("952008"), "8008" "880405068F" "080000");
  EXPECT_EQ(send("9570880405068F" "28"), "8006" "04DA17" "080000");
  // The third level answered to the select code 93 as well: the level is the tag's.
  EXPECT_EQ(send("932008"), "8008" "0708090A0C" "080000");
  EXPECT_EQ(send("97700708090A0C" "28"), "8006" "20" + referenceCrcA("20") + "080000");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Active);
}

TEST_F(Iso14443ATagsTest, SelectOfAnotherUidKeepsTheTagReadyAndSilent) {
  load({kSingle});
  send("2607");
  EXPECT_EQ(send("93701A2B3C4E4328"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Ready);
  // A select without UID bytes is no select the tag takes: it drops back to idle.
  EXPECT_EQ(send("937028"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
}

TEST_F(Iso14443ATagsTest, TwoTagsCollideInAnticollisionAndBitFramesSeparateThem) {
  load({R"({ "type": "iso14443a", "uid": "11223344", "atqa": "0400", "sak": "08" })",
        R"({ "type": "iso14443a", "uid": "11223355", "atqa": "0400", "sak": "08" })"});
  // Both ATQAs are the same bits: no collision.
  EXPECT_EQ(send("2607"), "8005" "0400" "080000");
  // 11 22 33 44 44 and 11 22 33 55 55 heard together: 55 55, and the first colliding bit
  // is bit 0 of byte 3.
  EXPECT_EQ(send("932008"), "8008" "1122335555" "880300");
  // The reader sends the known 3 bytes and bit 0 = 1 (NVB 51, one bit of the last byte):
  // only the second tag matches, and completes the byte with its 7 upper bits.
  EXPECT_EQ(send("9351112233" "01" "01"), "8005" "5455" "070000");
  EXPECT_EQ(send("93701122335555" "28"), "8006" "08B6DD" "080000");
  EXPECT_EQ(a(1).state(), Iso14443ATag::State::Active);
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Ready);
  // The first tag is still ready: a bit frame with bit 0 = 0 finds it alone.
  EXPECT_EQ(send("9351112233" "00" "01"), "8005" "4444" "070000");
}

TEST_F(Iso14443ATagsTest, AnticollisionWithAWrongNvbSendsTheTagBackToIdle) {
  load({kSingle});
  send("2607");
  // NVB 00, as the panel sends with the argument "00".
  EXPECT_EQ(send("930008"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
  EXPECT_EQ(send("2607"), "8005" "0400" "080000");
}

TEST_F(Iso14443ATagsTest, HaltedTagWakesOnlyOnWupa) {
  load({kSingle});
  activateSingle();
  // HLTA: 50 00 with CRC_A; no answer.
  EXPECT_EQ(send("500028"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Halt);
  EXPECT_EQ(send("2607"), "8700");
  EXPECT_EQ(send("5207"), "8005" "0400" "080000");
  // Woken from halt, a frame the tag does not take sends it back to halt, not to idle.
  EXPECT_EQ(send("5000"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Halt);
}

TEST_F(Iso14443ATagsTest, TheSingleByteFiftyIsNoHaltAndLeavesTheTagIdle) {
  load({kSingle});
  activateSingle();
  // "5000": the byte 50 with flag 00, no second byte, no CRC.
  EXPECT_EQ(send("5000"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
  EXPECT_EQ(send("2607"), "8005" "0400" "080000");
}

TEST_F(Iso14443ATagsTest, ReqaWhileActiveIsNotAnsweredAndTheTagGoesIdle) {
  load({kSingle});
  activateSingle();
  EXPECT_EQ(send("2607"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
  EXPECT_EQ(send("2607"), "8005" "0400" "080000");
}

TEST_F(Iso14443ATagsTest, ReadGivesSixteenBytesFromAPageWithCrc) {
  load({kSingle});
  activateSingle();
  const std::string data = "1A2B3C4D" "40000000" "00000000" "E1100600";
  EXPECT_EQ(referenceCrcA(data), "1974");
  EXPECT_EQ(send("300028"), "8015" + data + "1974" "080000");
}

TEST_F(Iso14443ATagsTest, ReadNearTheEndRollsOverToPageZero) {
  load({kSingle});
  activateSingle();
  const std::string data = "28292A2B" "2C2D2E2F" "1A2B3C4D" "40000000";
  EXPECT_EQ(send("300E28"), "8015" + data + referenceCrcA(data) + "080000");
}

TEST_F(Iso14443ATagsTest, ReadPastTheMemoryIsANakInFourBits) {
  load({kSingle});
  activateSingle();
  EXPECT_EQ(send("301028"), "900400");
  // After a NAK the tag is idle again.
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
}

TEST_F(Iso14443ATagsTest, ReadWithoutCrcIsNotACommandOfTheActiveState) {
  load({kSingle});
  activateSingle();
  EXPECT_EQ(send("300008"), "8700");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
}

TEST_F(Iso14443ATagsTest, WriteIsAcknowledgedInFourBitsAndChangesThePage) {
  load({kSingle});
  activateSingle();
  EXPECT_EQ(send("A204CAFEBABE28"), "90040A");
  EXPECT_EQ(page(0, 4), "CAFEBABE");
  EXPECT_EQ(page(0, 5), "04050607");
  // The field file's dump shows the change.
  EXPECT_NE(sim::fieldToJson(field).find("CAFEBABE04050607"), std::string::npos);
}

TEST_F(Iso14443ATagsTest, CompatibilityWriteTakesTwoFramesAndWritesFourOfSixteenBytes) {
  load({kSingle});
  activateSingle();
  EXPECT_EQ(send("A00628"), "90040A");
  EXPECT_EQ(page(0, 6), "08090A0B");
  EXPECT_EQ(send("11223344 55667788 99AABBCC DDEEFF00 28"), "90040A");
  EXPECT_EQ(page(0, 6), "11223344");
  EXPECT_EQ(page(0, 7), "0C0D0E0F");
  // The next frame is a command again.
  EXPECT_EQ(send("300628"), "8015" "11223344" "0C0D0E0F" "10111213" "14151617" +
                                referenceCrcA("112233440C0D0E0F1011121314151617") + "080000");
}

TEST_F(Iso14443ATagsTest, WritesToTheUidPagesOrPastTheMemoryAreRefused) {
  load({kSingle});
  activateSingle();
  EXPECT_EQ(send("A20000000000" "28"), "900400");
  EXPECT_EQ(page(0, 0), "1A2B3C4D");
  activateSingle();
  EXPECT_EQ(send("A21000000000" "28"), "900400");
  activateSingle();
  EXPECT_EQ(send("A010" "28"), "900400");
}

TEST_F(Iso14443ATagsTest, LockBitsAndTheCapabilityContainerCanOnlyBeSet) {
  load({kSingle});
  activateSingle();
  // Page 2: bytes 0 and 1 stay, the lock bytes are ORed: F0 locks pages 4 to 7.
  EXPECT_EQ(send("A202FFFFF000" "28"), "90040A");
  EXPECT_EQ(page(0, 2), "0000F000");
  EXPECT_EQ(send("A2050000000028"), "900400");
  EXPECT_EQ(page(0, 5), "04050607");
  activateSingle();
  EXPECT_EQ(send("A2080000000028"), "90040A");
  EXPECT_EQ(page(0, 8), "00000000");
  // The capability container is one-time programmable.
  EXPECT_EQ(send("A203000000FF28"), "90040A");
  EXPECT_EQ(page(0, 3), "E11006FF");
}

TEST_F(Iso14443ATagsTest, SevenByteUidStandsInTheFirstPagesOfMemory) {
  load({kDouble});
  EXPECT_EQ(memory(0).substr(0, 18), "04A1B29F" "C3D4E5F6" "04");
}

TEST_F(Iso14443ATagsTest, AnswerWithoutTheCrcTheReaderAskedForIsFlagged) {
  load({});
  struct NoCrcTag : sim::Tag {
    NoCrcTag() : Tag(sim::TagSetup{"scripted", sim::Air::Iso14443A, sim::Json{{"type", "scripted"}}, 0, 0, {}}) {}
    std::optional<hex::Bytes> receive(const sim::AirFrame&) override { return bytes("AABBCC"); }
  };
  field.tags.push_back(std::make_unique<NoCrcTag>());
  EXPECT_EQ(send("300028"), "8006" "AABBCC" "280000");
  EXPECT_EQ(send("300008"), "8006" "AABBCC" "080000");
}

TEST_F(Iso14443ATagsTest, NoTagOrNoProtocolAnswers8700) {
  load({});
  EXPECT_EQ(send("2607"), "8700");
  load({kSingle});
  ASSERT_EQ(run("0202 0000"), "0000");
  EXPECT_EQ(send("2607"), "8700");
}

TEST_F(Iso14443ATagsTest, FieldOffReturnsTheTagToIdle) {
  load({kSingle});
  activateSingle();
  ASSERT_EQ(run("0202 0000"), "0000");
  EXPECT_EQ(a(0).state(), Iso14443ATag::State::Idle);
}

// --- Topaz ------------------------------------------------------------------------------

TEST_F(Iso14443ATagsTest, TopazAnswersReqaAndRidWithCrcB) {
  load({kTopaz});
  ASSERT_EQ(run("0204 02000300"), "0000");
  EXPECT_EQ(send("2607"), "8005" "0C00" "080000");
  // RID: HR0, HR1, UID0 to UID3, CRC_B (ISO/IEC 13239, low byte first).
  const std::string raw = "\x11\x48\x5E\x7A\x11\x22";
  const std::uint16_t crc = simtest::referenceCrc13239(raw);
  EXPECT_EQ(crc, 0x2CB9);
  EXPECT_EQ(send("78000000000000A8"), "800B" "11485E7A1122" "B92C" "080000");
}

TEST_F(Iso14443ATagsTest, TopazTakesNoAnticollisionAndNeedsReqaFirst) {
  load({kTopaz});
  EXPECT_EQ(send("78000000000000A8"), "8700");
  send("2607");
  EXPECT_EQ(send("932008"), "8700");
  EXPECT_EQ(topaz(0).state(), TopazTag::State::Ready);
}

TEST_F(Iso14443ATagsTest, TopazReadsAndWritesOneByteAtATime) {
  load({kTopaz});
  send("2607");
  EXPECT_EQ(memory(0).substr(0, 14), "5E7A1122334455");
  EXPECT_EQ(send("010D005E7A1122A8"), "8007" "0D10" "BEAF" "080000");
  EXPECT_EQ(send("530D225E7A1122A8"), "8007" "0D22" "2FBD" "080000");
  EXPECT_EQ(memory(0).substr(0x0D * 2, 2), "22");
  // WRITE-NE only sets bits: 01 | 80.
  EXPECT_EQ(send("1A0F805E7A1122A8"), "8007" "0F81" "0E19" "080000");
  EXPECT_EQ(memory(0).substr(0x0F * 2, 2), "81");
}

TEST_F(Iso14443ATagsTest, TopazIgnoresAnotherUidAndTheUidBlock) {
  load({kTopaz});
  send("2607");
  EXPECT_EQ(send("010D005E7A1123A8"), "8700");
  EXPECT_EQ(send("5302FF5E7A1122A8"), "8700");
  EXPECT_EQ(memory(0).substr(4, 2), "11");
  // Past the memory: unheard.
  EXPECT_EQ(send("0178005E7A1122A8"), "8700");
}

TEST_F(Iso14443ATagsTest, TopazLockBitsLockWholeBlocks) {
  load({kTopaz});
  send("2607");
  // LOCK-0 (byte 70) bit 1 locks block 1.
  EXPECT_EQ(send("1A70025E7A1122A8").substr(0, 8), "80077002");
  EXPECT_EQ(send("5309005E7A1122A8"), "8700");
  EXPECT_EQ(send("5310005E7A1122A8").substr(0, 8), "80071000");
}

TEST_F(Iso14443ATagsTest, TopazReadAllDoesNotFitTheAnswerBuffer) {
  load({kTopaz});
  send("2607");
  EXPECT_EQ(send("000000" "5E7A1122" "A8"), "8900");
}

TEST_F(Iso14443ATagsTest, TopazAndTypeATagCollideOnTheirAtqa) {
  load({kSingle, kTopaz});
  // 04 00 and 0C 00: bit 3 of byte 0 differs.
  EXPECT_EQ(send("2607"), "8005" "0C00" "880003");
}

}  // namespace

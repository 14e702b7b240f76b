// The simulated FeliCa card through the chip's Send Receive: the chip puts the length
// byte in front of the reader's frame and the CRC-16 behind it; the card answers Polling
// (REQC) with its IDm and PMm in a time slot of those asked for, and Request Response.
#include <gtest/gtest.h>

#include <set>

#include "simulator/chip.h"
#include "simulator/fieldfile.h"
#include "simulator/tags/felica.h"

namespace {

using sim::FelicaTag;

hex::Bytes bytes(std::string_view text) { return *hex::toBytes(hex::withoutBlanks(text)); }

// CRC of JIS X 6319-4 written out bit by bit: polynomial x^16 + x^12 + x^5 + 1, preset 0,
// most significant bit first, sent high byte first.
std::string referenceFelicaCrc(const hex::Bytes& data) {
  std::uint16_t crc = 0;
  for (std::uint8_t byte : data)
    for (int bit = 7; bit >= 0; --bit) {
      const bool mix = (((crc >> 15) & 1) ^ ((byte >> bit) & 1)) != 0;
      crc = static_cast<std::uint16_t>(crc << 1);
      if (mix) crc ^= 0x1021;
    }
  return hex::byte(static_cast<std::uint8_t>(crc >> 8)) + hex::byte(static_cast<std::uint8_t>(crc & 0xFF));
}

// What the chip reports: "80", length, LEN + payload + CRC as the card sent them, tail "00".
std::string cardAnswer(const std::string& payload) {
  hex::Bytes frame = bytes(payload);
  frame.insert(frame.begin(), static_cast<std::uint8_t>(frame.size() + 1));
  const std::string onAir = hex::fromBytes(frame) + referenceFelicaCrc(frame);
  return "80" + hex::byte(static_cast<std::uint8_t>(frame.size() + 3)) + onAir + "00";
}

constexpr const char* kCard = R"({ "tags": [
  { "type": "felica", "idm": "012E4CD2A3B4C5D6", "pmm": "0120220427674EFF", "systemCode": "12FC" }
]})";
const std::string kIdm = "012E4CD2A3B4C5D6";
const std::string kPmm = "0120220427674EFF";

class FelicaTagTest : public ::testing::Test {
 protected:
  sim::Chip chip;
  sim::FieldContents field;

  void SetUp() override { load(kCard); }
  void load(const char* json) {
    sim::ParseOutcome out = sim::parseField(json, "field text");
    ASSERT_EQ(out.error, "");
    field = std::move(out.contents);
    // The panel's selection: FeliCa, parameter 51 (212 kbit/s, append CRC).
    ASSERT_EQ(chip.execute(bytes("0202 0451"), field), "0000");
  }
  std::string send(const std::string& frame) {
    const hex::Bytes f = bytes(frame);
    hex::Bytes command{0x04, static_cast<std::uint8_t>(f.size())};
    command.insert(command.end(), f.begin(), f.end());
    return chip.execute(command, field);
  }
  FelicaTag& card() { return dynamic_cast<FelicaTag&>(*field.tags[0]); }
};

TEST_F(FelicaTagTest, ReqcIsAnsweredWithIdmAndPmm) {
  const std::string answer = send("00FFFF0000");
  EXPECT_EQ(answer, cardAnswer("01" + kIdm + kPmm));
  // Twenty-one bytes: LEN 12 (18), response code, IDm, PMm, CRC, tail.
  EXPECT_EQ(answer.substr(0, 8), "80151201");
  EXPECT_EQ(answer.substr(8, 16), kIdm);
  EXPECT_EQ(card().lastSlot(), 0);
}

TEST_F(FelicaTagTest, SystemCodeSelectsTheCardWithFfAsAny) {
  EXPECT_EQ(send("0012FC0000"), cardAnswer("01" + kIdm + kPmm));
  EXPECT_EQ(send("0012FF0000"), cardAnswer("01" + kIdm + kPmm));
  EXPECT_EQ(send("00FFFC0000"), cardAnswer("01" + kIdm + kPmm));
  EXPECT_EQ(send("0000030000"), "8700");
}

TEST_F(FelicaTagTest, RequestCodeOneAddsTheSystemCode) {
  EXPECT_EQ(send("00FFFF0100"), cardAnswer("01" + kIdm + kPmm + "12FC"));
}

TEST_F(FelicaTagTest, TheCardAnswersInOneOfTheSlotsAskedFor) {
  std::set<int> slots;
  for (int i = 0; i < 24; ++i) {
    EXPECT_EQ(send("00FFFF0003"), cardAnswer("01" + kIdm + kPmm));
    slots.insert(card().lastSlot());
  }
  EXPECT_GE(*slots.begin(), 0);
  EXPECT_LE(*slots.rbegin(), 3);
  EXPECT_GT(slots.size(), 1u);  // the draw moves among the four
  send("00FFFF0000");
  EXPECT_EQ(card().lastSlot(), 0);
}

TEST_F(FelicaTagTest, RequestResponseTellsTheMode) {
  EXPECT_EQ(send("04" + kIdm), cardAnswer("05" + kIdm + "00"));
  EXPECT_EQ(send("04" "0102030405060708"), "8700");
}

TEST_F(FelicaTagTest, AFrameWithoutCrcOrOfAnotherProtocolIsNotHeard) {
  ASSERT_EQ(chip.execute(bytes("0202 0450"), field), "0000");  // no CRC appended
  EXPECT_EQ(send("00FFFF0000"), "8700");
  ASSERT_EQ(chip.execute(bytes("0204 03010180"), field), "0000");  // ISO 14443-B
  EXPECT_EQ(send("00FFFF0000"), "8700");
}

TEST_F(FelicaTagTest, TwoCardsAnsweringAtOnceAreACommunicationError) {
  load(R"({ "tags": [
    { "type": "felica", "idm": "012E4CD2A3B4C5D6", "pmm": "0120220427674EFF" },
    { "type": "felica", "idm": "0101010101010101", "pmm": "0120220427674EFF" } ]})");
  EXPECT_EQ(send("00FFFF0000"), "8600");
}

}  // namespace

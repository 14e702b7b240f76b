// The chip's framing unwrapped into capture packets, exchange by exchange, with the exact
// pseudo-headers and frames; and the whole file as its blocks.
#include <gtest/gtest.h>

#include "export/Capture.h"

using capture::Bytes;
using capture::Converter;
using capture::Packet;
using reader::ExchangeRecord;
using reader::Op;

namespace {

ExchangeRecord rec(Op op, std::string request, std::string answer, std::int64_t t = 1000, std::int32_t status = 0) {
  ExchangeRecord r;
  r.timeUs = t;
  r.op = op;
  r.status = status;
  r.request = std::move(request);
  r.answer = std::move(answer);
  return r;
}

Bytes b(std::initializer_list<int> v) {
  Bytes out;
  for (int x : v) out.push_back(static_cast<std::uint8_t>(x));
  return out;
}

}  // namespace

TEST(Capture, Iso14443APseudoHeaderIsVersionEventAndBigEndianLength) {
  EXPECT_EQ(capture::iso14443Packet(capture::Event::ReaderToCard, b({0x26})), b({0x00, 0xFE, 0x00, 0x01, 0x26}));
  EXPECT_EQ(capture::iso14443Packet(capture::Event::FieldOn, {}), b({0x00, 0xFC, 0x00, 0x00}));
  EXPECT_EQ(capture::iso14443Packet(capture::Event::CardToReader, Bytes(0x123, 0)).size(), 4u + 0x123);
  EXPECT_EQ(capture::iso14443Packet(capture::Event::CardToReader, Bytes(0x123, 0))[2], 0x01);
  EXPECT_EQ(capture::iso14443Packet(capture::Event::CardToReader, Bytes(0x123, 0))[3], 0x23);
}

TEST(Capture, Iso14443AActivationUnwrapsFlagTailAndCrc) {
  Converter c;
  std::vector<Packet> p = c.packets(rec(Op::Select, "02000180", "0000", 1000));
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].interfaceId, capture::kIso14443Interface);
  EXPECT_EQ(p[0].data, b({0x00, 0xFC, 0x00, 0x00}));

  // REQA: seven bits, no CRC; ATQA behind the status byte and the collision byte and bit.
  p = c.packets(rec(Op::SendReceive, "2607", "80054400080000", 2000));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFE, 0x00, 0x01, 0x26}));
  EXPECT_EQ(p[0].comment, "7 valid bits in the last byte");
  EXPECT_EQ(p[1].data, b({0x00, 0xFF, 0x00, 0x02, 0x44, 0x00}));
  EXPECT_EQ(p[1].comment, "");

  // SELECT with the append-CRC flag: the chip added the CRC, so it was not captured;
  // the SAK comes with the tag's CRC_A.
  p = c.packets(rec(Op::SendReceive, "93708804A1B29F28", "800604DA17080000", 3000));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFA, 0x00, 0x07, 0x93, 0x70, 0x88, 0x04, 0xA1, 0xB2, 0x9F}));
  EXPECT_EQ(p[1].data, b({0x00, 0xFF, 0x00, 0x03, 0x04, 0xDA, 0x17}));

  // A CRC error flagged by the chip stays with the frame as a comment.
  p = c.packets(rec(Op::SendReceive, "300428", "8006AABBCC280000", 4000));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[1].data, b({0x00, 0xFF, 0x00, 0x03, 0xAA, 0xBB, 0xCC}));
  EXPECT_EQ(p[1].comment, "chip reports CRC error");

  p = c.packets(rec(Op::FieldOff, "", "0000", 5000));
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFD, 0x00, 0x00}));
}

TEST(Capture, ShortAnswerKeepsItsValidBits) {
  Converter c;
  c.packets(rec(Op::Select, "0200", "0000"));
  const std::vector<Packet> p = c.packets(rec(Op::SendReceive, "A2040102030428", "90040A"));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFA, 0x00, 0x06, 0xA2, 0x04, 0x01, 0x02, 0x03, 0x04}));
  EXPECT_EQ(p[1].data, b({0x00, 0xFF, 0x00, 0x01, 0x0A}));
  EXPECT_EQ(p[1].comment, "4 valid bits in the last byte");
}

TEST(Capture, NoTagLeavesTheRequestWithTheChipResult) {
  Converter c;
  c.packets(rec(Op::Select, "0200", "0000"));
  const std::vector<Packet> p = c.packets(rec(Op::SendReceive, "2607", "8700"));
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFE, 0x00, 0x01, 0x26}));
  EXPECT_EQ(p[0].comment, "7 valid bits in the last byte; no answer, chip result 87");
}

TEST(Capture, Iso14443BTakesAppendCrcFromTheSelectAndHasAOneByteTail) {
  Converter c;
  EXPECT_EQ(c.packets(rec(Op::Select, "03010180", "0000"))[0].data, b({0x00, 0xFC, 0x00, 0x00}));
  std::vector<Packet> p = c.packets(rec(Op::SendReceive, "050000", "800F50A1B2C3D41122334400817159D300"));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFA, 0x00, 0x03, 0x05, 0x00, 0x00}));
  EXPECT_EQ(p[1].data, b({0x00, 0xFF, 0x00, 0x0E, 0x50, 0xA1, 0xB2, 0xC3, 0xD4, 0x11, 0x22, 0x33, 0x44, 0x00, 0x81,
                          0x71, 0x59, 0xD3}));
  // The same protocol without append CRC sends its frame whole.
  c.packets(rec(Op::Select, "0300", "0000"));
  p = c.packets(rec(Op::SendReceive, "0500008E04", "8700"));
  EXPECT_EQ(p[0].data, b({0x00, 0xFE, 0x00, 0x05, 0x05, 0x00, 0x00, 0x8E, 0x04}));
}

TEST(Capture, Iso15693AndFelicaGoToTheSecondInterface) {
  Converter c;
  std::vector<Packet> p = c.packets(rec(Op::Select, "010D", "0000"));
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].interfaceId, capture::kOtherInterface);
  EXPECT_EQ(p[0].data, b({0x00, 0xFC, 0x01, 0xFF, 0x00, 0x00, 0x00, 0x00}));
  p = c.packets(rec(Op::SendReceive, "260100", "800D00001122334455667788AABB00"));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFA, 0x01, 0xFF, 0x00, 0x00, 0x00, 0x03, 0x26, 0x01, 0x00}));
  EXPECT_EQ(p[1].data, b({0x00, 0xFF, 0x01, 0xFF, 0x00, 0x00, 0x00, 0x0C, 0x00, 0x00, 0x11, 0x22, 0x33, 0x44, 0x55,
                          0x66, 0x77, 0x88, 0xAA, 0xBB}));
  // The tail's collision and CRC bits.
  p = c.packets(rec(Op::SendReceive, "260100", "8004AABBCC03"));
  EXPECT_EQ(p[1].comment, "chip reports collision, CRC error");

  // FeliCa: the chip puts the length byte in front of the frame.
  c.packets(rec(Op::Select, "0451", "0000"));
  p = c.packets(rec(Op::SendReceive, "00FFFF0000", "8700"));
  EXPECT_EQ(p[0].data, b({0x00, 0xFA, 0x04, 0xFF, 0x00, 0x00, 0x00, 0x06, 0x06, 0x00, 0xFF, 0xFF, 0x00, 0x00}));
  p = c.packets(rec(Op::FieldOff, "", "0000"));
  EXPECT_EQ(p[0].interfaceId, capture::kOtherInterface);
  EXPECT_EQ(p[0].data, b({0x00, 0xFD, 0x04, 0xFF, 0x00, 0x00, 0x00, 0x00}));
}

TEST(Capture, ChipOnlyCallsAreACallAndAReturnWithOperationAndStatus) {
  Converter c;
  std::vector<Packet> p = c.packets(rec(Op::Echo, "", "5500"));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].interfaceId, capture::kOtherInterface);
  EXPECT_EQ(p[0].data, b({0x00, 0xF0, 0x00, 0x05, 0x00, 0x00, 0x00, 0x00}));
  EXPECT_EQ(p[1].data, b({0x00, 0xF1, 0x00, 0x05, 0x00, 0x00, 0x00, 0x02, 0x55, 0x00}));

  p = c.packets(rec(Op::KQCmd, "0109043A005804", "0000"));
  EXPECT_EQ(p[0].data, b({0x00, 0xF0, 0x00, 0x08, 0x00, 0x00, 0x00, 0x07, 0x01, 0x09, 0x04, 0x3A, 0x00, 0x58, 0x04}));

  // A status 5 call never reached the air: it stays a driver call, with its status.
  c.packets(rec(Op::Select, "0200", "0000"));
  p = c.packets(rec(Op::SendReceive, "2607", "", 1000, 5));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[1].data, b({0x00, 0xF1, 0x00, 0x07, 0x05, 0x00, 0x00, 0x00}));

  // Text that is no hexadecimal goes as it is, flagged.
  p = c.packets(rec(Op::GetDLLrev, "", "0.5.0"));
  EXPECT_EQ(p[1].data, b({0x00, 0xF1, 0x00, 0x02, 0x00, 0x01, 0x00, 0x05, '0', '.', '5', '.', '0'}));
}

TEST(Capture, KQCmdCarryingProtocolSelectOrSendRecvIsUnwrappedToo) {
  Converter c;
  std::vector<Packet> p = c.packets(rec(Op::KQCmd, "0102020200", "0000"));
  ASSERT_EQ(p.size(), 1u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFC, 0x00, 0x00}));
  p = c.packets(rec(Op::KQCmd, "0104022607", "80054400080000"));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data, b({0x00, 0xFE, 0x00, 0x01, 0x26}));
  EXPECT_EQ(p[1].data, b({0x00, 0xFF, 0x00, 0x02, 0x44, 0x00}));
}

TEST(Capture, FailedOrCardSideSelectIsADriverCall) {
  Converter c;
  std::vector<Packet> p = c.packets(rec(Op::Select, "0900", "8300"));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data[1], 0xF0);
  p = c.packets(rec(Op::Select, "1201", "0000"));
  ASSERT_EQ(p.size(), 2u);
  EXPECT_EQ(p[0].data[1], 0xF0);
  // No reader protocol is on: a Send Receive is a plain driver call.
  p = c.packets(rec(Op::SendReceive, "2607", "8700"));
  EXPECT_EQ(p[0].data[1], 0xF0);
}

TEST(Capture, TimeStampsAreStrictlyIncreasingEvenForTheSameMicrosecond) {
  Converter c;
  std::vector<std::int64_t> times;
  for (const ExchangeRecord& r : {rec(Op::Select, "0200", "0000", 500), rec(Op::SendReceive, "2607", "80054400080000", 500),
                                  rec(Op::Echo, "", "5500", 400), rec(Op::Echo, "", "5500", 900)})
    for (const Packet& p : c.packets(r)) times.push_back(p.timeUs);
  EXPECT_EQ(times, (std::vector<std::int64_t>{500, 501, 502, 503, 504, 900, 901}));
}

TEST(Capture, FileIsHeaderInterfacesThenPackets) {
  std::deque<ExchangeRecord> records{rec(Op::Select, "0200", "0000", 7)};
  const Bytes file = capture::pcapngFile(records);
  const Bytes head = capture::fileHeader();
  ASSERT_GT(file.size(), head.size());
  EXPECT_TRUE(std::equal(head.begin(), head.end(), file.begin()));
  const Bytes tail(file.begin() + static_cast<std::ptrdiff_t>(head.size()), file.end());
  EXPECT_EQ(tail, pcapng::enhancedPacket(0, 7, b({0x00, 0xFC, 0x00, 0x00})));
}

TEST(ExchangeRecorder, KeepsTheNewestWithinItsLimitAndStampsStrictlyIncreasing) {
  reader::ExchangeRecorder r(3);
  for (int i = 0; i < 5; ++i) r.exchanged(rec(Op::Echo, "", std::to_string(i), 100));
  ASSERT_EQ(r.records().size(), 3u);
  EXPECT_EQ(r.records()[0].answer, "2");
  EXPECT_EQ(r.records()[2].answer, "4");
  EXPECT_EQ(r.records()[0].timeUs, 102);
  EXPECT_EQ(r.records()[2].timeUs, 104);
  EXPECT_EQ(r.dropped(), 2u);
  r.clear();
  EXPECT_TRUE(r.records().empty());
}

TEST(ExchangeRecorder, OnlyTheCurrentObserverHearsAndScopesNest) {
  reader::ExchangeRecorder a, b2;
  reader::reportExchange(Op::Echo, "", 0, "5500");
  {
    reader::ObserveExchanges sa(&a);
    reader::reportExchange(Op::Echo, "x", 0, "5500");
    {
      reader::ObserveExchanges sb(&b2);
      reader::reportExchange(Op::SendReceive, "2607", 0, "8700");
    }
    reader::reportExchange(Op::FieldOff, "x", 0, "0000");
  }
  reader::reportExchange(Op::Echo, "", 0, "5500");
  ASSERT_EQ(a.records().size(), 2u);
  EXPECT_EQ(a.records()[0].request, "");  // the echo takes no request
  EXPECT_EQ(a.records()[1].op, Op::FieldOff);
  ASSERT_EQ(b2.records().size(), 1u);
  EXPECT_EQ(b2.records()[0].request, "2607");
  EXPECT_EQ(b2.records()[0].answer, "8700");
  EXPECT_EQ(reader::currentObserver(), nullptr);
}

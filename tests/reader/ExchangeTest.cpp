#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "reader/TraceLog.h"
#include "shell/GlobVariables.h"

namespace {

using reader::FakeDriver;
using reader::Op;

class ExchangeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto& g = glob::state();
    g.statusPanel1 = glob::kBoardConnected;
    g.statusPanel1Changed = nullptr;
    g.iso14443AModulationGain = "D1";
    reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30}));
  }
  void TearDown() override { reader::setClock(nullptr); }

  // The operations called, in order, as "Op:request" texts.
  std::vector<std::string> trail() const {
    std::vector<std::string> out;
    for (const auto& c : fake.calls()) out.push_back(std::string(reader::info(c.op).symbol) + ":" + c.request);
    return out;
  }
  FakeDriver fake;
};

TEST_F(ExchangeTest, CallOnceGivesStatusAndAnswer) {
  fake.queue(Op::Echo, 0, "5500");
  const auto a = reader::callOnce(fake, Op::Echo);
  EXPECT_EQ(a.status, 0);
  EXPECT_EQ(a.text, "5500");
  EXPECT_TRUE(a.ok());
  EXPECT_TRUE(a.good("5500"));
}

TEST_F(ExchangeTest, CallOncePassesTheRequestAsItStands) {
  reader::callOnce(fake, Op::Select, "0200110");
  reader::callOnce(fake, Op::KQCmd, "01 090468010130");
  reader::callOnce(fake, Op::SendReceive, "26010");
  EXPECT_EQ(trail(), (std::vector<std::string>{"TL42RQDll_Select:0200110", "TL42RQDll_KQCmd:01 090468010130",
                                               "TL42RQDll_SendReceive:26010"}));
}

TEST_F(ExchangeTest, EachCallGetsAFreshZeroFilledBuffer) {
  fake.queue(Op::Idn, 0, "ABCDEF");
  fake.queue(Op::Idn, 0, "12");
  EXPECT_EQ(reader::callOnce(fake, Op::Idn).text, "ABCDEF");
  EXPECT_EQ(reader::callOnce(fake, Op::Idn).text, "12");
}

TEST_F(ExchangeTest, StatusZeroMeansOneCallAndNoReconnect) {
  fake.queue(Op::SendReceive, 0, "80050102030000");
  int reconnects = 0;
  const auto a = reader::exchange(fake, Op::SendReceive, "2601000", [&] { ++reconnects; });
  EXPECT_EQ(reconnects, 0);
  EXPECT_EQ(fake.calls().size(), 1u);
  EXPECT_EQ(a.text, "80050102030000");
  EXPECT_TRUE(a.good("80"));
  EXPECT_FALSE(a.good("00"));
}

TEST_F(ExchangeTest, ReconnectCallsTheOperationExactlyTwice) {
  fake.queue(Op::SendReceive, 5, "");
  fake.queue(Op::SendReceive, 5, "");
  fake.queue(Op::SendReceive, 0, "8000");  // a third call would get this
  int reconnects = 0;
  const auto a = reader::exchange(fake, Op::SendReceive, "260100", [&] { ++reconnects; });
  EXPECT_EQ(reconnects, 1);
  EXPECT_EQ(fake.callsOf(Op::SendReceive).size(), 2u);
  EXPECT_EQ(a.status, 5);
  EXPECT_EQ(a.text, "");
}

TEST_F(ExchangeTest, SecondStatusReplacesTheFirst) {
  fake.queue(Op::Echo, 5, "");
  fake.queue(Op::Echo, 0, "5500");
  const auto a = reader::exchange(fake, Op::Echo, {}, [] {});
  EXPECT_EQ(a.status, 0);
  EXPECT_EQ(a.text, "5500");
}

TEST_F(ExchangeTest, RepeatUsesTheSameRequest) {
  fake.queue(Op::KQCmd, 5, "");
  reader::exchange(fake, Op::KQCmd, "010803620100", [] {});
  const auto calls = fake.callsOf(Op::KQCmd);
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].request, "010803620100");
  EXPECT_EQ(calls[1].request, "010803620100");
}

TEST_F(ExchangeTest, OtherFailureStatusesAreNotRetried) {
  for (int status : {1, 2, 4, 6, -1, 255}) {
    fake.clearCalls();
    fake.queue(Op::FieldOff, status, "");
    int reconnects = 0;
    const auto a = reader::exchange(fake, Op::FieldOff, {}, [&] { ++reconnects; });
    EXPECT_EQ(a.status, status);
    EXPECT_EQ(reconnects, 0);
    EXPECT_EQ(fake.calls().size(), 1u);
  }
}

TEST_F(ExchangeTest, RepeatHappensEvenWithoutAReconnectRoutine) {
  fake.queue(Op::Echo, 5, "");
  fake.queue(Op::Echo, 0, "5500");
  const auto a = reader::exchange(fake, Op::Echo, {}, reader::Reconnect{});
  EXPECT_EQ(a.text, "5500");
  EXPECT_EQ(fake.calls().size(), 2u);
}

TEST_F(ExchangeTest, ReconnectSitsBetweenTheTwoCalls) {
  fake.queue(Op::SendReceive, 5, "");
  fake.queue(Op::SendReceive, 0, "800D0000E0020000000000000000");
  reader::exchange(fake, Op::SendReceive, "26010000", reader::reconnectWith(fake, reader::ReconnectKind::Iso15693));
  EXPECT_EQ(trail(), (std::vector<std::string>{"TL42RQDll_SendReceive:26010000", "TL42RQDLL_USBconnect:",
                                               "TL42RQDLL_USBhandlecheck:", "TL42RQDll_Select:010D",
                                               "TL42RQDll_SendReceive:26010000"}));
}

TEST_F(ExchangeTest, ReconnectResultIsIgnored) {
  fake.queue(Op::Echo, 5, "");
  fake.queue(Op::USBhandlecheck, 1, "");  // the reconnect fails
  fake.queue(Op::Echo, 0, "5500");       // the repeat still goes out
  const auto a = reader::exchange(fake, Op::Echo, {}, reader::reconnectWith(fake, reader::ReconnectKind::Plain));
  EXPECT_EQ(a.status, 0);
  EXPECT_EQ(a.text, "5500");
  EXPECT_EQ(trail(), (std::vector<std::string>{"TL42RQDll_Echo:", "TL42RQDLL_USBconnect:",
                                               "TL42RQDLL_USBhandlecheck:", "TL42RQDll_Echo:"}));
}

TEST_F(ExchangeTest, EmptyAnswerGivesALogLineEndingInArrows) {
  fake.setHandler([](Op, const std::string&) { return FakeDriver::Reply{5, ""}; });
  reader::TraceLog log;
  const auto a = reader::exchange(fake, Op::SendReceive, "0026", reader::reconnectWith(fake, reader::ReconnectKind::Plain));
  log.titled("REQA", reader::logWord(Op::SendReceive), "0026", a.text);
  EXPECT_EQ(a.status, 5);
  EXPECT_EQ(log.text(), "\r\n11-21-2026 10:20:30\tREQA\r\n\t\t\t>>> TL42RQDLL_SENDRECV, 0026\r\n\t\t\t<<< ");
}

TEST_F(ExchangeTest, BoardPulledOutMarksNotConnectedAndCallsTwice) {
  fake.setHandler([](Op, const std::string&) { return FakeDriver::Reply{5, ""}; });
  glob::state().statusPanel1 = "Ready DEMO-TL42RQ-A BOARD CONNECTED";
  const auto a = reader::exchange(fake, Op::Select, "0451", reader::reconnectWith(fake, reader::ReconnectKind::Iso18092));
  EXPECT_EQ(a.status, 5);
  EXPECT_EQ(glob::state().statusPanel1, "Ready DEMO-TL42RQ-A BOARD NOT CONNECTED");
  EXPECT_EQ(trail(), (std::vector<std::string>{"TL42RQDll_Select:0451", "TL42RQDLL_USBconnect:",
                                               "TL42RQDLL_USBhandlecheck:", "TL42RQDll_Select:0451"}));
}

TEST_F(ExchangeTest, LongAnswerWithoutNulComesBackRaw) {
  const std::string raw(300, 'A');
  fake.setRawAnswer(raw);
  const auto a = reader::callOnce(fake, Op::Idn);
  EXPECT_EQ(a.text, raw);
}

TEST_F(ExchangeTest, AnswerLongerThanTheGuardIsCutAtTheGuard) {
  fake.setRawAnswer(std::string(10000, '7'));
  const auto a = reader::callOnce(fake, Op::Polling_Reading);
  EXPECT_EQ(a.text, std::string(reader::kGuardedAnswerSize - 1, '7'));
}

TEST_F(ExchangeTest, NonHexAnswerComesBackAsItStands) {
  const std::string raw = "ZZ\x01\x7f\xff\xc3\xa9 not hex\tat all";
  fake.setRawAnswer(raw);
  EXPECT_EQ(reader::callOnce(fake, Op::Echo).text, raw);
}

TEST_F(ExchangeTest, AnswerEndsAtTheFirstNul) {
  fake.setRawAnswer(std::string("0002\0AABB", 9));
  EXPECT_EQ(reader::callOnce(fake, Op::getMCUrev).text, "0002");
}

TEST_F(ExchangeTest, FakeCutsQueuedAnswersToTheAgreedBuffer) {
  fake.queue(Op::Idn, 0, std::string(400, 'C'));
  EXPECT_EQ(reader::callOnce(fake, Op::Idn).text, std::string(reader::kAnswerSize - 1, 'C'));
}

TEST_F(ExchangeTest, GoodLooksAtTheFirstCharactersOnly) {
  reader::Answer a{0, "5500"};
  EXPECT_TRUE(a.good("5500"));
  EXPECT_TRUE(a.good("55"));
  EXPECT_FALSE(a.good("5501"));
  EXPECT_FALSE(a.good("550000"));
  reader::Answer failed{5, "5500"};
  EXPECT_FALSE(failed.ok());
  EXPECT_FALSE(failed.good("5500"));
  reader::Answer empty{0, ""};
  EXPECT_FALSE(empty.good("00"));
}

TEST_F(ExchangeTest, FakeDriverPlaysQueueThenHandlerThenDefault) {
  fake.queue(Op::Echo, 0, "5500");
  fake.setHandler([](Op op, const std::string& req) {
    return op == Op::Select ? FakeDriver::Reply{0, "00" + req} : FakeDriver::Reply{3, "X"};
  });
  EXPECT_EQ(reader::callOnce(fake, Op::Echo).text, "5500");
  const auto second = reader::callOnce(fake, Op::Echo);
  EXPECT_EQ(second.status, 3);
  EXPECT_EQ(second.text, "X");
  EXPECT_EQ(reader::callOnce(fake, Op::Select, "0451").text, "000451");
  FakeDriver plain;
  const auto none = reader::callOnce(plain, Op::FieldOff);
  EXPECT_EQ(none.status, 0);
  EXPECT_EQ(none.text, "");
}

TEST_F(ExchangeTest, FakeRecordsNoRequestForOperationsWithoutOne) {
  reader::callOnce(fake, Op::Echo, "SHOULD NOT SHOW");
  ASSERT_EQ(fake.calls().size(), 1u);
  EXPECT_EQ(fake.calls()[0].request, "");
}

}  // namespace

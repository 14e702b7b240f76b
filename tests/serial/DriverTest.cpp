// The serial driver's operations on a scripted line (answers in pieces, noise, half answers,
// silence, a line that goes away), on a line looped into the emulated chip (the same text
// as the simulated board for every chip operation), and the real port code on a
// pseudo-terminal.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <deque>
#include <functional>

#include "common/chipframe.h"
#include "serial/driver.h"
#include "serial/emulator/emulatedchip.h"
#include "serial/frames.h"
#include "simulator/board.h"

using namespace serialline;

namespace {

hex::Bytes bytes(const char* text) { return *hex::toBytes(text); }

// One thing the line does when read: bytes arrive, nothing arrives in time, or it is gone.
struct Event {
  ReadResult result;
  hex::Bytes data;
};
Event data(const char* text) { return {ReadResult::Data, bytes(text)}; }
Event silence() { return {ReadResult::TimedOut, {}}; }
Event gone() { return {ReadResult::HungUp, {}}; }

// A line whose chip answers each written frame with the events `respond` returns.
class ScriptedLine final : public Line {
 public:
  bool openable = true;
  int opens = 0;
  int pulses = 0;
  int discards = 0;
  std::vector<hex::Bytes> written;
  std::vector<int> readTimeouts;
  std::function<std::deque<Event>(const hex::Bytes&)> respond = [](const hex::Bytes&) { return std::deque<Event>{}; };

  bool open() override {
    ++opens;
    open_ = openable;
    return open_;
  }
  void close() override { open_ = false; }
  bool isOpen() const override { return open_; }
  bool write(const hex::Bytes& b, int) override {
    if (!open_) return false;
    written.push_back(b);
    events_ = respond(b);
    return true;
  }
  ReadResult read(hex::Bytes& out, int timeoutMs) override {
    readTimeouts.push_back(timeoutMs);
    if (events_.empty()) return ReadResult::TimedOut;
    Event e = events_.front();
    events_.pop_front();
    if (e.result == ReadResult::HungUp) open_ = false;
    out.insert(out.end(), e.data.begin(), e.data.end());
    return e.result;
  }
  void discardInput() override { ++discards; }
  bool pulseWakeUp() override {
    ++pulses;
    return true;
  }

 private:
  bool open_ = false;
  std::deque<Event> events_;
};

// The chip of the emulator straight behind the line: what the emulator answers on its
// pseudo-terminal, without the terminal.
class LoopbackLine final : public Line {
 public:
  explicit LoopbackLine(const std::string& field) : chip_(field) {}
  bool open() override { return open_ = true; }
  void close() override { open_ = false; }
  bool isOpen() const override { return open_; }
  bool write(const hex::Bytes& b, int) override {
    for (std::uint8_t byte : b)
      if (auto frame = commands_.feed(byte)) {
        const hex::Bytes a = chip_.answer(*frame);
        pending_.insert(pending_.end(), a.begin(), a.end());
      }
    return true;
  }
  ReadResult read(hex::Bytes& out, int) override {
    if (pending_.empty()) return ReadResult::TimedOut;
    out.insert(out.end(), pending_.begin(), pending_.end());
    pending_.clear();
    return ReadResult::Data;
  }
  void discardInput() override { pending_.clear(); }
  bool pulseWakeUp() override { return false; }

 private:
  EmulatedChip chip_;
  CommandParser commands_;
  hex::Bytes pending_;
  bool open_ = false;
};

struct Call {
  std::int32_t status;
  std::string answer;
  bool operator==(const Call&) const = default;
};
std::ostream& operator<<(std::ostream& o, const Call& c) { return o << c.status << " \"" << c.answer << '"'; }

template <typename Fn>
Call call(Fn fn) {
  char buffer[256] = {};
  const std::int32_t status = fn(buffer);
  return {status, buffer};
}

constexpr int kTimeout = 50;

}  // namespace

TEST(SerialDriver, IdnSendsItsFrameAndGivesTheAnswerText) {
  ScriptedLine line;
  line.respond = [](const hex::Bytes&) { return std::deque<Event>{data("000C4E464320544C34325251E3D4")}; };
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.idn(a); }), (Call{0, "000C4E464320544C34325251E3D4"}));
  ASSERT_EQ(line.written.size(), 1u);
  EXPECT_EQ(line.written[0], bytes("0100"));
  EXPECT_EQ(line.opens, 1);  // opened at the first need
  EXPECT_EQ(line.discards, 1);
}

TEST(SerialDriver, EachOperationSendsTheChipFrame) {
  ScriptedLine line;
  line.respond = [](const hex::Bytes& f) {
    if (f[0] == 0x55) return std::deque<Event>{data("55")};
    if (f[0] == 0x04) return std::deque<Event>{data("8700")};
    return std::deque<Event>{data("0000")};
  };
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.echo(a); }), (Call{0, "5500"}));
  EXPECT_EQ(call([&](char* a) { return d.select("0451", a); }), (Call{0, "0000"}));
  EXPECT_EQ(call([&](char* a) { return d.sendReceive("26 01 00", a); }), (Call{0, "8700"}));
  EXPECT_EQ(call([&](char* a) { return d.kqCmd("01 0803620100", a); }), (Call{0, "0000"}));
  EXPECT_EQ(call([&](char* a) { return d.fieldOff(a); }), (Call{0, "0000"}));
  const std::vector<hex::Bytes> expected = {bytes("55"), bytes("02020451"), bytes("0403260100"), bytes("0803620100"),
                                            bytes("020100")};
  EXPECT_EQ(line.written, expected);
}

TEST(SerialDriver, RequestThatIsNoFrameIsAnsweredWithoutTouchingTheLine) {
  ScriptedLine line;
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.select("045", a); }), (Call{0, "8200"}));
  EXPECT_EQ(call([&](char* a) { return d.sendReceive("26G1", a); }), (Call{0, "8200"}));
  EXPECT_EQ(call([&](char* a) { return d.kqCmd("03 0100", a); }), (Call{0, "8200"}));
  // A length that does not match the data would desynchronise the chip.
  EXPECT_EQ(call([&](char* a) { return d.kqCmd("01 08036201", a); }), (Call{0, "8200"}));
  EXPECT_EQ(call([&](char* a) { return d.kqCmd("01", a); }), (Call{0, "8200"}));
  // The controller's own anticollision: there is no controller on the line.
  EXPECT_EQ(call([&](char* a) { return d.kqCmd("02A00126", a); }), (Call{0, "8200"}));
  EXPECT_TRUE(line.written.empty());
}

TEST(SerialDriver, AnswerInPiecesAndBehindNoiseIsWhole) {
  ScriptedLine line;
  line.respond = [](const hex::Bytes&) {
    return std::deque<Event>{data("FF3C"), data("80"), data("0D0000"), data("78563412002A02E0F43D"), data("00FEFE")};
  };
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.sendReceive("260100", a); }), (Call{0, "800D000078563412002A02E0F43D00"}));
  EXPECT_EQ(d.noiseSkipped(), 2u);
}

TEST(SerialDriver, SilentChipGivesStatus5AfterTheTimeout) {
  ScriptedLine line;
  line.respond = [](const hex::Bytes&) { return std::deque<Event>{silence()}; };
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.idn(a); }), (Call{5, ""}));
  ASSERT_FALSE(line.readTimeouts.empty());
  EXPECT_LE(line.readTimeouts.front(), kTimeout);
  EXPECT_TRUE(line.isOpen());  // the port stays; the reconnect decides
}

TEST(SerialDriver, HalfAnswerGivesStatus5AndTheNextExchangeStartsClean) {
  ScriptedLine line;
  int n = 0;
  line.respond = [&n](const hex::Bytes&) {
    return ++n == 1 ? std::deque<Event>{data("000C4E4643"), silence()} : std::deque<Event>{data("0000")};
  };
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.idn(a); }), (Call{5, ""}));
  EXPECT_EQ(call([&](char* a) { return d.select("010D", a); }), (Call{0, "0000"}));
  EXPECT_EQ(line.discards, 2);
}

TEST(SerialDriver, IdleIsWaitedForUpToItsLongestSleep) {
  ScriptedLine line;
  line.respond = [](const hex::Bytes&) { return std::deque<Event>{silence(), data("000101")}; };
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.kqCmd("01 070E03A100F801180020606000203F01", a); }), (Call{5, ""}));
  // The first read of the Idle may wait the time-out and two wake-up periods (4352 ms).
  ASSERT_FALSE(line.readTimeouts.empty());
  EXPECT_GT(line.readTimeouts.front(), kTimeout + 4000);
}

TEST(SerialDriver, LineGoneMidExchangeGivesStatus5AtOnceAndStaysClosedUntilConnect) {
  ScriptedLine line;
  line.respond = [](const hex::Bytes&) { return std::deque<Event>{data("000C4E"), gone()}; };
  SerialDriver d(line, 10'000);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(call([&](char* a) { return d.idn(a); }), (Call{5, ""}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
  EXPECT_FALSE(line.isOpen());
  EXPECT_EQ(call([&](char* a) { return d.echo(a); }), (Call{5, ""}));
  EXPECT_EQ(line.opens, 1);
  EXPECT_EQ(d.usbHandleCheck(), 5);
  // Replugged: USBconnect opens the port again, wakes the chip and asks for the echo.
  line.respond = [](const hex::Bytes& f) {
    return f[0] == 0x55 ? std::deque<Event>{data("55")} : std::deque<Event>{data("0000")};
  };
  EXPECT_EQ(d.usbConnect(), 0);
  EXPECT_EQ(line.opens, 2);
  EXPECT_EQ(line.pulses, 1);
  EXPECT_EQ(d.usbHandleCheck(), 0);
  EXPECT_EQ(call([&](char* a) { return d.fieldOff(a); }), (Call{0, "0000"}));
}

TEST(SerialDriver, ConnectFailsWhenThePortCannotOpenOrTheChipIsSilent) {
  ScriptedLine line;
  line.openable = false;
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(d.usbConnect(), 5);
  line.openable = true;
  EXPECT_EQ(d.usbConnect(), 5);  // open, but no echo
  EXPECT_EQ(line.written, std::vector<hex::Bytes>{bytes("55")});
}

TEST(SerialDriver, BoardOperationsWithoutAController) {
  ScriptedLine line;
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.dllRevision(a); }), (Call{0, "1.0.0"}));
  EXPECT_EQ(call([&](char* a) { return d.mcuRevision(a); }), (Call{0, "0000"}));
  EXPECT_EQ(call([&](char* a) { return d.interfacePinState(a); }), (Call{0, "000102"}));
  EXPECT_EQ(call([&](char* a) { return d.irqPulse(a); }), (Call{0, "0000"}));
  EXPECT_EQ(line.pulses, 1);
  EXPECT_EQ(call([&](char* a) { return d.resetSpi(a); }), (Call{1, ""}));
  EXPECT_EQ(call([&](char* a) { return d.nssPulse(a); }), (Call{1, ""}));
  EXPECT_EQ(call([&](char* a) { return d.pollingReading(a); }), (Call{1, ""}));
  EXPECT_TRUE(line.written.empty());
}

TEST(SerialDriver, WithoutAPortEveryChipOperationIsStatus5) {
  ScriptedLine line;
  line.openable = false;
  SerialDriver d(line, kTimeout);
  EXPECT_EQ(call([&](char* a) { return d.idn(a); }), (Call{5, ""}));
  EXPECT_EQ(call([&](char* a) { return d.select("GG", a); }), (Call{5, ""}));
  EXPECT_EQ(call([&](char* a) { return d.mcuRevision(a); }), (Call{5, ""}));
  EXPECT_EQ(call([&](char* a) { return d.interfacePinState(a); }), (Call{5, ""}));
  EXPECT_EQ(call([&](char* a) { return d.dllRevision(a); }), (Call{0, "1.0.0"}));
  EXPECT_EQ(d.usbHandleCheck(), 5);
}

// Every chip operation gives, through the line and the emulated chip, the text the
// simulated board gives for the same field.
TEST(SerialDriver, ChipOperationsGiveTheSimulatedBoardsText) {
  const std::string field = std::string(TEST_FIXTURES) + "/field_basic.json";
  sim::Board board(field);
  LoopbackLine line(field);
  SerialDriver d(line, kTimeout);
  struct Step {
    const char* op;
    const char* request;
  };
  const Step steps[] = {
      {"idn", ""},           {"echo", ""},
      {"select", "010D"},    {"sendReceive", "260100"},
      {"sendReceive", "22"}, {"sendReceive", "GG"},
      {"select", "99"},      {"kq", "0109043A005804"},
      {"kq", "0108036201"},  {"kq", "03 0100"},
      {"kq", "01 0803620100"}, {"select", "02000180"},
      {"sendReceive", "2607"}, {"sendReceive", "932008"},
      {"kq", "01 0A0175"},   {"kq", "01 55"},
      {"fieldOff", ""},      {"sendReceive", "2607"},
  };
  int checked = 0;
  for (const Step& s : steps) {
    const std::string op = s.op;
    const auto run = [&](auto& target) {
      return call([&](char* a) {
        if (op == "idn") return target.idn(a);
        if (op == "echo") return target.echo(a);
        if (op == "select") return target.select(s.request, a);
        if (op == "sendReceive") return target.sendReceive(s.request, a);
        if (op == "kq") return target.kqCmd(s.request, a);
        return target.fieldOff(a);
      });
    };
    const Call expected = run(board);
    EXPECT_EQ(run(d), expected) << s.op << " " << s.request;
    EXPECT_EQ(expected.status, 0);
    ++checked;
  }
  EXPECT_EQ(checked, 18);
}

// The real port code on a pseudo-terminal whose other side the test holds.
class PosixLineOnPty : public ::testing::Test {
 protected:
  void SetUp() override {
    master_ = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master_, 0);
    ASSERT_EQ(grantpt(master_), 0);
    ASSERT_EQ(unlockpt(master_), 0);
    settings_.port = ptsname(master_);
    settings_.timeoutMs = 100;
  }
  void TearDown() override {
    if (master_ >= 0) ::close(master_);
  }
  int master_ = -1;
  Settings settings_;
};

TEST_F(PosixLineOnPty, BytesTravelBothWays) {
  PosixLine line(settings_);
  ASSERT_TRUE(line.open());
  ASSERT_TRUE(line.write(bytes("0100"), 100));
  std::uint8_t got[2] = {};
  ASSERT_EQ(::read(master_, got, 2), 2);
  EXPECT_EQ(hex::fromBytes(got, 2), "0100");
  ASSERT_EQ(::write(master_, "\x55", 1), 1);
  hex::Bytes in;
  EXPECT_EQ(line.read(in, 500), ReadResult::Data);
  EXPECT_EQ(in, bytes("55"));
}

TEST_F(PosixLineOnPty, NothingToReadTimesOut) {
  PosixLine line(settings_);
  ASSERT_TRUE(line.open());
  hex::Bytes in;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(line.read(in, 50), ReadResult::TimedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(45));
  EXPECT_TRUE(in.empty());
}

TEST_F(PosixLineOnPty, OtherSideClosingIsAHangUpAtOnce) {
  PosixLine line(settings_);
  ASSERT_TRUE(line.open());
  ::close(master_);
  master_ = -1;
  hex::Bytes in;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(line.read(in, 5000), ReadResult::HungUp);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(PosixLineOnPty, MissingPortDoesNotOpen) {
  settings_.port = "/nonexistent/tty";
  PosixLine line(settings_);
  EXPECT_FALSE(line.open());
  EXPECT_FALSE(line.isOpen());
  hex::Bytes in;
  EXPECT_EQ(line.read(in, 10), ReadResult::HungUp);
}

TEST_F(PosixLineOnPty, PseudoTerminalHasNoWakeUpLine) {
  PosixLine line(settings_);
  ASSERT_TRUE(line.open());
  EXPECT_FALSE(line.pulseWakeUp());
}

TEST(SerialSettings, EnvironmentGivesPortRateStopBitsAndTimeout) {
  setenv("TL42RQ_SERIAL_PORT", "/dev/ttyUSB3", 1);
  setenv("TL42RQ_SERIAL_BAUD", "115200", 1);
  setenv("TL42RQ_SERIAL_STOPBITS", "1", 1);
  setenv("TL42RQ_SERIAL_TIMEOUT_MS", "250", 1);
  Settings s = Settings::fromEnvironment();
  EXPECT_EQ(s.port, "/dev/ttyUSB3");
  EXPECT_EQ(s.baud, 115200);
  EXPECT_EQ(s.stopBits, 1);
  EXPECT_EQ(s.timeoutMs, 250);
  setenv("TL42RQ_SERIAL_BAUD", "fast", 1);
  setenv("TL42RQ_SERIAL_STOPBITS", "3", 1);
  unsetenv("TL42RQ_SERIAL_TIMEOUT_MS");
  s = Settings::fromEnvironment();
  EXPECT_EQ(s.baud, 57600);
  EXPECT_EQ(s.stopBits, 2);
  EXPECT_EQ(s.timeoutMs, 1000);
  unsetenv("TL42RQ_SERIAL_PORT");
  unsetenv("TL42RQ_SERIAL_BAUD");
  unsetenv("TL42RQ_SERIAL_STOPBITS");
}

// One suite of exchange-level checks run against every driver the program can meet: the
// test fake set up to behave as a board, and the simulated board library itself. A board
// implementation that is not there (the library does not load, or refuses the field) is
// skipped with the reason, never disabled.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "reader/TraceLog.h"
#include "shell/DetectionParse.h"
#include "shell/GlobVariables.h"

namespace {

using reader::Op;

// What every board below is set up to report.
constexpr const char* kDllRevision = "0.5.0";
constexpr const char* kMcuRevision = "1.4.1";
constexpr const char* kChipName = "NFC TL42RQ";

// Forwards to a driver and writes down every call, so that call counts can be checked
// on a driver that keeps no record of its own.
class RecordingDriver final : public reader::ReaderDriver {
 public:
  explicit RecordingDriver(reader::ReaderDriver& inner) : inner_(inner) {}
  std::int32_t call(Op op, const char* request, char* answer) override {
    const bool takesRequest = reader::info(op).shape == reader::Shape::RequestAndAnswer;
    trail.push_back(std::string(reader::info(op).symbol) + ":" + (takesRequest && request ? request : ""));
    return inner_.call(op, request, answer);
  }
  std::string description() const override { return inner_.description(); }
  std::vector<std::string> trail;

 private:
  reader::ReaderDriver& inner_;
};

// The fake driver playing a board: a USB link that is lost when the board is pulled out
// and must be opened again, and the chip's answers to the commands used here.
class FakeBoard {
 public:
  static constexpr const char* kName = "FakeDriver";
  bool open(std::string&) {
    fake_.setHandler([this](Op op, const std::string& req) { return answer(op, req); });
    present_ = true;
    linked_ = true;
    return true;
  }
  reader::ReaderDriver& driver() { return fake_; }
  void setPresent(bool present) {
    present_ = present;
    if (!present) linked_ = false;
  }

 private:
  reader::FakeDriver::Reply answer(Op op, const std::string& req) {
    using R = reader::FakeDriver::Reply;
    if (op == Op::GetDLLrev) return R{0, kDllRevision};
    if (op == Op::USBconnect) {
      linked_ = present_;
      return R{present_ ? 0 : 5, ""};
    }
    if (op == Op::USBhandlecheck) return R{linked_ ? 0 : 1, ""};
    if (!linked_) return R{5, ""};
    switch (op) {
      case Op::getMCUrev: return R{0, "0003010401"};
      case Op::Idn: {
        std::string data;
        for (char c : std::string(kChipName)) data += hexByte(static_cast<unsigned char>(c));
        data += "00";  // the name's terminating NUL
        data += "D5A2";  // the chip's CRC bytes
        return R{0, "00" + hexByte(static_cast<unsigned char>(data.size() / 2)) + data};
      }
      case Op::Echo: return R{0, "5500"};
      case Op::Select: return R{0, "0000"};
      case Op::KQCmd: return R{0, req.size() >= 4 && req.compare(2, 2, "08") == 0 ? "000100" : "0000"};
      default: return R{0, "0000"};
    }
  }
  static std::string hexByte(unsigned v) {
    static const char* d = "0123456789ABCDEF";
    return {d[v >> 4], d[v & 15]};
  }
  reader::FakeDriver fake_;
  bool present_ = true;
  bool linked_ = true;
};

// The simulated board library, loaded as the program loads it.
class SimulatedBoardLibrary {
 public:
  static constexpr const char* kName = "SimulatedBoard";
  bool open(std::string& why) {
    driver_ = reader::LibraryDriver::load(SIM_LIBRARY);
    auto* lib = dynamic_cast<reader::LibraryDriver*>(driver_.get());
    if (!lib || !lib->isSimulated()) {
      why = "simulated board not available: " + driver_->description();
      return false;
    }
    loadField_ = reinterpret_cast<LoadField>(lib->resolve("TL42RQSim_LoadField"));
    setPresent_ = reinterpret_cast<SetPresent>(lib->resolve("TL42RQSim_SetBoardPresent"));
    reset_ = reinterpret_cast<Reset>(lib->resolve("TL42RQSim_Reset"));
    lastError_ = reinterpret_cast<LastError>(lib->resolve("TL42RQSim_LastError"));
    if (!loadField_ || !setPresent_ || !reset_) {
      why = "simulated board lacks its control interface";
      return false;
    }
    const std::string field = std::string(R"({"board":{"present":true,"dllRevision":")") + kDllRevision +
                              R"(","mcuRevision":[1,4,1],"chipName":")" + kChipName +
                              R"(","interfacePin":1},"antenna":{"detectLevel":31},"tags":[]})";
    if (loadField_(field.c_str()) != 0) {
      why = std::string("simulated board refuses the field: ") + (lastError_ ? lastError_() : "");
      return false;
    }
    reset_();
    setPresent_(1);
    return true;
  }
  reader::ReaderDriver& driver() { return *driver_; }
  void setPresent(bool present) { setPresent_(present ? 1 : 0); }

 private:
  using LoadField = std::int32_t (*)(const char*);
  using SetPresent = std::int32_t (*)(std::int32_t);
  using Reset = std::int32_t (*)();
  using LastError = const char* (*)();
  std::unique_ptr<reader::ReaderDriver> driver_;
  LoadField loadField_ = nullptr;
  SetPresent setPresent_ = nullptr;
  Reset reset_ = nullptr;
  LastError lastError_ = nullptr;
};

template <typename Board>
class DriverConformance : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string why;
    if (!board_.open(why)) GTEST_SKIP() << why;
    auto& g = glob::state();
    g.statusPanel1 = glob::kBoardConnected;
    g.statusPanel1Changed = nullptr;
    g.iso14443AModulationGain = "D1";
    reader::setClock(std::make_shared<reader::FixedClock>(reader::DateTime{2026, 11, 21, 10, 20, 30}));
    // The detection opens the link before anything else runs.
    ASSERT_EQ(reader::callOnce(board_.driver(), Op::USBconnect).status, 0);
  }
  void TearDown() override { reader::setClock(nullptr); }

  reader::ReaderDriver& driver() { return board_.driver(); }
  Board board_;
};

class BoardNames {
 public:
  template <typename T>
  static std::string GetName(int) {
    return T::kName;
  }
};

using Boards = ::testing::Types<FakeBoard, SimulatedBoardLibrary>;
TYPED_TEST_SUITE(DriverConformance, Boards, BoardNames);

TYPED_TEST(DriverConformance, LinkIsValidAfterConnect) {
  EXPECT_EQ(reader::callOnce(this->driver(), Op::USBhandlecheck).status, 0);
}

TYPED_TEST(DriverConformance, EchoAnswerBeginsWith5500) {
  const auto a = reader::callOnce(this->driver(), Op::Echo);
  EXPECT_TRUE(a.good("5500")) << a.status << " " << a.text;
}

TYPED_TEST(DriverConformance, LibraryRevisionIsDottedAndAccepted) {
  const auto a = reader::callOnce(this->driver(), Op::GetDLLrev);
  EXPECT_EQ(a.status, 0);
  EXPECT_EQ(a.text, kDllRevision);
  EXPECT_EQ(shell::dllRevisionNumber(a.text), 5);
}

TYPED_TEST(DriverConformance, McuRevisionReadsAsTheBoardReportsIt) {
  const auto a = reader::callOnce(this->driver(), Op::getMCUrev);
  ASSERT_TRUE(a.good("00")) << a.status << " " << a.text;
  EXPECT_EQ(shell::mcuRevisionText(a.text), kMcuRevision);
}

TYPED_TEST(DriverConformance, IdentificationCarriesTheChipNameAndTwoCrcBytes) {
  const auto a = reader::callOnce(this->driver(), Op::Idn);
  ASSERT_TRUE(a.good("00")) << a.status << " " << a.text;
  ASSERT_GE(a.text.size(), 8u);
  ASSERT_EQ(a.text.size() % 2, 0u);
  EXPECT_EQ(std::stoul(a.text.substr(2, 2), nullptr, 16), a.text.size() / 2 - 2);
  std::string name = shell::chipNameOfIdn(a.text);
  while (!name.empty() && name.back() == '\0') name.pop_back();
  EXPECT_EQ(name, kChipName);
}

TYPED_TEST(DriverConformance, ProtocolSelectionsOfEveryReconnectAreAccepted) {
  for (const char* params : {"010D", "011D", "02000180", "02000300", "03010180", "0451"}) {
    const auto a = reader::callOnce(this->driver(), Op::Select, params);
    EXPECT_EQ(a.status, 0) << params;
    EXPECT_EQ(a.text.substr(0, 2), "00") << params << " -> " << a.text;
  }
}

TYPED_TEST(DriverConformance, ConfigurationWritesAreAccepted) {
  reader::callOnce(this->driver(), Op::Select, "02000180");
  for (const char* frame : {"0109043A005804", "010904680101D1", "0109110B00241204880F1F3F3F01000505005500"}) {
    const auto a = reader::callOnce(this->driver(), Op::KQCmd, frame);
    EXPECT_EQ(a.status, 0) << frame;
    EXPECT_EQ(a.text.substr(0, 2), "00") << frame << " -> " << a.text;
  }
}

// A driver that also keeps the status of each call.
class StatusRecorder final : public reader::ReaderDriver {
 public:
  explicit StatusRecorder(reader::ReaderDriver& inner) : inner_(inner) {}
  std::int32_t call(Op op, const char* request, char* answer) override {
    const std::int32_t status = inner_.call(op, request, answer);
    statuses.push_back(status);
    return status;
  }
  std::string description() const override { return inner_.description(); }
  std::vector<std::int32_t> statuses;

 private:
  reader::ReaderDriver& inner_;
};

TYPED_TEST(DriverConformance, EveryReconnectSendsItsStepsAndEachReachesTheBoard) {
  using K = reader::ReconnectKind;
  for (K kind : {K::Plain, K::Script14443A, K::Script14443B, K::Iso15693, K::Iso15693Fast, K::Iso14443A,
                 K::Iso14443ATopaz, K::Iso14443BPanel, K::Iso14443BTools, K::Iso18092}) {
    StatusRecorder statuses(this->driver());
    RecordingDriver rec(statuses);
    glob::state().statusPanel1 = glob::kBoardNotConnected;
    EXPECT_EQ(reader::reconnectBoard(rec, kind), 0);
    std::vector<std::string> expected{"TL42RQDLL_USBconnect:", "TL42RQDLL_USBhandlecheck:"};
    for (const auto& step : reader::reconnectSteps(kind))
      expected.push_back(std::string(reader::info(step.op).symbol) + ":" + step.request);
    EXPECT_EQ(rec.trail, expected);
    // Status 0: the exchange with the board took place, whatever the chip made of the text.
    EXPECT_EQ(statuses.statuses, std::vector<std::int32_t>(expected.size(), 0));
    EXPECT_EQ(glob::state().statusPanel1, glob::kBoardConnected);
  }
}

TYPED_TEST(DriverConformance, UnpluggedBoardAnswersFiveWithNothingInTheBuffer) {
  this->board_.setPresent(false);
  for (const auto& op : reader::kOperations) {
    if (op.op == Op::GetDLLrev || op.op == Op::USBhandlecheck) continue;
    const auto a = reader::callOnce(this->driver(), op.op, "0451");
    EXPECT_EQ(a.status, 5) << op.symbol;
    EXPECT_EQ(a.text, "") << op.symbol;
  }
  EXPECT_NE(reader::callOnce(this->driver(), Op::USBhandlecheck).status, 0);
}

TYPED_TEST(DriverConformance, LibraryRevisionIsReadWithoutABoard) {
  this->board_.setPresent(false);
  const auto a = reader::callOnce(this->driver(), Op::GetDLLrev);
  EXPECT_EQ(a.status, 0);
  EXPECT_EQ(a.text, kDllRevision);
}

TYPED_TEST(DriverConformance, PulledOutBoardIsCalledTwiceAndShownNotConnected) {
  this->board_.setPresent(false);
  RecordingDriver rec(this->driver());
  reader::TraceLog log;
  const auto a = reader::exchange(rec, Op::Echo, {}, reader::reconnectWith(rec, reader::ReconnectKind::Iso15693));
  log.untitled(reader::logWord(Op::Echo), a.text);
  EXPECT_EQ(a.status, 5);
  EXPECT_EQ(rec.trail, (std::vector<std::string>{"TL42RQDll_Echo:", "TL42RQDLL_USBconnect:",
                                                 "TL42RQDLL_USBhandlecheck:", "TL42RQDll_Echo:"}));
  EXPECT_EQ(glob::state().statusPanel1, glob::kBoardNotConnected);
  EXPECT_EQ(log.text(), "\r\n11-21-2026 10:20:30\t>>> TL42RQDLL_ECHO\r\n\t\t\t<<< ");
}

TYPED_TEST(DriverConformance, BoardBackAgainIsReconnectedAndTheCallRepeated) {
  this->board_.setPresent(false);
  reader::exchange(this->driver(), Op::Echo, {}, reader::reconnectWith(this->driver(), reader::ReconnectKind::Plain));
  ASSERT_EQ(glob::state().statusPanel1, glob::kBoardNotConnected);
  this->board_.setPresent(true);
  RecordingDriver rec(this->driver());
  const auto a = reader::exchange(rec, Op::Echo, {}, reader::reconnectWith(rec, reader::ReconnectKind::Iso14443A));
  EXPECT_TRUE(a.good("5500")) << a.status << " " << a.text;
  EXPECT_EQ(rec.trail, (std::vector<std::string>{"TL42RQDll_Echo:", "TL42RQDLL_USBconnect:",
                                                 "TL42RQDLL_USBhandlecheck:", "TL42RQDll_Select:02000180",
                                                 "TL42RQDll_KQCmd:0109043A005804", "TL42RQDll_KQCmd:010904680101D1",
                                                 "TL42RQDll_KQCmd:0109110B00241204880F1F3F3F01000505005500",
                                                 "TL42RQDll_Echo:"}));
  EXPECT_EQ(glob::state().statusPanel1, glob::kBoardConnected);
}

TYPED_TEST(DriverConformance, OddOrBrokenRequestsStayWithinTheBuffer) {
  const std::string longFrame(600, 'A');
  const std::vector<std::string> requests = {"0200110", "01 090468010130", "", "G", "zz zz", "0",
                                             "26010", longFrame, "04FF" + longFrame, std::string(2000, '9')};
  for (Op op : {Op::Select, Op::SendReceive, Op::KQCmd}) {
    for (const auto& r : requests) {
      const auto a = reader::callOnce(this->driver(), op, r);
      EXPECT_LT(a.text.size(), reader::kAnswerSize) << reader::info(op).symbol << " " << r.substr(0, 20);
    }
  }
  // The board still works afterwards.
  EXPECT_TRUE(reader::callOnce(this->driver(), Op::Echo).good("5500"));
}

}  // namespace

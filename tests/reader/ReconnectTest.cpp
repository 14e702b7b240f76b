#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "reader/Reconnect.h"
#include "shell/GlobVariables.h"

namespace {

using reader::FakeDriver;
using reader::Op;
using Trail = std::vector<std::string>;

const std::string kConnected = "TL42RQ_Development_Software DEMO-TL42RQ-A BOARD CONNECTED";
const std::string kNotConnected = "TL42RQ_Development_Software DEMO-TL42RQ-A BOARD NOT CONNECTED";

class ReconnectTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto& g = glob::state();
    g.statusPanel1 = kNotConnected;
    g.statusPanel1Changed = [this](const std::string& t) { shown.push_back(t); };
    g.iso14443AModulationGain = "D1";
  }
  void TearDown() override { glob::state().statusPanel1Changed = nullptr; }

  Trail trail() const {
    Trail out;
    for (const auto& c : fake.calls()) out.push_back(std::string(reader::info(c.op).symbol) + ":" + c.request);
    return out;
  }
  static Trail afterCheck(const Trail& steps) {
    Trail out{"TL42RQDLL_USBconnect:", "TL42RQDLL_USBhandlecheck:"};
    out.insert(out.end(), steps.begin(), steps.end());
    return out;
  }
  // Runs one named reconnect routine after a good link check; returns its result.
  std::int32_t run(const std::function<void(reader::ReaderDriver&, std::int32_t&)>& routine) {
    std::int32_t result = -7;
    routine(fake, result);
    return result;
  }

  FakeDriver fake;
  std::vector<std::string> shown;
};

const Trail kIso14443ASteps = {"TL42RQDll_Select:02000180", "TL42RQDll_KQCmd:0109043A005804",
                               "TL42RQDll_KQCmd:010904680101D1",
                               "TL42RQDll_KQCmd:0109110B00241204880F1F3F3F01000505005500"};

TEST_F(ReconnectTest, Iso14443ASendsSelectAndThreeConfigurationCommands) {
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_iso14443A), 0);
  EXPECT_EQ(trail(), afterCheck(kIso14443ASteps));
}

TEST_F(ReconnectTest, Iso14443AUsesTheModulationAndGainValueOfTheToolbox) {
  glob::state().iso14443AModulationGain = "47";
  run(reader::DEMO_TL42RQ_A_reconnect_iso14443A);
  ASSERT_EQ(fake.callsOf(Op::KQCmd).size(), 3u);
  EXPECT_EQ(fake.callsOf(Op::KQCmd)[1].request, "01090468010147");
}

TEST_F(ReconnectTest, Iso14443ATopazSelectsTopazThenTheSameThreeCommands) {
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_iso14443A_TOPAZ), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:02000300", "TL42RQDll_KQCmd:0109043A005804",
                                 "TL42RQDll_KQCmd:010904680101D1",
                                 "TL42RQDll_KQCmd:0109110B00241204880F1F3F3F01000505005500"}));
}

TEST_F(ReconnectTest, ScriptIso14443ASendsTheSevenDigitTextUnchanged) {
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_script_iso14443A), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:0200110"}));
  EXPECT_EQ(fake.callsOf(Op::Select)[0].request.size(), 7u);
}

TEST_F(ReconnectTest, ScriptIso14443BSelects0301) {
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_script_iso14443B), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:0301"}));
}

TEST_F(ReconnectTest, Iso15693SelectsByItsArgument) {
  EXPECT_EQ(run([](auto& d, auto& r) { reader::DEMO_TL42RQ_A_reconnect_iso15693(d, r, 0); }), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:010D"}));
  fake.clearCalls();
  EXPECT_EQ(run([](auto& d, auto& r) { reader::DEMO_TL42RQ_A_reconnect_iso15693(d, r, 1); }), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:011D"}));
  fake.clearCalls();
  run([](auto& d, auto& r) { reader::DEMO_TL42RQ_A_reconnect_iso15693(d, r, -1); });
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:011D"}));
}

TEST_F(ReconnectTest, Iso14443BPanelKeepsTheBlankAfterTheModeField) {
  EXPECT_EQ(run([](auto& d, auto& r) { reader::DEMO_TL42RQ_A_reconnect_iso14443B(d, r, true); }), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:03010180", "TL42RQDll_KQCmd:01 090468010130"}));
}

TEST_F(ReconnectTest, Iso14443BToolsSendNoBlank) {
  EXPECT_EQ(run([](auto& d, auto& r) { reader::DEMO_TL42RQ_A_reconnect_iso14443B(d, r, false); }), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:03010180", "TL42RQDll_KQCmd:01090468010130"}));
}

TEST_F(ReconnectTest, TheTwoIso14443BReconnectsDifferByOneBlank) {
  const auto panel = reader::reconnectSteps(reader::ReconnectKind::Iso14443BPanel);
  const auto tools = reader::reconnectSteps(reader::ReconnectKind::Iso14443BTools);
  ASSERT_EQ(panel.size(), 2u);
  ASSERT_EQ(tools.size(), 2u);
  EXPECT_EQ(panel[0].request, tools[0].request);
  EXPECT_EQ(panel[1].request, "01 090468010130");
  EXPECT_EQ(tools[1].request, "01090468010130");
  std::string withoutBlank = panel[1].request;
  withoutBlank.erase(2, 1);
  EXPECT_EQ(withoutBlank, tools[1].request);
}

const Trail kIso18092Steps = {"TL42RQDll_Select:0451", "TL42RQDll_KQCmd:01090468010150",
                              "TL42RQDll_KQCmd:0109040A0102A1"};

TEST_F(ReconnectTest, Iso18092SelectsAndSendsTwoConfigurationCommands) {
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_iso18092), 0);
  EXPECT_EQ(trail(), afterCheck(kIso18092Steps));
}

TEST_F(ReconnectTest, FelicaSendsTheSameAsIso18092) {
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_Felica), 0);
  EXPECT_EQ(trail(), afterCheck(kIso18092Steps));
}

TEST_F(ReconnectTest, PlainReconnectsSendNothingAfterTheCheck) {
  for (auto routine : {reader::DEMO_TL42RQ_A_reconnect, reader::DEMO_TL42RQ_A_reconnect_Demokit_tools,
                       reader::DEMO_TL42RQ_A_reconnect_UserInterface, reader::DEMO_TL42RQ_A_reconnect_script}) {
    fake.clearCalls();
    glob::state().statusPanel1 = kNotConnected;
    EXPECT_EQ(run(routine), 0);
    EXPECT_EQ(trail(), afterCheck({}));
    EXPECT_EQ(glob::state().statusPanel1, kConnected);
  }
}

TEST_F(ReconnectTest, GoodReconnectMarksTheBoardConnected) {
  run(reader::DEMO_TL42RQ_A_reconnect_iso14443A);
  EXPECT_EQ(glob::state().statusPanel1, kConnected);
  EXPECT_EQ(shown, std::vector<std::string>{kConnected});
}

TEST_F(ReconnectTest, FailedCheckMarksNotConnectedAndSendsNothingElse) {
  glob::state().statusPanel1 = kConnected;
  fake.queue(Op::USBhandlecheck, 1, "");
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_iso14443A), 5);
  EXPECT_EQ(trail(), afterCheck({}));
  EXPECT_EQ(glob::state().statusPanel1, kNotConnected);
  EXPECT_EQ(shown, std::vector<std::string>{kNotConnected});
}

TEST_F(ReconnectTest, AnyNonZeroCheckCountsAsFailure) {
  for (int check : {5, -1, 2}) {
    fake.clearCalls();
    fake.queue(Op::USBhandlecheck, check, "");
    EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_iso18092), 5) << check;
    EXPECT_EQ(trail(), afterCheck({}));
  }
}

TEST_F(ReconnectTest, ConnectResultIsIgnored) {
  fake.queue(Op::USBconnect, 5, "");
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_script_iso14443B), 0);
  EXPECT_EQ(trail(), afterCheck({"TL42RQDll_Select:0301"}));
}

TEST_F(ReconnectTest, ConfigurationStatusesAreNotLookedAt) {
  // Every configuration call fails; all of them still go out and the result is 0.
  fake.setHandler([](Op op, const std::string&) {
    return op == Op::USBconnect || op == Op::USBhandlecheck ? FakeDriver::Reply{0, ""} : FakeDriver::Reply{5, ""};
  });
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect_iso14443A), 0);
  EXPECT_EQ(trail(), afterCheck(kIso14443ASteps));
  EXPECT_EQ(glob::state().statusPanel1, kConnected);
}

TEST_F(ReconnectTest, FailedReconnectLeavesNotConnectedAsItIs) {
  fake.queue(Op::USBhandlecheck, 1, "");
  EXPECT_EQ(run(reader::DEMO_TL42RQ_A_reconnect), 5);
  EXPECT_EQ(glob::state().statusPanel1, kNotConnected);
  EXPECT_TRUE(shown.empty());
}

TEST_F(ReconnectTest, GoodReconnectLeavesConnectedAsItIs) {
  glob::state().statusPanel1 = kConnected;
  run(reader::DEMO_TL42RQ_A_reconnect);
  EXPECT_EQ(glob::state().statusPanel1, kConnected);
  EXPECT_TRUE(shown.empty());
}

TEST_F(ReconnectTest, EmptyStatusPanelIsLeftEmpty) {
  glob::state().statusPanel1.clear();
  run(reader::DEMO_TL42RQ_A_reconnect_iso14443A);
  EXPECT_EQ(glob::state().statusPanel1, "");
  fake.queue(Op::USBhandlecheck, 1, "");
  run(reader::DEMO_TL42RQ_A_reconnect_iso14443A);
  EXPECT_EQ(glob::state().statusPanel1, "");
  EXPECT_TRUE(shown.empty());
}

TEST_F(ReconnectTest, OnlyTheBoardTextChangesInThePanel) {
  glob::state().statusPanel1 = "Ready DEMO-TL42RQ-A BOARD CONNECTED (USB)";
  fake.queue(Op::USBhandlecheck, 1, "");
  run(reader::DEMO_TL42RQ_A_reconnect);
  EXPECT_EQ(glob::state().statusPanel1, "Ready DEMO-TL42RQ-A BOARD NOT CONNECTED (USB)");
  run(reader::DEMO_TL42RQ_A_reconnect);
  EXPECT_EQ(glob::state().statusPanel1, "Ready DEMO-TL42RQ-A BOARD CONNECTED (USB)");
}

TEST_F(ReconnectTest, WorkingReconnectRestoresTheProtocolOfThePanelThatAsked) {
  // Another panel selected ISO 18092 last; the ISO 14443-A panel's call then fails once.
  reader::callOnce(fake, Op::Select, "0451");
  fake.queue(Op::SendReceive, 5, "");
  fake.queue(Op::SendReceive, 0, "8005440000AAAA08");
  const auto a = reader::exchange(fake, Op::SendReceive, "2607",
                                  reader::reconnectWith(fake, reader::ReconnectKind::Iso14443A));
  EXPECT_EQ(a.text, "8005440000AAAA08");
  Trail expected{"TL42RQDll_Select:0451", "TL42RQDll_SendReceive:2607"};
  for (const auto& s : afterCheck(kIso14443ASteps)) expected.push_back(s);
  expected.push_back("TL42RQDll_SendReceive:2607");
  EXPECT_EQ(trail(), expected);
}

TEST_F(ReconnectTest, EveryKindHasItsSteps) {
  using K = reader::ReconnectKind;
  auto requests = [](K k) {
    Trail out;
    for (const auto& s : reader::reconnectSteps(k))
      out.push_back(std::string(reader::info(s.op).symbol) + ":" + s.request);
    return out;
  };
  EXPECT_EQ(requests(K::Plain), Trail{});
  EXPECT_EQ(requests(K::Script14443A), Trail{"TL42RQDll_Select:0200110"});
  EXPECT_EQ(requests(K::Script14443B), Trail{"TL42RQDll_Select:0301"});
  EXPECT_EQ(requests(K::Iso15693), Trail{"TL42RQDll_Select:010D"});
  EXPECT_EQ(requests(K::Iso15693Fast), Trail{"TL42RQDll_Select:011D"});
  EXPECT_EQ(requests(K::Iso14443A), kIso14443ASteps);
  EXPECT_EQ(requests(K::Iso18092), kIso18092Steps);
}

TEST_F(ReconnectTest, StatusTextsAreExact) {
  EXPECT_STREQ(glob::kBoardConnected, " DEMO-TL42RQ-A BOARD CONNECTED");
  EXPECT_STREQ(glob::kBoardNotConnected, " DEMO-TL42RQ-A BOARD NOT CONNECTED");
}

}  // namespace

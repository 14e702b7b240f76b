// The chip's tables: one row per code, the exact words, and the rules that tie them.
#include <gtest/gtest.h>

#include <set>

#include "console/ChipCommands.h"
#include "console/ChipFrames.h"
#include "console/ConsoleFrames.h"
#include "console/ResponseAnalyser.h"

using namespace chip;

TEST(ChipCommands, NoCommandCodeAppearsTwice) {
  std::set<std::string_view> codes;
  for (const ChipCommand& c : kCommands) EXPECT_TRUE(codes.insert(c.code).second) << c.code;
  EXPECT_EQ(codes.size(), 15u);
}

TEST(ChipCommands, NoAnswerCodeAppearsTwiceForOneCommand) {
  std::set<std::pair<std::string_view, std::string>> seen;
  for (const ResultCode& r : kResultCodes)
    for (std::size_t at = 0; at + 2 <= r.commands.size(); at += 3)
      EXPECT_TRUE(seen.insert({r.answer, std::string(r.commands.substr(at, 2))}).second)
          << r.answer << " for " << r.commands.substr(at, 2);
}

TEST(ChipCommands, NoProtocolCodeAppearsTwice) {
  std::set<std::string_view> codes, names;
  for (const ProtocolCode& p : kProtocolCodes) {
    EXPECT_TRUE(codes.insert(p.code).second);
    EXPECT_TRUE(names.insert(p.name).second);
    EXPECT_EQ(p.name.substr(0, 2), p.code);
  }
}

TEST(ChipCommands, CommandListEntriesInTheirOrder) {
  std::vector<std::string_view> list{kCommandListTitle};
  for (const ChipCommand& c : kCommands)
    if (c.inList) list.push_back(c.listEntry);
  EXPECT_EQ(list, (std::vector<std::string_view>{" TL42RQ Command List ", " 01 : IDN ", " 02 : Protocol Select ",
                                                 " 04 : SendRecv ", " 07 : Idle ", " 08 : RdReg ", " 09 : WrReg ",
                                                 " 0A : BaudRate ", " 55 : Echo-code "}));
}

TEST(ChipCommands, EveryListEntryCarriesItsCodeAtPositionTwo) {
  for (const ChipCommand& c : kCommands) {
    if (c.listEntry.empty()) {
      EXPECT_EQ(c.code, "0D");
      continue;
    }
    EXPECT_EQ(entryKey(c.listEntry), c.code);
    EXPECT_EQ(c.title.substr(0, 15), "command code " + std::string(c.code));
  }
}

TEST(ChipCommands, SubFrequencyWordsDifferBetweenListAndTitle) {
  EXPECT_EQ(findCommand("0B")->listEntry, " 0B : SubFreqRes ");
  EXPECT_EQ(findCommand("0B")->title, "command code 0B : SubFreqReq");
}

TEST(ChipCommands, DefaultFramesStartWithTheirCodeAndLength) {
  for (const ChipCommand& c : kCommands) {
    const auto bytes = console::frameBytes(c.defaultFrame);
    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(bytes[0], c.code);
    if (c.code == "55") {
      EXPECT_EQ(bytes.size(), 1u);  // the echo has no length
      continue;
    }
    if (c.code == "02") continue;  // built by the Protocol Select panel, its length follows box 1
    EXPECT_EQ(std::stoi(bytes[1], nullptr, 16), static_cast<int>(bytes.size()) - 2) << c.code;
  }
  EXPECT_EQ(findCommand("07")->defaultFrame, "07 0E 08 04 00 04 00 18 00 00 00 00 00 00 00 00");
  EXPECT_EQ(findCommand("08")->defaultFrame, "08 03 62 01 00");
  EXPECT_EQ(findCommand("09")->defaultFrame, "09 03 68 00 01");
}

TEST(ChipCommands, ResultTextsForEachCommand) {
  EXPECT_EQ(resultText("01", "00"), "00 : Result code = OK");
  EXPECT_EQ(resultText("05", "00"), "00 : Result code = Confirm that the device now is in Listen mode");
  EXPECT_EQ(resultText("09", "00"), "00 : Result code = Data was successfully sent");
  EXPECT_EQ(resultText("07", "00"), "00 : Result code = Device exits from Idle mode");
  EXPECT_EQ(resultText("0D", "00"), "00 : Result code = Device is successfully Activated / Disactivated");
  EXPECT_EQ(resultText("0F", "00"), "00 : Result code = Confirmation");
  EXPECT_EQ(resultText("04", "8A"), "8A : Error code = framing error (start bit=0, stop bit=1)");
  EXPECT_EQ(resultText("06", "83"), "83 : Error code = Invalid protocol previously selected by Select Protocol command");
  EXPECT_EQ(resultText("0A", "55"), "55 : Pseudo-response of 0x55");
  EXPECT_EQ(resultText("04", "00"), std::nullopt);
  EXPECT_EQ(resultText("0B", "82"), std::nullopt);
}

TEST(ChipCommands, CodeEightFInAListenAnswerBeginsWithEightyThree) {
  EXPECT_EQ(resultText("05", "8F"), "83 : Error code = No field. Command cannot be executed because there are no field");
}

TEST(ChipCommands, IdleCaptionsOfTheSixteenBytes) {
  EXPECT_EQ(kIdleCaptions[1], "lenght of data");
  EXPECT_EQ(kIdleCaptions[2], "<WFUFlags>");
  EXPECT_EQ(kIdleCaptions[3], "EnterCrlL");
  EXPECT_EQ(kIdleCaptions[15], "<MaxSleep>");
}

TEST(ChipCommands, RegisterMapIsOrderedWithoutOverlap) {
  int last = -1;
  for (const RegisterBlock& b : kRegisterMap) {
    EXPECT_GT(b.first, last);
    EXPECT_GE(b.last, b.first);
    last = b.last;
  }
  EXPECT_EQ(registerRange(kRegisterMap[0]), "0x00 - 0x1F");
  EXPECT_EQ(registerRange(kRegisterMap[15]), "0x68 - 0x6F");
  EXPECT_EQ(registerBlock(0x3A)->block, "16-bit timer");
  EXPECT_EQ(registerBlock(0x62)->block, "Standalone mode controller");
  EXPECT_EQ(registerBlock(0x3C), nullptr);
}

TEST(ChipCommands, ModulationDepthAndGainRows) {
  EXPECT_EQ(modulationDepth('D'), "95%");
  EXPECT_EQ(modulationDepth('d'), "95%");
  EXPECT_EQ(modulationDepth('7'), std::nullopt);
  EXPECT_EQ(receiverGain('1'), "32 dB");
  EXPECT_EQ(receiverGain('F'), "8 dB");
  EXPECT_EQ(receiverGain('2'), std::nullopt);
  std::set<char> x, y;
  for (const auto& s : kModulationDepths) EXPECT_TRUE(x.insert(s.digit).second);
  for (const auto& s : kReceiverGains) EXPECT_TRUE(y.insert(s.digit).second);
}

TEST(ChipCommands, BaudRateDividersFollowTheRule) {
  for (const BaudRateRow& r : kBaudRates) {
    if (r.value < 2) {
      EXPECT_EQ(r.divider, 0);
      EXPECT_EQ(r.rate, "RFU");
    } else {
      EXPECT_EQ(r.divider, baudRateDivider(r.value));
    }
  }
  EXPECT_EQ(baudRateLine(kBaudRates[0]), "<BaudRate> = 0 : RFU");
  EXPECT_EQ(baudRateLine(kBaudRates[3]), "<BaudRate> = 117 : 13.56 MHz / 236 = 57.7 Kbps");
}

TEST(ChipCommands, FixedConfigurationFramesReadAsWrites) {
  // Code 09, then a length that counts the bytes behind it.
  for (std::string_view f : {std::string_view(kTimerConfiguration), std::string_view(kModulationGain30),
                             std::string_view(kModulationGain50), std::string_view(kCodecConfiguration14443A),
                             std::string_view(kCodecConfiguration18092), std::string_view(kStandaloneConfiguration)}) {
    EXPECT_EQ(f.substr(0, 2), "09") << f;
    EXPECT_EQ(std::stoi(std::string(f.substr(2, 2)), nullptr, 16) * 2 + 4, static_cast<int>(f.size())) << f;
  }
  EXPECT_EQ(iso14443AModulationGainFrame("D1"), "0904680101D1");
  EXPECT_EQ(std::string(kReadWakeUpRegister), "0803620100");
}

TEST(ExplainRules, EveryTableLineHasItsTextAndNoRuleTwice) {
  std::set<std::tuple<int, std::string_view, std::string_view>> seen;
  for (const auto& r : console::kExplainRules) {
    EXPECT_TRUE(seen.insert({static_cast<int>(r.panel), r.command, r.code}).second) << r.command << " " << r.code;
    if (r.line0 == console::Line0::Table) {
      EXPECT_TRUE(resultText(r.command, r.code).has_value()) << r.command << r.code;
    } else {
      EXPECT_FALSE(belongsTo(kNoCatchAll, r.command)) << r.command;
    }
  }
}

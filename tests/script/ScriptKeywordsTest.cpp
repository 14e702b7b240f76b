// The keyword table and the help drawn from it.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "script/ScriptKeywords.h"

namespace {

using script::HelpGroup;

std::vector<std::string> texts(HelpGroup g, int revision) {
  std::vector<std::string> out;
  for (const auto& r : script::helpRows(g, revision)) out.push_back(r.text);
  return out;
}
std::vector<int> rows(HelpGroup g, int revision) {
  std::vector<int> out;
  for (const auto& r : script::helpRows(g, revision)) out.push_back(r.row);
  return out;
}

TEST(ScriptKeywords, NoKeywordAndNoHelpRowAppearsTwice) {
  std::set<std::string> words;
  std::set<int> helpRows;
  for (const auto& k : script::kKeywords) {
    EXPECT_TRUE(words.insert(std::string(k.word)).second) << k.word;
    if (k.helpRow >= 0) EXPECT_TRUE(helpRows.insert(k.helpRow).second) << k.helpRow;
  }
  for (const auto& n : script::kHelpNotes) EXPECT_TRUE(helpRows.insert(n.helpRow).second) << n.helpRow;
}

TEST(ScriptKeywords, KeywordsAreFoundOnlyInCapitals) {
  ASSERT_NE(script::findKeyword("TL42RQDLL_SENDRECEIVE"), nullptr);
  EXPECT_EQ(script::findKeyword("TL42RQDLL_SENDRECEIVE")->op, reader::Op::SendReceive);
  EXPECT_EQ(script::findKeyword("tl42rqdll_echo"), nullptr);
  EXPECT_EQ(script::findKeyword("REM "), nullptr);
  EXPECT_EQ(script::findKeyword(""), nullptr);
}

TEST(ScriptKeywords, HelpRowPutsTheRightTextAtColumn45) {
  const std::string line = script::helpLine("Comment :", "REM, note");
  EXPECT_EQ(line, "Comment :                                   REM, note");
  EXPECT_EQ(line.find("REM, note"), 44u);  // column 45 counted from 1
  EXPECT_EQ(script::helpLine("*data = hexadecimal formated value ", ""), "*data = hexadecimal formated value ");
}

TEST(ScriptKeywords, AvailableCommandsForNewLibraries) {
  const std::vector<std::string> expected{
      "Comment :                                   REM, note",
      "Echo to TL42RQ :                            TL42RQDLL_ECHO",
      "Send IDN request :                          TL42RQDLL_IDN",
      "Send select request :                       TL42RQDLL_SELECT, data*",
      "Send Send/Receive request :                 TL42RQDLL_SENDRECV, data*",
      "Send transparent command :                  TL42RQDLL_KQCMD, 01 + data*",
      "TL42RQ Field Off :                          TL42RQDLL_FIELDOFF",
      "Get Dll revision :                          TL42RQDLL_GETDLLREV",
      "Get MCU revision :                          TL42RQDLL_GETMCUREV",
      "Wait (max 9999999) :                        WAIT, 1000",
      "Send Pulse IRQ in :                         TL42RQDLL_PULSE_IRQ_IN",
      "Reset SPI :                                 TL42RQDLL_RESET_SPI",
      "DEMO-TL42RQ-A USB Handle check :            TL42RQDLL_USB_HANDLE_CHECK",
      "Get Interface Pin State :                   TL42RQDLL_GET_INTERFACE_PIN_STATE",
      "Send NSS Pulse :                            TL42RQDLL_NSS_PULSE",
      "TL42RQ Polling + Reading :                  TL42RQDLL_POLLING_READING",
      "DEMO-TL42RQ-A USB Connect :                 TL42RQDLL_USB_CONNECT",
      "*data = hexadecimal formated value ",
  };
  EXPECT_EQ(texts(HelpGroup::Available, 5), expected);
  EXPECT_EQ(rows(HelpGroup::Available, 5),
            (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 9, 11, 12, 13, 14, 15, 16, 17, 18, 8}));
}

TEST(ScriptKeywords, OlderLibrariesHideRows16To18AndTheDataNoteMovesUp) {
  EXPECT_EQ(rows(HelpGroup::Available, 4), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 9, 11, 12, 13, 14, 15, 8}));
  EXPECT_EQ(rows(HelpGroup::Available, 0).size(), 15u);
  EXPECT_EQ(texts(HelpGroup::Available, 4).back(), "*data = hexadecimal formated value ");
  EXPECT_FALSE(script::helpRowShown(16, 4));
  EXPECT_TRUE(script::helpRowShown(18, 5));
  EXPECT_TRUE(script::helpRowShown(15, 0));
}

TEST(ScriptKeywords, CustomCommands) {
  const std::vector<std::string> expected{
      "Initiate for PDYxx (save Chip_Id value) :   TL42RQ_PDYxx_Initiate",
      "Select for PDYxx with Chip_Id :             TL42RQ_PDYxx_Select",
      "by default, Chip_Id_data = 0x00",
      "Anticolision  ISO14443-A :                  TL42RQ_ISO14443-A_AnticolSelect123",
  };
  EXPECT_EQ(texts(HelpGroup::Custom, 5), expected);
  EXPECT_EQ(texts(HelpGroup::Custom, 1), expected);
}

TEST(ScriptKeywords, EveryHelpedKeywordIsInTheHelpAndEveryAliasIsNot) {
  for (const auto& k : script::kKeywords) {
    const auto shown = script::helpRows(k.group, 5);
    bool found = false;
    for (const auto& r : shown) found = found || r.row == k.helpRow;
    EXPECT_EQ(found, k.helpRow >= 0) << k.word;
  }
  EXPECT_EQ(script::findKeyword("TL42RQDLL_MCUREV")->helpRow, -1);
  EXPECT_EQ(script::findKeyword("TL42RQDLL_SENDRECEIVE")->helpRow, -1);
}

TEST(ScriptKeywords, ExampleAndTitles) {
  EXPECT_STREQ(script::kHelpTitleAvailable, "Available commands on Script tool ");
  EXPECT_STREQ(script::kHelpTitleCustom, "Custom commands on Script tool ");
  EXPECT_STREQ(script::kHelpTitleExample, " Script example");
  EXPECT_STREQ(script::kHelpExample[3], "TL42RQDLL_KQCMD, 010100");
}

}  // namespace

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shell/GlobVariables.h"

namespace {

TEST(GlobVariables, DefaultsOfAFreshState) {
  const glob::GlobVariables fresh;
  EXPECT_EQ(fresh.iso14443AModulationGain, "D1");
  EXPECT_EQ(fresh.scriptChipId, "00");
  EXPECT_EQ(fresh.currentProtocolCode, 99);
  EXPECT_EQ(fresh.dllRevision, 0);
  EXPECT_EQ(fresh.lastDirectory, "");
  EXPECT_EQ(fresh.statusPanel1, "");
  for (bool open : fresh.panelOpen) EXPECT_FALSE(open);
  EXPECT_EQ(fresh.panelOpen.size(), 12u);
  EXPECT_FALSE(fresh.stopFlag);
  EXPECT_FALSE(fresh.scriptLoop);
}

TEST(GlobVariables, OneSharedState) {
  EXPECT_EQ(&glob::state(), &glob::state());
  glob::panelOpen(glob::PanelId::Script) = true;
  EXPECT_TRUE(glob::state().panelOpen[static_cast<std::size_t>(glob::PanelId::Script)]);
  glob::panelOpen(glob::PanelId::Script) = false;
  EXPECT_FALSE(glob::state().panelOpen[static_cast<std::size_t>(glob::PanelId::Script)]);
}

TEST(StatusPanel, SetTellsTheView) {
  glob::GlobVariables g;
  std::vector<std::string> shown;
  g.statusPanel1Changed = [&](const std::string& t) { shown.push_back(t); };
  g.setStatusPanel1("Ready");
  EXPECT_EQ(g.statusPanel1, "Ready");
  EXPECT_EQ(shown, std::vector<std::string>{"Ready"});
}

TEST(StatusPanel, ReplaceChangesTheFirstOccurrenceOnly) {
  glob::GlobVariables g;
  g.statusPanel1 = "A DEMO-TL42RQ-A BOARD CONNECTED B DEMO-TL42RQ-A BOARD CONNECTED";
  g.replaceInStatusPanel1(glob::kBoardConnected, glob::kBoardNotConnected);
  EXPECT_EQ(g.statusPanel1, "A DEMO-TL42RQ-A BOARD NOT CONNECTED B DEMO-TL42RQ-A BOARD CONNECTED");
}

TEST(StatusPanel, AbsentTextChangesNothingAndTellsNobody) {
  glob::GlobVariables g;
  int told = 0;
  g.statusPanel1Changed = [&](const std::string&) { ++told; };
  g.statusPanel1 = "Ready";
  g.replaceInStatusPanel1(glob::kBoardConnected, glob::kBoardNotConnected);
  EXPECT_EQ(g.statusPanel1, "Ready");
  g.statusPanel1.clear();
  g.replaceInStatusPanel1(glob::kBoardNotConnected, glob::kBoardConnected);
  EXPECT_EQ(g.statusPanel1, "");
  EXPECT_EQ(told, 0);
}

TEST(StatusPanel, NotConnectedIsNotMistakenForConnected) {
  glob::GlobVariables g;
  g.statusPanel1 = glob::kBoardNotConnected;
  g.replaceInStatusPanel1(glob::kBoardConnected, glob::kBoardNotConnected);
  EXPECT_EQ(g.statusPanel1, " DEMO-TL42RQ-A BOARD NOT CONNECTED");
}

TEST(StatusPanel, WithoutAViewReplacingStillWorks) {
  glob::GlobVariables g;
  g.statusPanel1 = glob::kBoardNotConnected;
  g.replaceInStatusPanel1(glob::kBoardNotConnected, glob::kBoardConnected);
  EXPECT_EQ(g.statusPanel1, " DEMO-TL42RQ-A BOARD CONNECTED");
}

}  // namespace

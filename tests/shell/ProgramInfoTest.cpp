#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shell/ProgramInfo.h"

namespace {

TEST(ProgramInfo, VersionLineNamesProgramAndVersion) {
  EXPECT_EQ(shell::versionText("tl42rq-script"), "tl42rq-script (TL42RQ Development Software) " TL42RQ_VERSION "\n");
}

TEST(ProgramInfo, WithoutArgumentsTheProgramStarts) {
  EXPECT_FALSE(shell::programInfoRequest({}).has_value());
}

TEST(ProgramInfo, OtherArgumentsStartTheProgramAsAlways) {
  EXPECT_FALSE(shell::programInfoRequest({"-platform", "offscreen"}).has_value());
  EXPECT_FALSE(shell::programInfoRequest({"--versions"}).has_value());
}

TEST(ProgramInfo, VersionPrintsTheVersionLine) {
  EXPECT_EQ(shell::programInfoRequest({"--version"}), "tl42rq (TL42RQ Development Software) " TL42RQ_VERSION "\n");
}

TEST(ProgramInfo, HelpPrintsTheUsage) {
  for (const char* arg : {"--help", "-h"}) {
    const auto text = shell::programInfoRequest({arg});
    ASSERT_TRUE(text.has_value()) << arg;
    EXPECT_EQ(text->rfind("Usage: tl42rq [--help | --version]\n", 0), 0u) << *text;
  }
}

}  // namespace

// The runner's command line read as a pure function: options, their values, the errors.
#include <gtest/gtest.h>

#include "script/cli/RunnerOptions.h"

using script::parseRunnerArguments;

TEST(RunnerOptions, ScriptFileAloneRunsOnceAndPrints) {
  const auto p = parseRunnerArguments({"run.txt"});
  ASSERT_TRUE(p.ok());
  EXPECT_EQ(p.options.scriptFile, "run.txt");
  EXPECT_FALSE(p.options.loop);
  EXPECT_EQ(p.options.pcapngFile, "");
  EXPECT_EQ(p.options.expectLog, "");
}

TEST(RunnerOptions, LoopPcapngAndExpectCombineInAnyOrder) {
  const auto p = parseRunnerArguments({"--pcapng", "out.pcapng", "run.txt", "--loop", "3", "--expect", "saved.txt"});
  ASSERT_TRUE(p.ok()) << p.error;
  EXPECT_EQ(p.options.scriptFile, "run.txt");
  EXPECT_TRUE(p.options.loop);
  EXPECT_EQ(p.options.loopPasses, "3");
  EXPECT_EQ(p.options.pcapngFile, "out.pcapng");
  EXPECT_EQ(p.options.expectLog, "saved.txt");
}

TEST(RunnerOptions, HelpWinsWhereverItStands) {
  EXPECT_TRUE(parseRunnerArguments({"--loop", "x", "--help"}).options.help);
  EXPECT_TRUE(parseRunnerArguments({"-h"}).options.help);
}

TEST(RunnerOptions, DoubleDashEndsTheOptions) {
  const auto p = parseRunnerArguments({"--", "--pcapng"});
  ASSERT_TRUE(p.ok());
  EXPECT_EQ(p.options.scriptFile, "--pcapng");
}

TEST(RunnerOptions, BadArgumentsSayWhatIsWrong) {
  EXPECT_EQ(parseRunnerArguments({}).error, "no script file given");
  EXPECT_EQ(parseRunnerArguments({"a", "b"}).error, "give one script file only");
  EXPECT_EQ(parseRunnerArguments({"--loop"}).error, "--loop needs a number of passes");
  EXPECT_EQ(parseRunnerArguments({"--loop", "-1", "a"}).error, "--loop needs a whole number of passes, not '-1'");
  EXPECT_EQ(parseRunnerArguments({"--pcapng"}).error, "--pcapng needs a file name");
  EXPECT_EQ(parseRunnerArguments({"a", "--expect"}).error, "--expect needs a file name");
  EXPECT_EQ(parseRunnerArguments({"--expect", "", "a"}).error, "--expect needs a file name");
  EXPECT_EQ(parseRunnerArguments({"--verbose", "a"}).error, "unknown option '--verbose'");
  EXPECT_EQ(parseRunnerArguments({"--expect", "log", "--loop", "00", "a"}).error,
            "--expect cannot wait for the end of an endless --loop 0");
  EXPECT_TRUE(parseRunnerArguments({"--loop", "0", "a"}).ok());
  EXPECT_TRUE(parseRunnerArguments({"-"}).ok());
}

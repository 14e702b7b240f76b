#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include "common/InstallPaths.h"
#include "reader/Drivers.h"
#include "reader/Exchange.h"
#include "support/ScopedEnv.h"

namespace {

using reader::Op;

TEST(MissingDriver, AnswersStatusFiveAndAnEmptyTextForEveryOperation) {
  reader::MissingDriver d("driver /x/libTL42RQ.so not loaded: file not found");
  for (const auto& op : reader::kOperations) {
    const auto a = reader::callOnce(d, op.op, "0451");
    EXPECT_EQ(a.status, 5) << op.symbol;
    EXPECT_EQ(a.text, "") << op.symbol;
  }
  EXPECT_EQ(d.description(), "driver /x/libTL42RQ.so not loaded: file not found");
  EXPECT_FALSE(d.isSimulated());
}

TEST(MissingDriver, ExchangeStillCallsTwiceAndEndsWithFive) {
  reader::MissingDriver d("none");
  int reconnects = 0;
  const auto a = reader::exchange(d, Op::Echo, {}, [&] { ++reconnects; });
  EXPECT_EQ(a.status, 5);
  EXPECT_EQ(reconnects, 1);
}

TEST(LibraryDriver, MissingFileGivesAMissingDriverThatSaysSo) {
  const auto d = reader::LibraryDriver::load("/nonexistent/dir/libTL42RQ.so");
  ASSERT_NE(d, nullptr);
  EXPECT_EQ(d->description(), "driver /nonexistent/dir/libTL42RQ.so not loaded: file not found");
  EXPECT_EQ(reader::callOnce(*d, Op::GetDLLrev).status, 5);
  EXPECT_FALSE(d->isSimulated());
}

TEST(LibraryDriver, FileThatIsNoLibraryGivesAMissingDriver) {
  const auto path = std::filesystem::temp_directory_path() / "tl42rq_not_a_library.so";
  { std::ofstream(path) << "this is text, not a shared object\n"; }
  const auto d = reader::LibraryDriver::load(path.string());
  const std::string prefix = "driver " + path.string() + " not loaded: ";
  EXPECT_EQ(d->description().substr(0, prefix.size()), prefix);
  EXPECT_GT(d->description().size(), prefix.size());  // the loader's reason follows
  EXPECT_EQ(reader::callOnce(*d, Op::Echo).status, 5);
  std::filesystem::remove(path);
}

TEST(LibraryDriver, LibraryWithoutTheOperationsNamesTheFirstMissingSymbol) {
  const std::string libc = "/lib/x86_64-linux-gnu/libc.so.6";
  if (!std::filesystem::exists(libc)) GTEST_SKIP() << "no " << libc << " on this machine";
  const auto d = reader::LibraryDriver::load(libc);
  EXPECT_EQ(d->description(), "driver " + libc + " not usable: symbol TL42RQDLL_USBconnect missing");
  EXPECT_EQ(reader::callOnce(*d, Op::USBconnect).status, 5);
}

TEST(LibraryDriver, SimulatedBoardLoadsAndSaysItIsSimulated) {
  const auto d = reader::LibraryDriver::load(SIM_LIBRARY);
  ASSERT_TRUE(dynamic_cast<reader::LibraryDriver*>(d.get())) << d->description();
  EXPECT_TRUE(d->isSimulated());
  EXPECT_EQ(d->description(), std::string(SIM_LIBRARY) + " (simulated board)");
  auto* lib = dynamic_cast<reader::LibraryDriver*>(d.get());
  EXPECT_NE(lib->resolve("TL42RQSim_Reset"), nullptr);
  EXPECT_EQ(lib->resolve("NoSuchSymbolAnywhere"), nullptr);
}

TEST(LibraryDriver, EveryOperationOfTheSimulatedBoardReturnsWithinTheBuffer) {
  const auto d = reader::LibraryDriver::load(SIM_LIBRARY);
  for (const auto& op : reader::kOperations) {
    const auto a = reader::callOnce(*d, op.op, "0451");
    EXPECT_LT(a.text.size(), reader::kAnswerSize) << op.symbol;
  }
}

TEST(DefaultLibraryPath, EnvironmentVariableWins) {
  ScopedEnv env("TL42RQ_DRIVER", "/opt/vendor/libTL42RQ.so");
  EXPECT_EQ(reader::defaultLibraryPath("/usr/lib/tl42rq/"), "/opt/vendor/libTL42RQ.so");
}

TEST(DefaultLibraryPath, WithoutTheVariableTheLibraryBesideTheProgram) {
  ScopedEnv env("TL42RQ_DRIVER", nullptr);
  EXPECT_EQ(reader::defaultLibraryPath("/usr/lib/tl42rq/"), "/usr/lib/tl42rq/libTL42RQ.so");
  EXPECT_EQ(reader::defaultLibraryPath("/usr/lib/tl42rq"), "/usr/lib/tl42rq/libTL42RQ.so");
  EXPECT_EQ(reader::defaultLibraryPath(""), "libTL42RQ.so");
}

TEST(DefaultLibraryPath, InstalledLibraryWhenNoneLiesBesideTheProgram) {
  ScopedEnv env("TL42RQ_DRIVER", nullptr);
  const auto root = std::filesystem::temp_directory_path() / ("tl42rq_driver_" + std::to_string(::getpid()));
  const std::string bin = (root / "bin").string() + "/";
  const std::string installed = (root / TL42RQ_INSTALL_LIBDIR / install::kDriverFile).string();
  std::filesystem::create_directories(root / "bin");
  std::filesystem::create_directories(std::filesystem::path(installed).parent_path());
  std::ofstream(installed) << "";
  EXPECT_EQ(reader::defaultLibraryPath(bin), installed);
  std::ofstream(bin + install::kDriverFile) << "";
  EXPECT_EQ(reader::defaultLibraryPath(bin), bin + install::kDriverFile);
  std::filesystem::remove_all(root);
}

TEST(DefaultLibraryPath, EmptyVariableCountsAsUnset) {
  ScopedEnv env("TL42RQ_DRIVER", "");
  EXPECT_EQ(reader::defaultLibraryPath("/p/"), "/p/libTL42RQ.so");
}

TEST(ProgramDriver, WithoutADriverSetTheProgramAnswersStatusFive) {
  reader::setDriver(nullptr);
  EXPECT_EQ(reader::driver().description(), "no driver loaded");
  EXPECT_EQ(reader::callOnce(reader::driver(), Op::Echo).status, 5);
}

TEST(ProgramDriver, SetDriverInstallsIt) {
  reader::FakeDriver fake;
  fake.queue(Op::Echo, 0, "5500");
  reader::setDriver(&fake);
  EXPECT_EQ(&reader::driver(), &fake);
  EXPECT_EQ(reader::callOnce(reader::driver(), Op::Echo).text, "5500");
  reader::setDriver(nullptr);
  EXPECT_NE(&reader::driver(), &fake);
}

}  // namespace

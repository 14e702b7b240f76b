// The program's own files in the installed layout: a temporary root with bin/, the data
// folder and a user's configuration folder.
#include <gtest/gtest.h>

#include <QStandardPaths>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "common/InstallPaths.h"
#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"
#include "support/ScopedEnv.h"

namespace {

namespace fs = std::filesystem;

class InstalledFilesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "tl42rq_installed_XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    root_ = pattern;
    bin_ = (root_ / "bin").string() + "/";
    data_ = fs::path(bin_ + install::binToDataDir()).lexically_normal();
    user_ = root_ / "home" / ".config" / "tl42rq";
    fs::create_directories(bin_);
    fs::create_directories(data_);
    shell::setProgramDirectory(bin_);
    shell::setUserConfigDirectory(user_.string());
    auto& g = glob::state();
    g.lastDirectory = "/before/";
    g.backgroundColor = "&h8000000F";
  }
  void TearDown() override {
    shell::setProgramDirectory("./");
    fs::remove_all(root_);
  }
  static void write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
  }
  static std::string read(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  fs::path root_, data_, user_;
  std::string bin_;
};

TEST_F(InstalledFilesTest, UsageReadsTheInstalledDefaultWhenTheUserHasNone) {
  write(data_ / shell::kUsageFileName, "\"\",\"11250603\"");
  shell::readUsageFile();
  EXPECT_EQ(glob::state().lastDirectory, "");
  EXPECT_EQ(glob::state().backgroundColor, "11250603");
}

TEST_F(InstalledFilesTest, UsageReadsTheUsersOwnBeforeTheDefault) {
  write(data_ / shell::kUsageFileName, "\"\",\"11250603\"");
  write(user_ / shell::kUsageFileName, "\"/home/me/logs/\",\"255\"\r\n");
  shell::readUsageFile();
  EXPECT_EQ(glob::state().lastDirectory, "/home/me/logs/");
  EXPECT_EQ(glob::state().backgroundColor, "255");
}

TEST_F(InstalledFilesTest, UsageWriteGoesIntoTheUsersFolderAndLeavesTheDefault) {
  write(data_ / shell::kUsageFileName, "\"\",\"11250603\"");
  shell::writeUsageFile("/home/me/scripts/", "65280");
  EXPECT_EQ(read(user_ / shell::kUsageFileName), "\"/home/me/scripts/\",\"65280\"\r\n");
  EXPECT_EQ(read(data_ / shell::kUsageFileName), "\"\",\"11250603\"");
  EXPECT_FALSE(fs::exists(bin_ + shell::kUsageFileName));
}

TEST_F(InstalledFilesTest, UsageWriteWithNoFileAnywhereCreatesNone) {
  shell::writeUsageFile("/home/me/scripts/", "65280");
  EXPECT_FALSE(fs::exists(user_ / shell::kUsageFileName));
  EXPECT_FALSE(fs::exists(bin_ + shell::kUsageFileName));
}

TEST_F(InstalledFilesTest, UsageBesideTheProgramWinsForReadAndWrite) {
  write(bin_ + shell::kUsageFileName, "\"/beside/\",\"1\"");
  write(user_ / shell::kUsageFileName, "\"/users/\",\"2\"");
  shell::readUsageFile();
  EXPECT_EQ(glob::state().lastDirectory, "/beside/");
  shell::writeUsageFile("/new/", "3");
  EXPECT_EQ(read(bin_ + shell::kUsageFileName), "\"/new/\",\"3\"\r\n");
  EXPECT_EQ(read(user_ / shell::kUsageFileName), "\"/users/\",\"2\"");
}

TEST_F(InstalledFilesTest, ProductFileFromTheDataFolderWhenNoneBesideTheProgram) {
  EXPECT_EQ(shell::productFilePath(), bin_ + install::kProductFile);
  write(data_ / install::kProductFile, "x");
  EXPECT_EQ(shell::productFilePath(), (data_ / install::kProductFile).string());
  write(bin_ + install::kProductFile, "x");
  EXPECT_EQ(shell::productFilePath(), bin_ + install::kProductFile);
}

TEST_F(InstalledFilesTest, SettingTheProgramDirectoryForgetsTheUserFolder) {
  EXPECT_EQ(shell::userConfigDirectory(), user_.string() + "/");
  shell::setProgramDirectory(bin_);
  EXPECT_EQ(shell::userConfigDirectory(), "");
}

// The simulated board has no Qt and finds the user's folder itself: it must be the one
// the program gets from Qt.
TEST(UserConfigFolder, SameAsQtsGenericConfigLocation) {
  for (const char* xdg : {"/tmp/tl42rq-xdg-config", static_cast<const char*>(nullptr)}) {
    ScopedEnv env("XDG_CONFIG_HOME", xdg);
    EXPECT_EQ(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).toStdString() + "/tl42rq/",
              install::userConfigDirectory(std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME")));
  }
}

}  // namespace

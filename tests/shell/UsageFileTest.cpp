#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "shell/GlobVariables.h"
#include "shell/UsageFile.h"

namespace {

namespace fs = std::filesystem;

class UsageFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "tl42rq_usage_XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
    shell::setProgramDirectory(dir_.string());
    auto& g = glob::state();
    g.lastDirectory = "/before/";
    g.backgroundColor = "&h8000000F";
  }
  void TearDown() override {
    shell::setProgramDirectory("./");
    fs::remove_all(dir_);
  }
  fs::path file() const { return dir_ / shell::kUsageFileName; }
  void write(const std::string& text) const { std::ofstream(file(), std::ios::binary) << text; }
  std::string read() const {
    std::ifstream in(file(), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
  }
  fs::path dir_;
};

TEST_F(UsageFileTest, ProgramDirectoryGetsItsTrailingSeparator) {
  EXPECT_EQ(shell::programDirectory(), dir_.string() + "/");
  shell::setProgramDirectory("/already/");
  EXPECT_EQ(shell::programDirectory(), "/already/");
}

TEST_F(UsageFileTest, ParseReadsTheTwoQuotedFields) {
  const auto p = shell::parseUsageText("\"C:\\Users\\me\\logs\\\",\"&h00C0FFC0\"\r\n");
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->lastDirectory, "C:\\Users\\me\\logs\\");
  EXPECT_EQ(p->backgroundColor, "&h00C0FFC0");
}

TEST_F(UsageFileTest, ParseTakesAnEmptyDirectory) {
  const auto p = shell::parseUsageText("\"\",\"11250603\"");
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->lastDirectory, "");
  EXPECT_EQ(p->backgroundColor, "11250603");
}

TEST_F(UsageFileTest, ParseNeedsBothFields) {
  EXPECT_FALSE(shell::parseUsageText("").has_value());
  EXPECT_FALSE(shell::parseUsageText("\"/only/one/\"\r\n").has_value());
}

TEST_F(UsageFileTest, UsageLineIsTwoQuotedFieldsAndCrLf) {
  EXPECT_EQ(shell::usageLine("/home/me/", "&hFF"), "\"/home/me/\",\"&hFF\"\r\n");
}

TEST_F(UsageFileTest, ReadFillsBothGlobalValues) {
  write("\"/home/me/scripts/\",\"12632256\"\r\n");
  shell::readUsageFile();
  EXPECT_EQ(glob::state().lastDirectory, "/home/me/scripts/");
  EXPECT_EQ(glob::state().backgroundColor, "12632256");
}

TEST_F(UsageFileTest, MissingFileLeavesTheValuesAsTheyAre) {
  shell::readUsageFile();
  EXPECT_EQ(glob::state().lastDirectory, "/before/");
  EXPECT_EQ(glob::state().backgroundColor, "&h8000000F");
}

TEST_F(UsageFileTest, FileWithOneFieldLeavesTheValuesAsTheyAre) {
  write("\"/only/\"");
  shell::readUsageFile();
  EXPECT_EQ(glob::state().lastDirectory, "/before/");
  EXPECT_EQ(glob::state().backgroundColor, "&h8000000F");
}

TEST_F(UsageFileTest, WriteRewritesAFileThatExists) {
  write("\"/old/\",\"1\"\r\n");
  shell::writeUsageFile("/new/dir/", "&hC0C0C0");
  EXPECT_EQ(read(), "\"/new/dir/\",\"&hC0C0C0\"\r\n");
  shell::readUsageFile();
  EXPECT_EQ(glob::state().lastDirectory, "/new/dir/");
  EXPECT_EQ(glob::state().backgroundColor, "&hC0C0C0");
}

TEST_F(UsageFileTest, WriteDoesNotCreateAMissingFile) {
  shell::writeUsageFile("/new/dir/", "1");
  EXPECT_FALSE(fs::exists(file()));
}

TEST_F(UsageFileTest, WriteReplacesALongerFileWhole) {
  write(std::string(5000, 'x'));
  shell::writeUsageFile("/a/", "2");
  EXPECT_EQ(read(), "\"/a/\",\"2\"\r\n");
}

TEST_F(UsageFileTest, ShippedFileParses) {
  std::ifstream in(std::string(TEST_FIXTURES) + "/../../data/usageTL42RQsoftware.dat", std::ios::binary);
  ASSERT_TRUE(in.good());
  std::ostringstream s;
  s << in.rdbuf();
  const auto p = shell::parseUsageText(s.str());
  ASSERT_TRUE(p.has_value());
  EXPECT_EQ(p->lastDirectory, "");
  EXPECT_NE(shell::colourValue(p->backgroundColor), 0);
}

TEST(ColourValue, DecimalText) {
  EXPECT_EQ(shell::colourValue("12632256"), 12632256);
  EXPECT_EQ(shell::colourValue("0"), 0);
  EXPECT_EQ(shell::colourValue("255"), 255);
}

TEST(ColourValue, AmpersandHHexText) {
  EXPECT_EQ(shell::colourValue("&hFF"), 255);
  EXPECT_EQ(shell::colourValue("&HC0C0C0"), 0xC0C0C0);
  EXPECT_EQ(shell::colourValue("&h00c0ffc0"), 0xC0FFC0);
}

TEST(ColourValue, TextThatIsNoNumberGivesZero) {
  for (const char* t : {"", "red", "&h", "&hXYZ", "&h12G", "12abc", "&h123456789", "#FFFFFF", "0x10"})
    EXPECT_EQ(shell::colourValue(t), 0) << t;
}

}  // namespace

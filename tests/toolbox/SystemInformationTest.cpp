#include "toolbox/SystemInformation.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QFile>
#include <cstdlib>
#include <map>

TEST(SystemInformation, NothingFoundGivesEmptyPath) {
  std::vector<std::string> asked;
  const auto path = toolbox::findSystemInformationTool([&](const std::string& name) {
    asked.push_back(name);
    return std::string();
  });
  EXPECT_EQ(path, "");
  EXPECT_EQ(asked, std::vector<std::string>(toolbox::kSystemInformationTools.begin(),
                                            toolbox::kSystemInformationTools.end()));
}

TEST(SystemInformation, FirstCandidateFoundWins) {
  const std::map<std::string, std::string> installed{{"gnome-system-monitor", "/usr/bin/gnome-system-monitor"},
                                                     {"hardinfo", "/usr/bin/hardinfo"}};
  const auto path = toolbox::findSystemInformationTool([&](const std::string& name) {
    const auto it = installed.find(name);
    return it == installed.end() ? std::string() : it->second;
  });
  EXPECT_EQ(path, "/usr/bin/hardinfo");
}

TEST(SystemInformation, NoLookupFindsNothing) { EXPECT_EQ(toolbox::findSystemInformationTool(nullptr), ""); }

TEST(SystemInformation, SearchPathIsWherePlatformToolsAreLooked) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const std::string savedPath = std::getenv("PATH") ? std::getenv("PATH") : "";
  setenv("PATH", dir.path().toLocal8Bit().constData(), 1);
  EXPECT_EQ(toolbox::findSystemInformationToolInPath(), "");
  QFile tool(dir.filePath("kinfocenter"));
  ASSERT_TRUE(tool.open(QIODevice::WriteOnly));
  tool.write("#!/bin/sh\nexit 0\n");
  tool.close();
  tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  EXPECT_EQ(toolbox::findSystemInformationToolInPath(), dir.filePath("kinfocenter").toStdString());
  setenv("PATH", savedPath.c_str(), 1);
}

TEST(SystemInformation, MessageWhenNoneIsExact) {
  EXPECT_STREQ(toolbox::kSysInfoNotAvailable, "System Information are not available now");
}

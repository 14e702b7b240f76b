#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "common/InstallPaths.h"

namespace {

using Places = std::vector<std::string>;

std::string normal(const std::string& path) { return std::filesystem::path(path).lexically_normal().string(); }

// Only the listed files exist.
auto existing(std::set<std::string> files) {
  return [files = std::move(files)](const std::string& p) { return files.count(p) > 0; };
}

TEST(InstallPaths, RelativeFoldersLeadFromBinToTheInstalledFolders) {
  EXPECT_EQ(normal("/usr/bin/" + install::binToLibDir()), "/usr/" TL42RQ_INSTALL_LIBDIR "/");
  EXPECT_EQ(normal("/usr/bin/" + install::binToDataDir()), "/usr/" TL42RQ_INSTALL_DATADIR "/");
  EXPECT_EQ(normal("/usr/" TL42RQ_INSTALL_LIBDIR "/" + install::libToDataDir()), "/usr/" TL42RQ_INSTALL_DATADIR "/");
}

TEST(InstallPaths, WithSlashEndsInExactlyOneSeparator) {
  EXPECT_EQ(install::withSlash("/usr/bin"), "/usr/bin/");
  EXPECT_EQ(install::withSlash("/usr/bin//"), "/usr/bin/");
  EXPECT_EQ(install::withSlash("/"), "/");
  EXPECT_EQ(install::withSlash(""), "");
}

TEST(InstallPaths, DriverBesideTheProgramThenInThePrivateLibraryFolder) {
  EXPECT_EQ(install::driverPlaces("/usr/bin"),
            (Places{"/usr/bin/libTL42RQ.so", "/usr/" TL42RQ_INSTALL_LIBDIR "/libTL42RQ.so"}));
  EXPECT_EQ(install::driverPlaces(""), (Places{"libTL42RQ.so"}));
}

TEST(InstallPaths, ProductFileBesideTheProgramThenInTheDataFolder) {
  EXPECT_EQ(install::productFilePlaces("/opt/t/bin/"),
            (Places{"/opt/t/bin/TL42RQ_products.ini", "/opt/t/" TL42RQ_INSTALL_DATADIR "/TL42RQ_products.ini"}));
  EXPECT_EQ(install::productFilePlaces(""), (Places{"TL42RQ_products.ini"}));
}

TEST(InstallPaths, UsageFileBesideTheProgramThenTheUsersThenTheInstalledDefault) {
  EXPECT_EQ(install::usageFilePlaces("/usr/bin/", "/home/me/.config/tl42rq"),
            (Places{"/usr/bin/usageTL42RQsoftware.dat", "/home/me/.config/tl42rq/usageTL42RQsoftware.dat",
                    "/usr/" TL42RQ_INSTALL_DATADIR "/usageTL42RQsoftware.dat"}));
}

TEST(InstallPaths, UsageFileWithoutAUserFolderOnlyBesideTheProgram) {
  EXPECT_EQ(install::usageFilePlaces("/build/bin/", ""), (Places{"/build/bin/usageTL42RQsoftware.dat"}));
}

TEST(InstallPaths, UsageFileIsWrittenBesideTheProgramOnlyWhenItIsThere) {
  const std::string beside = "/build/bin/usageTL42RQsoftware.dat";
  const std::string users = "/home/me/.config/tl42rq/usageTL42RQsoftware.dat";
  EXPECT_EQ(install::usageFileToWrite("/build/bin/", "/home/me/.config/tl42rq/", existing({beside})), beside);
  EXPECT_EQ(install::usageFileToWrite("/build/bin/", "/home/me/.config/tl42rq/", existing({})), users);
  EXPECT_EQ(install::usageFileToWrite("/build/bin/", "/home/me/.config/tl42rq/", existing({users})), users);
  EXPECT_EQ(install::usageFileToWrite("/build/bin/", "", existing({})), beside);
}

TEST(InstallPaths, FieldFileBesideTheLibraryThenTheUsersThenTheInstalledDefault) {
  const std::string lib = "/usr/" TL42RQ_INSTALL_LIBDIR "/";
  EXPECT_EQ(install::fieldFilePlaces(lib, "/home/me/.config/tl42rq/"),
            (Places{lib + "TL42RQ_field.json", "/home/me/.config/tl42rq/TL42RQ_field.json",
                    "/usr/" TL42RQ_INSTALL_DATADIR "/TL42RQ_field.json"}));
  EXPECT_EQ(install::fieldFilePlaces(lib, ""),
            (Places{lib + "TL42RQ_field.json", "/usr/" TL42RQ_INSTALL_DATADIR "/TL42RQ_field.json"}));
}

TEST(InstallPaths, UserFolderFromXdgConfigHomeElseHomeDotConfig) {
  EXPECT_EQ(install::userConfigDirectory("/x/cfg", "/home/me"), "/x/cfg/tl42rq/");
  EXPECT_EQ(install::userConfigDirectory("relative/cfg", "/home/me"), "/home/me/.config/tl42rq/");
  EXPECT_EQ(install::userConfigDirectory("", "/home/me/"), "/home/me/.config/tl42rq/");
  EXPECT_EQ(install::userConfigDirectory(nullptr, "/home/me"), "/home/me/.config/tl42rq/");
  EXPECT_EQ(install::userConfigDirectory(nullptr, nullptr), "");
  EXPECT_EQ(install::userConfigDirectory(nullptr, ""), "");
}

TEST(InstallPaths, FirstExistingKeepsTheOrder) {
  const Places places{"/a/f", "/b/f", "/c/f"};
  EXPECT_EQ(install::firstExisting(places, existing({"/b/f", "/c/f"})), "/b/f");
  EXPECT_EQ(install::firstExisting(places, existing({"/c/f"})), "/c/f");
  EXPECT_EQ(install::firstExisting(places, existing({"/a/f", "/c/f"})), "/a/f");
}

TEST(InstallPaths, FirstExistingNamesTheFirstPlaceWhenNoneExists) {
  EXPECT_EQ(install::firstExisting({"/a/f", "/b/f"}, existing({})), "/a/f");
  EXPECT_EQ(install::firstExisting({}, existing({"/a/f"})), "");
}

}  // namespace

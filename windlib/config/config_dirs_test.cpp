#include "windlib/config/config_dirs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

// The installation is found once in the life of the process, so that there is one for all cases.
struct Installation {
    Installation() {
        std::string name = path_join(path_temporary_directory(), "config_dirs_XXXXXX");
        root = mkdtemp(name.data()) ? name : "";
        setenv("CHRONOWEAVE_HOME", root.c_str(), 1);
    }
    ~Installation() { std::filesystem::remove_all(root); }
    std::string root;
};
const Installation installation;

class ConfigDirs : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_FALSE(installation.root.empty());
        for (const char* name : {"user", "config", "defaults"})
            std::filesystem::remove_all(path_join(installation.root, name));
        config_SetUserDirectory(path_join(installation.root, "user"));
    }
    void TearDown() override {
        config_UseDefaultsOnly(false);
        config_SetUserDirectory({});
    }
    static std::string Write(const std::string& relative) {
        const std::string path = path_join(installation.root, relative);
        path_make_directory(path_directory(path));
        std::ofstream(path) << "x";
        return path;
    }
};

TEST_F(ConfigDirs, TheUsersFileGoesBeforeTheSitesAndThatBeforeTheDefault) {
    const std::string name = "chrono_weave/a.tc";
    EXPECT_EQ(config_FindFile(name), "");
    const std::string standard = Write("defaults/" + name);
    EXPECT_EQ(config_FindFile(name), standard);
    const std::string site = Write("config/" + name);
    EXPECT_EQ(config_FindFile(name), site);
    const std::string user = Write("user/" + name);
    EXPECT_EQ(config_FindFile(name), user);
    config_UseDefaultsOnly(true);
    EXPECT_EQ(config_FindFile(name), standard);
    EXPECT_EQ(config_FindFile(user), user) << "an absolute path stands as it is";
    EXPECT_EQ(config_FindFile(user + "x"), "");
}

TEST_F(ConfigDirs, ADirectoryOfTheNameDoesNotCount) {
    const std::string standard = Write("defaults/a.tc");
    Write("user/a.tc/inside");
    EXPECT_EQ(config_FindFile("a.tc"), standard);
    EXPECT_EQ(config_FindFile(path_join(installation.root, "user/a.tc")), "");
}

TEST_F(ConfigDirs, AnyCaseServesWhereTheExactNameIsMissing) {
    const std::string standard = Write("defaults/sub/NAME.tc");
    const std::string user = Write("user/sub/Name.tc");
    EXPECT_EQ(config_FindFile("sub/NAME.tc"), standard) << "exact compares stay exact";
    EXPECT_EQ(config_FindFile("sub/NAME.tc", ConfigAccess::Read, ConfigNames::AnyCase), user);
    const std::string exact = Write("user/sub/NAME.tc");
    EXPECT_EQ(config_FindFile("sub/NAME.tc", ConfigAccess::Read, ConfigNames::AnyCase), exact);
    EXPECT_EQ(config_FindFile(std::string("sub/NAME.tc\0x", 13), ConfigAccess::Read, ConfigNames::AnyCase),
              "");
}

TEST_F(ConfigDirs, TheUserDirectoryIsMadeOnDemandAndAFailureWarns) {
    std::string report;
    gen_set_report_sink([&](int, const std::string& line) { report += line; });
    const std::string user = path_join(installation.root, "user");
    EXPECT_EQ(config_UserDirectory(), user);
    EXPECT_FALSE(path_is_directory(user));
    EXPECT_EQ(config_UserDirectory(true), user);
    EXPECT_TRUE(path_is_directory(user));
    EXPECT_EQ(report, "");
    const std::string below = path_join(Write("config/file"), "below");
    config_SetUserDirectory(below);
    EXPECT_EQ(config_UserDirectory(true), below);
    EXPECT_NE(report.find("Couldn't create user config directory: " + below), std::string::npos);
    gen_set_report_sink({});
}

}  // namespace

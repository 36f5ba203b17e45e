// Where settings and configure files lie: the user's own directory, the site's and the defaults of the
// installation. All three hold the same relative paths, for example "chrono_weave/NAME.tc"; the user's file
// goes before the site's, and that before the default. State of the process, set while the command line is
// read.
#pragma once

#include <string>

// Puts a directory in place of the user's configuration directory. Empty takes the platform's again.
void config_SetUserDirectory(std::string directory);
// With true only the defaults of the installation are looked at.
void config_UseDefaultsOnly(bool on);
bool config_DefaultsOnly();

// The user's configuration directory, computed at first use. With create it is made, parents too; a failure
// gives a warning, and the path all the same.
const std::string& config_UserDirectory(bool create = false);
// "config" and "defaults" of the installation; empty when there is no installation.
std::string config_SiteDirectory();
std::string config_DefaultsDirectory();

enum class ConfigAccess { Exists, Read, Write };
// AnyCase: where no file has exactly the name, one that differs only in the case of ASCII letters serves (of
// several, the first by byte order). Only the last component is compared in that way.
enum class ConfigNames { Exact, AnyCase };

// The full path of a configuration file, or empty. An absolute path is tested as it stands, a relative one
// below the three directories in turn. A place counts when the access is granted and it is no directory.
std::string config_FindFile(const std::string& path, ConfigAccess access = ConfigAccess::Read,
                            ConfigNames names = ConfigNames::Exact);

// File names and the directories that the program looks in. Names are bytes; separators are the platform's.
#pragma once

#include <string>
#include <string_view>

// The text behind the last "." of the last path component, without the "."; empty when there is none.
std::string_view path_extension(std::string_view path);
// The path less its extension and less the "." before it.
std::string path_without_extension(std::string_view path);
// The last component, and what stands before it ("." when there is nothing).
std::string_view path_file(std::string_view path);
std::string path_directory(std::string_view path);
std::string path_join(std::string_view directory, std::string_view name);

// True when both names lead to one file, whatever links lie between. Names of files that do not stand are
// the same when what would be made is.
bool path_same_file(const std::string& one, const std::string& other);

bool path_is_readable_file(const std::string& path);
bool path_is_directory(const std::string& path);
// True when a file can be made in the directory; tried by making one, so that read-only file systems count.
bool path_directory_is_writable(const std::string& directory);
// Makes the directory and its missing parents with mode 0755; true when it stands afterwards.
bool path_make_directory(const std::string& directory);

// TMP, then TEMP, then the platform's temporary directory.
std::string path_temporary_directory();
// $XDG_CACHE_HOME/chronoweave, else ~/.cache/chronoweave. Not created.
std::string path_cache_directory();
// The place in the cache directory of what would stand beside a file of this name: a name of its own,
// whatever folder the file is in. Nothing is made.
std::string path_in_cache(const std::string& path);
// $XDG_CONFIG_HOME/chronoweave, else ~/.config/chronoweave. Not created.
std::string path_user_config_directory();
// The program of this name in the directory that this program is in, else the first on PATH; empty when there
// is none that can be run.
std::string path_find_program(const std::string& name);
// The directory that holds "defaults" and "icons": CHRONOWEAVE_HOME when set, else the nearest of the
// program's own directory, its "share/chronoweave" and its parents. Empty when there is none. Computed once.
const std::string& path_installation_directory();

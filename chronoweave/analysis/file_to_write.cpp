#include "chronoweave/analysis/file_to_write.h"

#include <filesystem>
#include <system_error>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

std::string dialogs_FileToWrite(DialogHost& host, const std::string& chosen, const std::string& extension) {
    if (!path_extension(chosen).empty()) return chosen;
    const std::string name = chosen + '.' + extension;
    std::error_code none;
    const bool stands = std::filesystem::exists(name, none);
    return !stands || host.ask(gen_format("\"%s\" exists already. Replace it?", name.c_str()))
               ? name
               : std::string();
}

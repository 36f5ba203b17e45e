#include "chronoweave/cli/outputs.h"

#include <string>
#include <vector>

#include "chronoweave/cli/messages.h"
#include "shared/libcxxutil/paths.h"

namespace {

// The files that results go into. The -o of import is a base name, merge has several sources, and live has
// none; they see to their files themselves.
std::vector<std::string> outputs_of(const CommandLine& line) {
    const bool seesToItself = line.command == "import" || line.command == "merge" || line.command == "live";
    std::vector<std::string> outputs;
    for (const std::string& name : {seesToItself ? std::string() : line.output, line.junit})
        if (!name.empty()) outputs.push_back(name);
    return outputs;
}

// All that a PATH can stand for.
std::vector<std::string> files_of(const std::string& path) {
    std::vector<std::string> files{path};
    for (const std::string& base : {path, path_without_extension(path)})
        for (const char* extension : {".trr", ".core", ".trs", ".tri", ".trv", ".trl"})
            files.push_back(base + extension);
    return files;
}

const std::string* same_as(const std::string& name, const std::vector<std::string>& files) {
    for (const std::string& file : files)
        if (path_same_file(name, file)) return &file;
    return nullptr;
}

}  // namespace

bool cli_OutputsAreFree(const CommandLine& line, int& status) {
    const std::vector<std::string> outputs = outputs_of(line), trace = files_of(line.path);
    for (const std::string& name : outputs) {
        if (same_as(name, trace))
            status = cli_Failure(name + ": the result would overwrite what it is made of");
        else if (line.command == "check" && path_same_file(name, line.subject))
            status = cli_UsageError(name + ": the result would overwrite the rules");
        else if (!line.config.empty() && path_same_file(name, line.config))
            status = cli_UsageError(name + ": the result would overwrite the configure file");
        else
            continue;
        return false;
    }
    if (outputs.size() < 2 || !path_same_file(outputs[0], outputs[1])) return true;
    status = cli_UsageError(outputs[1] + ": both results would go into this file");
    return false;
}

std::string cli_OutputInStore(const CommandLine& line, const std::string& base) {
    for (const std::string& name : outputs_of(line))
        if (same_as(name, files_of(base))) return name;
    return {};
}

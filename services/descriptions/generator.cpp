// Makes the C++ of service descriptions: service_generator FOLDER FILE...
#include <cstdio>
#include <string>
#include <vector>

#include "services/descriptions/emit.h"
#include "shared/libcxxutil/files.h"
#include "shared/libcxxutil/paths.h"

namespace {

// A file that stands as it should is left alone, so that nothing is built anew.
bool write(const std::string& folder, const EmittedFile& file) {
    const std::string path = path_join(folder, file.name);
    std::string stands;
    if (file_read_whole(path, stands) && stands == file.text) return true;
    const Result written = file_replace(path, file.text);
    if (!written) std::fprintf(stderr, "%s\n", written.text().c_str());
    return written.ok();
}

bool read(const std::string& path, std::vector<DescribedService>& services) {
    std::string text;
    if (const Result whole = file_read_whole(path, text); !whole) {
        std::fprintf(stderr, "%s\n", whole.text().c_str());
        return false;
    }
    const Result parsed = description_Parse(path, text, services);
    if (!parsed) std::fprintf(stderr, "%s\n", parsed.text().c_str());
    return parsed.ok();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s FOLDER FILE...\n", argv[0]);
        return 2;
    }
    std::vector<DescribedService> services;
    for (int i = 2; i < argc; ++i)
        if (!read(argv[i], services)) return 1;
    if (!path_make_directory(argv[1])) {
        std::fprintf(stderr, "%s: can't be made\n", argv[1]);
        return 1;
    }
    for (const DescribedService& service : services)
        for (const EmittedFile& file : emit_Service(service))
            if (!write(argv[1], file)) return 1;
    for (const EmittedFile& file : emit_Tables(services))
        if (!write(argv[1], file)) return 1;
    return 0;
}

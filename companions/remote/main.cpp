// chronoweave-remote: steers the analyzer's windows from scripts and editors.
#include <cstdio>

#include "companions/remote/remote.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/process_start.h"
#include "shared/libcxxutil/report.h"

int main(int argc, char** argv) {
    process_Begin(argv[0]);
    process_CatchStops();
    RemoteOptions options;
    if (const Result parsed = remoteOptions_Parse({argv + 1, argv + argc}, options); !parsed) {
        gen_error("%s", parsed.text().c_str());
        return 2;
    }
    switch (options.answer) {
        case RemoteOptions::Answer::Help:
            std::fputs(remoteOptions_Help, stdout);
            return 0;
        case RemoteOptions::Answer::Version:
            std::printf("chronoweave-remote %s\n", CW_VERSION);
            return 0;
        case RemoteOptions::Answer::None:
            break;
    }
    bool printed = true;
    const RemoteOutput print = [&printed](const std::string& line) {
        printed = std::printf("%s\n", line.c_str()) >= 0 && std::fflush(stdout) == 0 && printed;
    };
    EventLoop loop;
    Remote remote(options, path_find_program("trvgui"), print, loop, [&] {
        const auto client = ref_Make<RemoteClient>(options.abilities, options.form, print);
        return Ref<TRA_client_Impl>(client.get());
    });
    const Result done = remote.run();
    if (!done) gen_error("%s", done.text().c_str());
    return done.ok() && printed ? 0 : 1;
}

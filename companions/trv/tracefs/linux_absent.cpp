// In place of the target where the library that it stands on was not there at build.
#include "companions/trv/tracefs/linux_target.h"

const char linux_Usage[] =
    "linux                     this machine's scheduler; not in this build, which had no libtracefs";

Result linux_Connect(std::string_view, std::unique_ptr<Target>&) {
    return Result::failure("this program was built without libtracefs", "",
                           "the target run watches a command and needs neither library nor rights");
}

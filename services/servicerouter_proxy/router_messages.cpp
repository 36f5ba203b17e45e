#include "services/servicerouter_proxy/router_messages.h"

#include "shared/libcxxutil/report.h"

bool router_Fail(STPStatus& status, const std::string& text, STPCode code) {
    gen_standard_error(text);
    status = {text.substr(0, text.find_last_not_of('\n') + 1), code};
    return false;
}

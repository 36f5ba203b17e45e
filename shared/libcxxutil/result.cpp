#include "shared/libcxxutil/result.h"

#include <system_error>
#include <utility>

namespace {
const std::string nothing;
}

Result Result::failure(std::string what, std::string where, std::string reason) {
    Result result;
    result.failure_ =
        std::make_shared<Failure>(Failure{std::move(what), std::move(where), std::move(reason)});
    return result;
}

Result Result::system(std::string where, int error, std::string what) {
    std::string reason = error != 0 ? std::generic_category().message(error) : "the system gives no reason";
    return failure(std::move(what), std::move(where), std::move(reason));
}

Result Result::fatal() && {
    if (failure_) failure_->fatal = true;
    return std::move(*this);
}

const std::string& Result::what() const {
    return failure_ ? failure_->what : nothing;
}
const std::string& Result::where() const {
    return failure_ ? failure_->where : nothing;
}
const std::string& Result::reason() const {
    return failure_ ? failure_->reason : nothing;
}

std::string Result::text() const {
    std::string text;
    for (const std::string* part : {&where(), &what(), &reason()}) {
        if (part->empty()) continue;
        if (!text.empty()) text += ": ";
        text += *part;
    }
    return text;
}

Result result_First(Result first, Result second) {
    return first.ok() ? second : first;
}

Result result_Both(Result first, Result second) {
    if (first) return second;
    if (second) return first;
    return Result::failure(first.text() + '\n' + second.text());
}

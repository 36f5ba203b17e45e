#include "shared/stp_transport/spec/stp_log.h"

#include <unistd.h>

#include <utility>

void STPLog::puts(std::string_view text) {
    write(text.data(), text.size());
}

void STPLog::printf(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
}

void STPLog::vprintf(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    if (length > 0) {
        std::string text(static_cast<size_t>(length) + 1, '\0');
        std::vsnprintf(text.data(), text.size(), format, again);
        write(text.data(), static_cast<size_t>(length));
    }
    va_end(again);
}

STPFileLog::~STPFileLog() {
    if (owns_ == Owns::Yes && file_) std::fclose(file_);
}

void STPFileLog::write(const char* bytes, size_t length) {
    if (!file_) return;
    // A log that can't be written must not stop the service.
    if (std::fwrite(bytes, 1, length, file_) == length) std::fflush(file_);
}

void TimestampedSTPFileLog::beginEntry(const STPLogSource&, STPLogWay) {
    using namespace std::chrono;
    const auto since = duration_cast<milliseconds>(now_().time_since_epoch()).count();
    printf("%lld.%.3u:", static_cast<long long>(since / 1000), static_cast<unsigned>(since % 1000));
}

void ForwardingSTPLog::write(const char* bytes, size_t length) {
    entry_.append(bytes, length);
}

void ForwardingSTPLog::beginEntry(const STPLogSource& source, STPLogWay) {
    entry_.clear();
    printf("%d:%u: ", static_cast<int>(::getpid()), source.localId);
}

void ForwardingSTPLog::endEntry(const STPLogSource&, STPLogWay) {
    // Sending may log in turn: that is another entry.
    const std::string entry = std::exchange(entry_, {});
    if (send_) send_(entry);
}

// Logs of the messages of a service.
#pragma once

#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "shared/libcxxutil/report.h"

// What an entry is about: which side of which connection, and the way the message goes.
enum class STPLogWay { Send, Receive };
struct STPLogSource {
    const char* serviceName;
    uint32_t localId;
};

class STPLog {
  public:
    STPLog() = default;
    STPLog(const STPLog&) = delete;
    STPLog& operator=(const STPLog&) = delete;
    virtual ~STPLog() = default;
    virtual void write(const char* bytes, size_t length) = 0;
    virtual void puts(std::string_view text);
    virtual void printf(const char* format, ...) CW_PRINTF(2, 3);
    virtual void vprintf(const char* format, std::va_list arguments);
    // Around all that is written about one message.
    virtual void beginEntry(const STPLogSource&, STPLogWay) {}
    virtual void endEntry(const STPLogSource&, STPLogWay) {}
};

class STPFileLog : public STPLog {
  public:
    enum class Owns { No, Yes };
    // An owned file is closed with the log.
    STPFileLog(std::FILE* file, Owns owns) : file_(file), owns_(owns) {}
    ~STPFileLog() override;
    void write(const char* bytes, size_t length) override;

  private:
    std::FILE* file_;
    Owns owns_;
};

// Each entry begins with "seconds.milliseconds:" of the system's clock.
class TimestampedSTPFileLog : public STPFileLog {
  public:
    using Now = std::function<std::chrono::system_clock::time_point()>;
    TimestampedSTPFileLog(std::FILE* file, Owns owns, Now now = std::chrono::system_clock::now)
        : STPFileLog(file, owns), now_(std::move(now)) {}
    void beginEntry(const STPLogSource& source, STPLogWay way) override;

  private:
    Now now_;
};

// Hands each entry on as a whole, behind the number of the process and the service's local id.
class ForwardingSTPLog : public STPLog {
  public:
    using Send = std::function<void(const std::string& entry)>;
    explicit ForwardingSTPLog(Send send) : send_(std::move(send)) {}
    void write(const char* bytes, size_t length) override;
    void beginEntry(const STPLogSource& source, STPLogWay way) override;
    void endEntry(const STPLogSource& source, STPLogWay way) override;

  private:
    Send send_;
    std::string entry_;
};

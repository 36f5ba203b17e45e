// A raw event file that grows while it is read: whole records only, handed to the system a short while after
// they came.
#pragma once

#include <chrono>

#include "companions/trv/server/recorder.h"
#include "shared/libcxxutil/file_descriptor.h"

class LiveFile : public Recorder {
  public:
    // What is taken waits at most so long.
    static constexpr std::chrono::milliseconds delay{40};

    explicit LiveFile(const TargetFacts& facts) : facts_(facts) {}

    Result take(std::span<const uint8_t> records, Instant now) override;
    // The file is made when there is none, and never emptied: one that stands is gone on with, if it begins
    // as this target's files do and ends with a whole record; else it is refused and stays as it is.
    Result enable(const std::string& file, std::span<const uint8_t> states) override;
    bool isEnabled() const override { return file_.IsOpen(); }
    Result disable(std::string& said) override;
    std::optional<Instant> flushDue() const override;
    Result flush() override;
    std::string info() const override;

  private:
    Result fitsOn(const FileDescriptor& file, const std::string& name) const;
    Result ended(Result why);

    TargetFacts facts_;
    FileDescriptor file_;
    std::string name_;
    uint64_t size_ = 0;  // of the file, whole records
    uint64_t events_ = 0;
    std::vector<uint8_t> waiting_;
    Instant since_{};  // of the oldest that waits
};

// An open descriptor that is closed when its owner goes.
#pragma once

#include <utility>

class FileDescriptor {
  public:
    FileDescriptor() = default;
    // Takes the number over; one below 0 stands for none, as the system's calls give it.
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }
    ~FileDescriptor() { close(); }

    bool IsOpen() const { return number_ >= 0; }
    int number() const { return number_; }
    // Gives the number away.
    int give() { return std::exchange(number_, -1); }
    // 0, or the system's error number; a descriptor that is not open is closed already.
    int close();
    // Reads and writes return at once from now on. False when the system refuses.
    bool SetNonBlocking() const;

  private:
    int number_ = -1;
};

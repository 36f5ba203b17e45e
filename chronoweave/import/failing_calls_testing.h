// For tests of one program each: the calls of the system that make and write files, any of which can be made
// to fail. The linker sends them here first: the program's link options have --wrap for each of them.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <string>

enum class Fault { None, Fails, FailsOn, Short };  // once, from there on, and half of a write

struct Faults {
    Fault fault = Fault::None;
    int error = EIO;
    int from = 0;      // which of the calls, from 1
    int calls = 0;     // so far
    int writes = 0;    // of them, those that put bytes of events down
    std::string last;  // the call that was failed
};
inline Faults faults;

// Whether this call is to fail.
inline bool fails(const char* name) {
    if (faults.fault == Fault::None) return false;
    const int call = ++faults.calls;
    const bool hit = faults.fault == Fault::FailsOn ? call >= faults.from : call == faults.from;
    if (hit) faults.last = name;
    return hit;
}

inline int refused() {
    errno = faults.error;
    return -1;
}

// NOLINTBEGIN(bugprone-reserved-identifier): the linker asks for these names.
extern "C" {
int __real_open(const char* name, int how, ...);
int __real_mkstemp(char* name);
int __real_unlink(const char* name);
int __real_rename(const char* from, const char* to);
int __real_fdatasync(int file);
int __real_ftruncate(int file, off_t size);
ssize_t __real_pwrite(int file, const void* bytes, size_t count, off_t offset);

int __wrap_open(const char* name, int how, ...) {
    va_list rest;
    va_start(rest, how);
    const mode_t mode = (how & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return fails("open") ? refused() : __real_open(name, how, mode);
}
int __wrap_mkstemp(char* name) {
    return fails("mkstemp") ? refused() : __real_mkstemp(name);
}
int __wrap_unlink(const char* name) {
    return fails("unlink") ? refused() : __real_unlink(name);
}
int __wrap_rename(const char* from, const char* to) {
    return fails("rename") ? refused() : __real_rename(from, to);
}
int __wrap_fdatasync(int file) {
    return fails("fdatasync") ? refused() : __real_fdatasync(file);
}
int __wrap_ftruncate(int file, off_t size) {
    return fails("ftruncate") ? refused() : __real_ftruncate(file, size);
}
ssize_t __wrap_pwrite(int file, const void* bytes, size_t count, off_t offset) {
    if (!fails("pwrite")) return __real_pwrite(file, bytes, count, offset);
    if (faults.fault == Fault::Short && count > 1) return __real_pwrite(file, bytes, count / 2, offset);
    return refused();
}
}
// NOLINTEND(bugprone-reserved-identifier)

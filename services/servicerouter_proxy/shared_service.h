// A service that lives in a shared object: it is loaded into this process and talks over a pair of transports
// within it. Such an object has four entries with C names:
//
//     STPTransport* initializeService(const char* serviceName);   its end of the pair, not yet bound, its own
//     bool negotiate(uint32_t localId, uint32_t remoteId);        its end is bound: attach, tell its messages
//     void driveIdle();                                           called from time to time
//     void shutdownService();                                     the last call
//
// It is built from the same sources as the program.
#pragma once

#include <memory>
#include <string>

#include "shared/stp_transport/transport.h"

class SharedLibrary {
  public:
    virtual ~SharedLibrary() = default;
    // Null when there is no such entry.
    virtual void* find(const char* entry) = 0;
};
// The library in a file; null, with the reason in the status, when it can't be loaded.
std::unique_ptr<SharedLibrary> sharedLibrary_Open(const std::string& path, STPStatus& status);

class SharedService {
  public:
    // Null, with the text in the status and on the error stream, when something is missing.
    static std::unique_ptr<SharedService> start(std::unique_ptr<SharedLibrary> library,
                                                const std::string& serviceName, STPStatus& status);
    SharedService(const SharedService&) = delete;
    SharedService& operator=(const SharedService&) = delete;
    ~SharedService();

    // This side's end of the pair.
    const Ref<STPTransport>& transport() const { return transport_; }
    // Has the service attach itself, seen from this side. Failure as for start.
    bool connect(uint32_t localId, uint32_t remoteId, STPStatus& status);
    void driveIdle() { driveIdle_(); }

  private:
    explicit SharedService(std::unique_ptr<SharedLibrary> library) : library_(std::move(library)) {}
    bool findEntries(STPStatus& status);
    bool link(const std::string& serviceName, STPStatus& status);

    std::unique_ptr<SharedLibrary> library_;
    STPTransport* (*initialize_)(const char* serviceName) = nullptr;
    bool (*negotiate_)(uint32_t localId, uint32_t remoteId) = nullptr;
    void (*driveIdle_)() = nullptr;
    void (*shutdown_)() = nullptr;
    bool initialized_ = false;
    Ref<STPTransport> transport_;
};

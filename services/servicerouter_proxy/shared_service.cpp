#include "services/servicerouter_proxy/shared_service.h"

#include <dlfcn.h>

#include "services/servicerouter_proxy/router_messages.h"

namespace {

class OpenLibrary : public SharedLibrary {
  public:
    explicit OpenLibrary(void* handle) : handle_(handle) {}
    ~OpenLibrary() override { ::dlclose(handle_); }
    void* find(const char* entry) override { return ::dlsym(handle_, entry); }

  private:
    void* handle_;
};

template <class Entry>
bool findEntry(SharedLibrary& library, const char* name, Entry& entry) {
    entry = reinterpret_cast<Entry>(library.find(name));
    return entry != nullptr;
}

}  // namespace

std::unique_ptr<SharedLibrary> sharedLibrary_Open(const std::string& path, STPStatus& status) {
    void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle) return std::make_unique<OpenLibrary>(handle);
    status = {::dlerror(), STPCode::Launch};
    return nullptr;
}

std::unique_ptr<SharedService> SharedService::start(std::unique_ptr<SharedLibrary> library,
                                                    const std::string& serviceName, STPStatus& status) {
    std::unique_ptr<SharedService> service(new SharedService(std::move(library)));
    if (!service->findEntries(status) || !service->link(serviceName, status)) return nullptr;
    return service;
}

// The entry that is asked for first is told missing by the words that users know, a misspelling included.
bool SharedService::findEntries(STPStatus& status) {
    if (!findEntry(*library_, "initializeService", initialize_))
        return router_Fail(status, "Failed to get pointer to initialize function.\n");
    if (!findEntry(*library_, "shutdownService", shutdown_))
        return router_Fail(status, "Failed to get pointer to shutdownService function.\n");
    if (!findEntry(*library_, "negotiate", negotiate_))
        return router_Fail(status, "Failed to get pointer to neogiate function.\n");
    if (!findEntry(*library_, "driveIdle", driveIdle_))
        return router_Fail(status, "Failed to get pointer to driveIdle function.\n");
    return true;
}

bool SharedService::link(const std::string& serviceName, STPStatus& status) {
    STPTransport* const far = initialize_(serviceName.c_str());
    initialized_ = true;
    if (!far) return router_Fail(status, "Unable to get handle to shared object transport.\n");
    transport_ = ref_Make<STPTransport>();
    if (STPTransport::linkInProcess(*transport_, *far)) return true;
    return router_Fail(status, "Unable to initialize loopback pair.\n");
}

bool SharedService::connect(uint32_t localId, uint32_t remoteId, STPStatus& status) {
    if (negotiate_(remoteId, localId)) return true;
    return router_Fail(status, "Unable to setup connection to shared object service.\n");
}

SharedService::~SharedService() {
    if (transport_) transport_->close();
    if (initialized_) shutdown_();
}

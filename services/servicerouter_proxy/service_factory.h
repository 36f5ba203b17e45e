// A service that this process offers: its name, and how the object is made that serves one client.
#pragma once

#include <string>
#include <vector>

#include "shared/stp_transport/spec/spec_class.h"

// What a client asks for a service with, and where its connection is.
struct ServiceRequest {
    Ref<STPTransport> transport;
    uint32_t localId = 0, remoteId = 0;
    uint32_t requestingPlugin = 0;
    std::vector<std::string> nameValuePairs;  // a name, its value, and so on
};

class ServiceFactory {
  public:
    // How many clients it serves at a time. A process with a service for one is not shared: who asks while it
    // is taken is refused.
    enum class Clients { Any, One };
    explicit ServiceFactory(std::string name, Clients clients = Clients::Any)
        : name_(std::move(name)), clients_(clients) {}
    ServiceFactory(const ServiceFactory&) = delete;
    ServiceFactory& operator=(const ServiceFactory&) = delete;
    virtual ~ServiceFactory() = default;

    const std::string& name() const { return name_; }
    Clients clients() const { return clients_; }
    // An object that is attached to the transport under those ids; null refuses the client.
    virtual Ref<STPSpecClass> create(const ServiceRequest& request) = 0;

  private:
    std::string name_;
    Clients clients_;
};

// Makes a server for each client of the analyzer's service, for any number of clients.
#pragma once

#include "services/servicerouter_proxy/service_factory.h"
#include "services/tra/tra_server.h"

class TRA_ServiceFactory : public ServiceFactory {
  public:
    // Under which name clients ask for it.
    TRA_ServiceFactory(std::string name, TraProgram& program)
        : ServiceFactory(std::move(name)), program_(program) {}
    Ref<STPSpecClass> create(const ServiceRequest& request) override {
        const auto server = ref_Make<TRA_Server>(program_);
        server->attach(request.transport, request.localId, request.remoteId);
        return Ref<STPSpecClass>(server.get());
    }

  private:
    TraProgram& program_;
};

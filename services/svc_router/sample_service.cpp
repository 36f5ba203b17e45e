// A service in a shared object, for tests: the analyzer's, as the peers of the tests have it.
#include <cstdint>

#include "services/svc_router/peers_testing.h"
#include "shared/libcxxutil/gate.h"
#include "shared/stp_transport/call_state.h"

namespace {

// Its end of the pair has counters of its own: both ends call each other, and wait.
struct Sample {
    STPCallState calls;
    Gate gate;
    Ref<STPTransport> transport = ref_Make<STPTransport>(STPTransportOptions{.calls = &calls, .gate = &gate});
    Ref<TestServer> server = ref_Make<TestServer>();
};
Sample* sample = nullptr;

}  // namespace

extern "C" {

// What the tests look at.
int sampleStarts = 0, sampleIdles = 0, sampleEnds = 0;

STPTransport* initializeService(const char* /*serviceName*/) {
    ++sampleStarts;
    sample = new Sample;
    return sample->transport.get();
}

bool negotiate(uint32_t localId, uint32_t remoteId) {
    sample->server->attach(sample->transport, localId, remoteId);
    return sample->server->sendNegotiate(STPSpecClass::Blocking::No, nullptr);
}

#ifndef CW_SAMPLE_LACKS_AN_ENTRY
void driveIdle() {
    ++sampleIdles;
}
#endif

void shutdownService() {
    ++sampleEnds;
    delete sample;
    sample = nullptr;
}
}

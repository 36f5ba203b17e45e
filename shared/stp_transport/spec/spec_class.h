// One side of a service: the messages that it takes and sends, what it knows of its peer, and the calls to
// it. Generated classes derive from it (services/descriptions), and programs from those.
//
// Every public operation holds the object until it is over, so that a handler may give up a service while one
// of its own calls waits; it goes away after that call.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shared/libcxxutil/ref.h"
#include "shared/libcxxutil/retry_handler.h"
#include "shared/stp_transport/spec/body_fields.h"
#include "shared/stp_transport/spec/negotiation.h"
#include "shared/stp_transport/spec/stp_log.h"
#include "shared/stp_transport/transport.h"

class STPSpecClass;

// The registration of a service at its transport.
class STPSpecClass_HandleMessages : public STPHandler {
  public:
    explicit STPSpecClass_HandleMessages(STPSpecClass& service) : service_(service) {}
    bool handleMessage(STPMessage& message, bool notAwaited) override;
    uint32_t addedFlags(const STPMessage& message) override;
    std::shared_ptr<void> holdWhileDeferred() override;
    void transportClosed() override;

  private:
    STPSpecClass& service_;
};

// What a message that brings a window up asks of the window system. Either may be empty.
struct STPForegroundHooks {
    std::function<bool()> allow;  // the sender lets any process take the foreground; false when that failed
    std::function<void()> take;   // the receiver takes it
    unsigned failures = 0;
};
STPForegroundHooks& stp_ForegroundHooks();

// How a message without a reply leaves.
enum class STPSend {
    Blocking,     // the call ends when it is written
    NonBlocking,  // it is only put into the outgoing buffer
};

class STPSpecClass : public RefCounted {
  public:
    // Takes over; null takes the handler away. Later defaults are refused.
    virtual void setRetryHandler(std::unique_ptr<RetryHandler> handler);
    // The default of calls that are given none.
    virtual RetryHandler* getRetryHandler() { return retryHandler_.get(); }
    // The virtual connection is gone; called once.
    virtual void connectionLost() {}
    virtual uint32_t getLocalId() const { return description_.localId; }
    virtual uint32_t getRemoteId() const { return description_.remoteId; }

    // Takes part in the transport's traffic; ids of 0 mean the class's own.
    void attach(Ref<STPTransport> transport, uint32_t localId = 0, uint32_t remoteId = 0);
    enum class Blocking { No, Yes };
    bool sendNegotiate(Blocking blocking, RetryHandler* retry, STPStatus* status = nullptr);
    // Waits for what the peer tells of itself.
    bool awaitTags(RetryHandler* retry, STPStatus* status = nullptr);
    bool negotiate(RetryHandler* retry, STPStatus* status = nullptr);
    // Tells the peer that negotiation is done, and waits for it to tell the same.
    bool awaitNegotiate(RetryHandler* retry, STPStatus* status = nullptr);
    // Asks for the descriptors of the peer's messages.
    bool requestFormats(RetryHandler* retry, STPStatus* status = nullptr);
    // For a peer that does not negotiate: the tables agree.
    void assumeNegotiated();

    // The guard of every send.
    enum class Needs { LocalUp, BothUp };
    bool checkSendAllowed(Needs needs, bool knownToPeer, STPStatus& status) const;
    // Of both directions, or each; not owned, null for none.
    void setLog(STPLog* log) { sendLog_ = receiveLog_ = log; }
    void setSendLog(STPLog* log) { sendLog_ = log; }
    void setReceiveLog(STPLog* log) { receiveLog_ = log; }
    // The link is gone, or one end of it.
    void setConnectionDown();
    void setLocalDown();
    void setRemoteDown();

    bool localUp() const { return localUp_; }
    bool remoteUp() const { return remoteUp_; }
    bool negotiated() const { return negotiated_; }
    bool formatsKnown() const { return formatsKnown_; }
    uint32_t localId() const { return localId_; }
    uint32_t remoteId() const { return remoteId_; }
    STPTransport* transport() const { return transport_.get(); }
    const STPServiceDescription& description() const { return description_; }
    const STPPeerTags& peer() const { return peer_; }
    const std::vector<std::optional<uint32_t>>& peerTagMap() const { return peerTagMap_; }
    const std::vector<STPSendRow>& sendTable() const { return sendTable_; }
    const std::vector<STPSendRow>& extraTable() const { return extraTable_; }
    int busy() const { return busy_; }
    int deferredCount() const { return deferredCount_; }

    // A command by kind 13: free text and a number. The peer's result; nothing on failure.
    std::optional<uint32_t> sendCommand(const std::string& text, uint32_t action, RetryHandler* retry,
                                        STPStatus* status = nullptr);

  protected:
    // The description's tables outlive the object.
    explicit STPSpecClass(const STPServiceDescription& description);
    ~STPSpecClass() override;

    // A message that came, by its number in the receive table, or stpNoTag. reply is null when none is
    // wanted.
    virtual void handleAscii(const STPMessage& message, STPMessage* reply, uint32_t number);
    virtual void handleBinary(const STPMessage& message, STPMessage* reply, uint32_t number);
    virtual uint32_t handleCommand(const STPMessage& message, STPMessage* reply, uint32_t number,
                                   uint32_t action);

    // Calls by row of the send table, with the body and its fields as the logs show them.
    STPMessagePtr callTwoWay(STPBodyForm form, size_t row, std::string body, const std::string& fields,
                             RetryHandler* retry, STPStatus* status);
    bool callOneWay(STPBodyForm form, size_t row, std::string body, const std::string& fields, STPSend how,
                    RetryHandler* retry, STPStatus* status);
    STPLogSource logSource() const { return {description_.serviceName, localId_}; }
    bool logsSends() const { return sendLog_ != nullptr; }
    bool logsReceipts() const { return receiveLog_ != nullptr; }
    void logReceived(const char* what, const char* name, const std::string& fields) const;

  private:
    friend class STPSpecClass_HandleMessages;

    // What a public operation uses until it is over: the object is held, and the status, the caller's where
    // he gave one, begins clear.
    class Operation {
      public:
        Operation(STPSpecClass& service, STPStatus* given) : hold_(&service), status(given ? *given : own_) {
            status.clear();
        }
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;
        // Ends in failure.
        bool fail(STPCode code, const char* text) {
            status = {text, code};
            return false;
        }

      private:
        Ref<STPSpecClass> hold_;
        STPStatus own_;

      public:
        STPStatus& status;
    };

    // Receiving.
    bool handleMessage(STPMessage& message);
    uint32_t numberOf(const STPMessage& message) const;
    const STPTableRow* receiveRow(uint32_t number) const;
    void handleByKind(STPMessage& message, STPMessage* reply, uint32_t number);
    void handleNegotiation(const STPMessage& message, STPMessage* reply);
    void takeTags(const STPMessage& message);
    uint32_t rowFlags(const STPMessage& message) const;
    // Sending.
    // The handler to wait with, when the guard lets a call begin; null, with the reason in the status, if
    // not.
    RetryHandler* allowedRetry(Needs needs, bool knownToPeer, RetryHandler* given, STPStatus& status);
    // The same for a row of the send table, with its log and its window.
    RetryHandler* beginCall(size_t row, const std::string& fields, RetryHandler* given, STPStatus& status);
    STPMessage requestOf(STPBodyForm form, size_t row, std::string body, uint32_t flags);
    void logSend(const char* name, const std::string& fields) const;
    void logLine(STPLog* to, STPLogWay way, const std::string& line) const;
    STPMessagePtr exchange(STPMessage& message, RetryHandler* retry, STPStatus& status);
    bool waitFor(RetryHandler* retry, const std::function<bool()>& done, STPStatus& status);
    void lost();

    const STPServiceDescription& description_;
    Ref<STPTransport> transport_;
    uint32_t localId_ = 0, remoteId_ = 0;
    bool negotiated_ = false, formatsKnown_ = false, negotiateAcknowledged_ = false;
    STPLog* sendLog_ = nullptr;
    STPLog* receiveLog_ = nullptr;
    int busy_ = 0;           // calls and dispatches of this object
    int deferredCount_ = 0;  // messages that wait at the transport
    bool retryHandlerFixed_ = false;
    std::unique_ptr<RetryHandler> retryHandler_;
    STPPeerTags peer_;
    std::vector<std::optional<uint32_t>> peerTagMap_;
    std::vector<STPSendRow> sendTable_, extraTable_;
    bool localUp_ = true, remoteUp_ = true, lossTold_ = false;
    STPSpecClass_HandleMessages handlerLink_{*this};
};

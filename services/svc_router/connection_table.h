// The connections between plug-ins, and the numbers of their ends.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct RouterConnection {
    uint32_t clientRN = 0, serviceRN = 0;
    uint32_t client = 0, provider = 0;  // plug-ins
    std::string service;
    enum class State { Requested, Standing } state = State::Requested;

    uint32_t otherPlugin(uint32_t plugin) const { return plugin == client ? provider : client; }
};

class ConnectionTable {
  public:
    // Numbers below are those of the routers' own connections.
    static constexpr uint32_t firstNumber = 0x100;
    static constexpr uint32_t mostReserved = 0x10000;  // numbers of a block

    RouterConnection& add(uint32_t client, uint32_t provider, std::string service);
    // By either end; null when there is none.
    RouterConnection* find(uint32_t number);
    void remove(uint32_t number);
    // Copies: the table may change while they are gone through.
    std::vector<RouterConnection> ofPlugin(uint32_t plugin) const;
    // A client of this service at this plug-in.
    bool serves(uint32_t plugin, const std::string& service) const;
    size_t size() const { return ends_.size() / 2; }

    // Numbers that no connection gets: the first of them; nothing for none or too many.
    std::optional<uint32_t> reserve(uint32_t plugin, uint32_t count);
    void release(uint32_t plugin, uint32_t first);
    void releaseAll(uint32_t plugin);

  private:
    struct Block {
        uint32_t count, plugin;
    };
    uint32_t take(uint32_t count);
    bool isFree(uint32_t first, uint32_t count) const;

    std::map<uint32_t, std::shared_ptr<RouterConnection>> ends_;
    std::map<uint32_t, Block> blocks_;  // by their first numbers
    uint32_t next_ = firstNumber;
};

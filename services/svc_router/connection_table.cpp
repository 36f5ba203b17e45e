#include "services/svc_router/connection_table.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr uint32_t lastNumber = 0xFFFFFFF0;

}  // namespace

bool ConnectionTable::isFree(uint32_t first, uint32_t count) const {
    const auto end = ends_.lower_bound(first);
    if (end != ends_.end() && end->first - first < count) return false;
    const auto above = blocks_.lower_bound(first);
    if (above != blocks_.end() && above->first - first < count) return false;
    if (above == blocks_.begin()) return true;
    const auto below = std::prev(above);
    return first - below->first >= below->second.count;
}

// Numbers are used again only when all have been used, so that a late message for one that is gone meets no
// other.
uint32_t ConnectionTable::take(uint32_t count) {
    while (true) {
        if (next_ > lastNumber - count) next_ = firstNumber;
        const uint32_t first = next_;
        next_ += count;
        if (isFree(first, count)) return first;
    }
}

RouterConnection& ConnectionTable::add(uint32_t client, uint32_t provider, std::string service) {
    const auto connection = std::make_shared<RouterConnection>();
    connection->client = client;
    connection->provider = provider;
    connection->service = std::move(service);
    connection->clientRN = take(1);
    ends_[connection->clientRN] = connection;
    connection->serviceRN = take(1);
    ends_[connection->serviceRN] = connection;
    return *connection;
}

RouterConnection* ConnectionTable::find(uint32_t number) {
    const auto found = ends_.find(number);
    return found == ends_.end() ? nullptr : found->second.get();
}

void ConnectionTable::remove(uint32_t number) {
    const auto found = ends_.find(number);
    if (found == ends_.end()) return;
    const auto connection = found->second;
    ends_.erase(connection->clientRN);
    ends_.erase(connection->serviceRN);
}

std::vector<RouterConnection> ConnectionTable::ofPlugin(uint32_t plugin) const {
    std::vector<RouterConnection> found;
    for (const auto& [number, connection] : ends_)
        if (number == connection->clientRN &&
            (connection->client == plugin || connection->provider == plugin))
            found.push_back(*connection);
    return found;
}

bool ConnectionTable::serves(uint32_t plugin, const std::string& service) const {
    return std::any_of(ends_.begin(), ends_.end(), [&](const auto& end) {
        return end.second->provider == plugin && end.second->service == service;
    });
}

std::optional<uint32_t> ConnectionTable::reserve(uint32_t plugin, uint32_t count) {
    if (count == 0 || count > mostReserved || blocks_.size() >= mostReserved) return std::nullopt;
    const uint32_t first = take(count);
    blocks_[first] = {count, plugin};
    return first;
}

void ConnectionTable::release(uint32_t plugin, uint32_t first) {
    const auto found = blocks_.find(first);
    if (found != blocks_.end() && found->second.plugin == plugin) blocks_.erase(found);
}

void ConnectionTable::releaseAll(uint32_t plugin) {
    std::erase_if(blocks_, [plugin](const auto& block) { return block.second.plugin == plugin; });
}

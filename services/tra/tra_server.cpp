#include "services/tra/tra_server.h"

#include <utility>

namespace {

std::vector<TRA_Server*>& servers() {
    static std::vector<TRA_Server*> list;
    return list;
}

}  // namespace

TRA_Server::TRA_Server(TraProgram& program) : program_(&program) {
    servers().push_back(this);
}

TRA_Server::~TRA_Server() {
    std::erase(servers(), this);
    if (program_) program_->forget(*this);
}

const std::vector<TRA_Server*>& TRA_Server::all() {
    return servers();
}

// The list is taken away first, so that no server takes itself out of it within the walk.
void TRA_Server::endAll() {
    for (TRA_Server* server : std::exchange(servers(), {})) {
        server->program_ = nullptr;
        server->setConnectionDown();
    }
}

void TRA_Server::connectionLost() {
    lastFile_.reset();
    if (program_) program_->forget(*this);
}

uint32_t TRA_Server::abilities(const std::string& file) {
    if (lastFile_ == file) return lastAbility_;
    const Ref<TRA_Server> hold(this);
    const auto answer = CheckAbility({file});
    lastAbility_ = answer ? answer->powerMmask : 0;
    if (answer)
        lastFile_ = file;
    else
        lastFile_.reset();
    return lastAbility_;
}

TRA_Server::Found TRA_Server::found(uint32_t reload, uint32_t raise) {
    if (reload != 0) return Found::Reload;
    return raise != 0 ? Found::Raise : Found::Leave;
}

TraWindow* TRA_Server::openNew(const std::string& file) {
    TraWindow* const window = program_->open();
    if (window) program_->load(*window, file);
    return program_ && program_->lives(window) ? window : nullptr;
}

// A window that shows the file. Null when it went meanwhile, or the program did.
TraWindow* TRA_Server::take(TraWindow* window, const std::string& file, Found what) {
    switch (what) {
        case Found::Leave:
            break;
        case Found::Raise:
            program_->raise(*window);
            break;
        case Found::Reload:
            program_->load(*window, file);
            break;
    }
    return program_ && program_->lives(window) ? window : nullptr;
}

uint32_t TRA_Server::own(TraWindow* window) {
    if (!window) return 0;
    if (localUp()) program_->setOwner(*window, *this);
    return program_->number(*window);
}

TRA_OpenFile_Reply TRA_Server::OpenFile(const TRA_OpenFile_Request& request) {
    const std::string& file = request.dataFile;
    if (file.empty() || !program_) return {};
    TraWindow* window = request.newWin != 0 ? nullptr : program_->find(file);
    window = window ? take(window, file, found(request.reload, request.raiseWin)) : openNew(file);
    if (window && !request.title.empty()) program_->setTitle(*window, request.title);
    return {.win = own(window)};
}

TRA_ScrollToPosition_Reply TRA_Server::ScrollToPosition(const TRA_ScrollToPosition_Request& request) {
    const std::string& file = request.dataFile;
    if (!program_) return {};
    if (file.empty()) {
        if (TraWindow* const focused = program_->focused())
            program_->scroll(*focused, request.oid, request.time);
        return {};
    }
    TraWindow* window = request.newWin != 0 ? nullptr : program_->find(file);
    if (window)
        window = take(window, file, found(request.reload, request.raiseWin));
    else if (request.newWin != 0 || request.newWinIfNotExist != 0)
        window = openNew(file);
    const uint32_t win = own(window);
    if (window && !request.time.empty()) program_->scroll(*window, request.oid, request.time);
    return {.win = win};
}

void TRA_Server::CloseFile(const TRA_CloseFile_Request& request) {
    if (program_) program_->close(request.dataFile);
}

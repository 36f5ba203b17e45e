#include "chronoweave/live/live_reader.h"

#include <algorithm>

#include "chronoweave/import/import_session.h"
#include "chronoweave/live/live_view.h"
#include "chronoweave/live/live_words.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "shared/libcxxutil/gate.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

using std::chrono::milliseconds;

namespace {

constexpr milliseconds shortestInterval{10}, longestSlice{20}, drawWhileCatchingUp{250};

void say(_LaCanvasData& canvas, const std::string& text) {
    laCanvas_UpdateFields(canvas, 0, text.c_str());
}

}  // namespace

LiveReader::LiveReader(_LaCanvasData& canvas, const LiveWindow& window, EventTasks& tasks,
                       std::function<Clock::time_point()> now)
    : canvas_(canvas), window_(window), tasks_(tasks), now_(std::move(now)) {
    CreateRefreshTimer();
}

LiveReader::~LiveReader() {
    gate_Program().Forget(this);
    gate_Program().Forget(&drawing_);
    for (const auto& task : {timer_, next_})
        if (task) tasks_.Remove(*task);
}

milliseconds LiveReader::Interval() const {
    return std::max(shortestInterval, milliseconds(canvas_.options.refreshInterval));
}

void LiveReader::CreateRefreshTimer() {
    if (timer_) tasks_.Remove(*timer_);
    timer_ = tasks_.Add(Interval(), now_(), [this] {
        RefreshTick();
        return true;
    });
}

// While slices go on from the last tick, this one has nothing to add.
void LiveReader::RefreshTick() {
    if (!canvas_.source.liveRefresh || next_) return;
    began_ = now_();
    Slice();
}

void LiveReader::SliceSoon() {
    if (next_) return;
    next_ = tasks_.Once(milliseconds(0), now_(), [this] {
        next_.reset();
        Slice();
        return true;
    });
}

void LiveReader::Slice() {
    if (!canvas_.source.liveRefresh) return EndCatchUp();
    if (!gate_May(GateActivity::TickReading))
        return gate_Program().WhenMay(GateActivity::TickReading, this, [this] { Slice(); });
    if (!waitsFor_.empty()) return LookForRecords();
    ImportSession* const session = window_.growing();
    if (session == nullptr || !MayReadOn(*session)) return EndCatchUp();
    const milliseconds budget = std::min(longestSlice, Interval() / 2);
    const ReadOn read = import_ReadOn(*session, budget.count());
    file_.Note(static_cast<uint64_t>(read.extent.done));
    Took(read);
}

// The store is made when there is a record to put into it. No dialog's canvas is replaced under it.
void LiveReader::LookForRecords() {
    if (gate_Program().Runs(GateWork::ModalDialog) || !gate_May(GateActivity::Command)) return;
    const LiveLook look = live_Look(waitsFor_);
    if (look == LiveLook::NotYet) return;
    const std::string path = std::exchange(waitsFor_, {});
    if (look == LiveLook::Absent) return say(canvas_, gen_format(words_LiveVanished, path.c_str()));
    window_.load(path);  // tells what it can't take
}

bool LiveReader::MayReadOn(ImportSession& session) {
    if (!file_.IsOpen()) file_.Open(window_.source());
    const std::string path = file_.path();
    switch (file_.Look(static_cast<uint64_t>(session.source().extent().done))) {
        case LiveFile::State::More:
            return true;
        case LiveFile::State::Nothing:
            TellBacklog(false);
            return false;
        case LiveFile::State::Vanished:
            EndReading(gen_format(words_LiveVanished, path.c_str()));
            return false;
        case LiveFile::State::Shrunk:
            EndReading(gen_format(words_LiveShrunk, path.c_str()));
            return false;
        case LiveFile::State::Replaced:
            EndReading(gen_format(words_LiveReplaced, path.c_str()));
            return false;
    }
    return false;
}

void LiveReader::Took(const ReadOn& read) {
    if (read.events > 0) {
        undrawn_ = true;
        if (!catchUp_ || now_() - catchUp_->drawn >= drawWhileCatchingUp) WantDrawing();
    }
    if (!read.trouble.ok()) return EndReading(gen_format(words_LiveTrouble, read.trouble.text().c_str()));
    if (catchUp_ && catchUp_->to > catchUp_->from && window_.progress)
        window_.progress(
            std::min(1.0, (read.extent.done - catchUp_->from) / (catchUp_->to - catchUp_->from)));
    if (!read.more || (catchUp_ && read.extent.done >= catchUp_->to)) EndCatchUp();
    TellBacklog(read.more && !catchUp_ && now_() - began_ >= Interval() / 2);
    if (read.more) SliceSoon();
}

// The message stands until all is read, unless another took its place.
void LiveReader::TellBacklog(bool unread) {
    if (unread && !backlogTold_) say(canvas_, words_MoreEvents);
    if (!unread && backlogTold_ && !next_ && canvas_.fields.message == words_MoreEvents) say(canvas_, "");
    backlogTold_ = unread;
}

void LiveReader::WantDrawing() {
    if (gate_May(GateActivity::TickDrawing)) return Draw();
    gate_Program().WhenMay(GateActivity::TickDrawing, &drawing_, [this] { Draw(); });
}

void LiveReader::Draw() {
    if (!undrawn_ || !canvas_.source.store || !canvas_.source.liveRefresh) return;
    undrawn_ = false;
    if (catchUp_) catchUp_->drawn = now_();
    window_.draw([this] { live_Follow(canvas_); });
    window_.grew();
    if (canvas_.calls.buttonsChanged) canvas_.calls.buttonsChanged();
}

void LiveReader::EndCatchUp() {
    if (catchUp_) {
        catchUp_.reset();
        began_ = now_();
        if (window_.progress) window_.progress(std::nullopt);
        if (canvas_.fields.message == words_CatchingUp) say(canvas_, "");
    }
    if (undrawn_ && canvas_.source.liveRefresh) WantDrawing();
}

void LiveReader::EndReading(const std::string& why) {
    EndCatchUp();
    file_.Close();
    window_.endGrowing();
    backlogTold_ = false;
    say(canvas_, why);
    laCanvas_Beep(canvas_);
}

LiveReader::Loading LiveReader::BeforeLoad(const std::string& path) {
    Forget();
    if (!canvas_.source.liveRefresh || path_extension(path) != "trr") return {};
    switch (live_Look(path)) {
        case LiveLook::Records:
        case LiveLook::Absent:
            return {};
        case LiveLook::NotYet:
            waitsFor_ = path;
            return {Loading::What::Wait, {}};
        case LiveLook::BadFormat:
            return {Loading::What::Refuse, words_BadLiveFile};
        case LiveLook::Unsupported:
            return {Loading::What::Refuse, words_LiveUnsupported};
    }
    return {};
}

void LiveReader::Loaded(const std::string& path) {
    waitsFor_.clear();
    file_.Open(path);
    if (ImportSession* const session = window_.growing())
        file_.Note(static_cast<uint64_t>(session->source().extent().done));
}

void LiveReader::Forget() {
    waitsFor_.clear();
    file_.Close();
    undrawn_ = backlogTold_ = false;
    EndCatchUp();
}

void LiveReader::Toggled() {
    if (!canvas_.source.liveRefresh) return EndCatchUp();
    began_ = now_();
    if (ImportSession* const session = window_.growing()) {
        const SourceExtent extent = session->source().extent();
        if (extent.total > extent.done) {
            catchUp_ = {extent.done, extent.total, now_()};
            say(canvas_, words_CatchingUp);
        }
    }
    SliceSoon();
}

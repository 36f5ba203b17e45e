#include <utility>

#include "chronoweave/import/formats.h"
#include "chronoweave/import/import.h"
#include "chronoweave/import/import_session.h"
#include "chronoweave/import/import_words.h"
#include "chronoweave/import/store_place.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

// One call of import_OpenSource.
class Opening {
  public:
    Opening(const std::string& name, const ImportOptions& options) : name_(name), options_(options) {
        session_->progress = options.progress;
    }

    OpenedSource run() {
        if (name_.empty()) {
            say(words_InvalidName);
            return std::move(result_);
        }
        dispatch();
        if (!result_.store && !fatal_ && !result_.counts.stopped)
            say(gen_format(words_NoSource, name_.c_str()));
        return std::move(result_);
    }

  private:
    void dispatch() {
        const SourceName name(name_);
        if (name.extension() == "trs")
            OpenDataFile();
        else if (const SourceFormat* format = import_FormatOf(name))
            ImportFrom(*format, name);
        else if (name.extension().empty() || path_is_readable_file(name_ + ".trv"))
            OpenStore(name_);  // a base name, which may have a "." of its own
        else
            say(words_CannotOpen);
    }

    void say(std::string_view sentence) {
        result_.trouble = result_Both(std::move(result_.trouble), Result::failure(std::string(sentence)));
    }

    void OpenStore(const std::string& base) {
        KeepStore([&](Result& trouble) { return mt_OpenForRead(base, &trouble); });
    }
    void OpenDataFile() {
        KeepStore([&](Result& trouble) { return mt_OpenForReadByDataFile(name_, &trouble); });
    }
    template <class Open>
    void KeepStore(Open open) {
        Result trouble;
        result_.store = open(trouble);
        if (!result_.store) {
            if (!trouble) say(trouble.text());
            return;
        }
        result_.base = mt_GetBaseName(*result_.store);
        mt_GetEventCount(*result_.store);  // so that damage at the end is known too
        for (const Result& damage : mt_TakeDamage(*result_.store)) say(damage.text());
    }

    // Chooses the store's place and makes the writer there.
    Result MakeWriter(const StoreFacts& facts, mt_EventCallback tracker,
                      std::unique_ptr<StoreWriter>& writer) {
        StorePlace place;
        Result chosen = store_ChoosePlace(name_, options_.outputBase, place);
        if (!chosen.ok()) return chosen;
        result_.base = place.base;
        result_.inCache = place.inCache;
        replacesEarlier_ = path_is_readable_file(place.base + ".trv");
        return StoreWriter::Create(place.base, facts, tracker, writer);
    }
    // After a failure: the store that stood there before, unless it still stands.
    void TellEarlierStore() {
        if (replacesEarlier_ && (session_->writer() || !path_is_readable_file(result_.base + ".trv")))
            say(gen_format(words_EarlierGone, result_.base.c_str()));
    }

    void ImportFrom(const SourceFormat& format, const SourceName& name) {
        std::unique_ptr<EventSource> source;
        const Result opened = format.open(name, {options_.keepGrowing}, source);
        if (!opened.ok()) {
            fatal_ = opened.IsFatal();
            say(opened.what());
            if (!opened.reason().empty()) say(opened.where() + ": " + opened.reason());
            return;
        }
        const Result made = session_->open(
            std::move(source), options_.checkpoint,
            [this](const StoreFacts& facts, mt_EventCallback tracker, std::unique_ptr<StoreWriter>& writer) {
                return MakeWriter(facts, tracker, writer);
            });
        if (made.ok()) {
            session_->IndexLanes(options_.laneBlock);
            return ReadSource();
        }
        result_.counts = session_->counts();
        if (result_.counts.stopped) return;
        say(made.text());
        TellEarlierStore();
    }

    void ReadSource() {
        const ReadEnd end = session_->read(0);
        const Result damage = end == ReadEnd::Stopped ? Result() : session_->source().damage();
        if (!damage.ok()) say(damage.where().empty() ? damage.what() : damage.text());
        // A store that stays open is kept by the disk when it is closed.
        const bool stays = options_.keepGrowing && end == ReadEnd::Done && session_->MayGrow();
        if (!stays) static_cast<void>(session_->close());
        TellFailingStore();
        result_.imported = true;
        result_.counts = session_->counts();
        if (stays)
            result_.growing = std::move(session_);
        else
            session_.reset();
        OpenStore(std::string(result_.base));
    }

    void TellFailingStore() {
        const std::string missing = session_->MissingEvents();
        if (missing.empty() && session_->trouble().ok()) return;
        say(missing.empty() ? session_->trouble().text() : missing);
        TellEarlierStore();
    }

    const std::string& name_;
    const ImportOptions& options_;
    GrowingSource session_{new ImportSession};
    OpenedSource result_;
    bool fatal_ = false;            // the error stands alone
    bool replacesEarlier_ = false;  // a store stood under the name that is written
};

}  // namespace

OpenedSource import_OpenSource(const std::string& name, const ImportOptions& options) {
    return Opening(name, options).run();
}

void ImportSessionEnd::operator()(ImportSession* session) const {
    delete session;
}

ReadOn import_ReadOn(ImportSession& session, int64_t limitMs) {
    const uint64_t before = session.counts().events, refused = session.counts().refused;
    ReadOn read;
    const ReadEnd end = session.read(limitMs);
    read.events = session.counts().events - before;
    read.unread = session.counts().unread;
    read.more = end == ReadEnd::CutShort;
    read.extent = session.source().extent();
    read.trouble = session.trouble();
    if (end == ReadEnd::Failed) read.trouble = session.source().damage();
    if (session.counts().refused > refused) read.trouble = Result::failure(session.MissingEvents());
    return read;
}

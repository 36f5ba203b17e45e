#include <utility>

#include "chronoweave/import/core_file.h"
#include "chronoweave/import/import.h"
#include "chronoweave/import/import_words.h"
#include "chronoweave/import/log_image.h"
#include "chronoweave/import/raw_decoder.h"
#include "chronoweave/import/store_place.h"
#include "libtrv/task_tracker.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

// One call of import_OpenSource.
class Opening {
  public:
    Opening(const std::string& name, const ImportOptions& options) : name_(name), options_(options) {
        session_.progress = options.progress;
    }

    OpenedSource run() {
        if (name_.empty()) {
            say(words_InvalidName);
            return std::move(result_);
        }
        dispatch();
        if (!result_.store && !fatal_) say(gen_format(words_NoSource, name_.c_str()));
        return std::move(result_);
    }

  private:
    void dispatch() {
        const std::string_view extension = path_extension(name_);
        if (extension.empty())
            open_store(name_);
        else if (extension == "trs")
            open_data_file();
        else if (extension == "core")
            import_core();
        else if (extension == "trr")
            import_raw();
        else if (path_is_readable_file(name_ + ".trv"))  // a base name with a "." of its own
            open_store(name_);
        else
            say(words_CannotOpen);
    }

    void say(std::string_view sentence) {
        if (!result_.error.empty()) result_.error += '\n';
        result_.error += sentence;
    }

    void open_store(const std::string& base) {
        keep_store([&](std::string& why) { return mt_OpenForRead(base, &why); });
    }
    void open_data_file() {
        keep_store([&](std::string& why) { return mt_OpenForReadByDataFile(name_, &why); });
    }
    template <class Open>
    void keep_store(Open open) {
        std::string why;
        result_.store = open(why);
        if (!result_.store) {
            if (!why.empty()) say(why);
            return;
        }
        result_.base = mt_GetBaseName(*result_.store);
        mt_GetEventCount(*result_.store);  // so that damage at the end is known too
        for (const Result& damage : mt_TakeDamage(*result_.store)) say(damage.text());
    }

    // Chooses the store's place and makes the writer there.
    Result make_writer(const StoreFacts& facts, std::unique_ptr<StoreWriter>& writer) {
        const StorePlace place = store_ChoosePlace(name_, options_.outputBase);
        if (path_file(place.base).empty()) return Result::failure(words_InvalidName);
        const std::string taken = store_FileThatIsSource(name_, place.base);
        if (!taken.empty()) return Result::failure(gen_format(words_SourceIsStore, taken.c_str()));
        result_.base = place.base;
        result_.inCache = place.inCache;
        replaces_earlier_ = path_is_readable_file(place.base + ".trv");
        return StoreWriter::Create(place.base, facts, TaskTracker, writer);
    }
    WriterMaker maker() {
        return [this](const StoreFacts& facts, std::unique_ptr<StoreWriter>& writer) {
            return make_writer(facts, writer);
        };
    }
    // After a failure: the store that stood there before, unless it still stands.
    void tell_earlier_store() {
        if (replaces_earlier_ && (session_.writer || !path_is_readable_file(result_.base + ".trv")))
            say(gen_format(words_EarlierGone, result_.base.c_str()));
    }

    void import_raw() {
        std::string why;
        session_.source = source_OpenFile(name_, false, why);
        if (!session_.source) {
            say(words_CannotOpenTrr);
            say(name_ + ": " + why);
            return;
        }
        switch (session_ReadHeader(session_)) {
            case RawKind::Stream:
                import_stream();
                break;
            case RawKind::LogImage:
                import_image();
                break;
            case RawKind::Core:
                import_core();
                break;
            case RawKind::Unsupported:
                say(words_Unsupported);
                break;
            case RawKind::Nothing:
            case RawKind::BadFormat:
                say(words_BadFormatTrr);
                break;
        }
    }

    bool open_writer() {
        const Result made = session_OpenWriter(session_, maker());
        if (made.ok()) return true;
        say(made.text());
        tell_earlier_store();
        return false;
    }

    void import_stream() {
        if (!open_writer()) return;
        if (session_ReadOn(session_, 0) == ReadOnEnd::Failed)
            say(name_ + ": " + gen_format(words_Seek, static_cast<unsigned long long>(session_.offset)));
        stays_open_ = options_.keepGrowing && !session_.counts.stopped;
        finish_import();
    }

    void import_image() {
        // Addresses have 32 bits, so nothing behind the first 4 gigabytes can be asked for.
        std::vector<uint8_t> bytes;
        RawLogImage image;
        if (!source_ReadRest(*session_.source, raw_LongHeaderSize, uint64_t{1} << 32, bytes) ||
            !log_Read(std::move(bytes), session_.header.bigEndian, image)) {
            say(words_BadFormatTrr);
            return;
        }
        if (!open_writer()) return;
        log_ReadThrough(session_, image);
        if (!image.damage.empty()) say(image.damage);
        finish_import();
    }

    void import_core() {
        std::string why;
        if (!session_.source) session_.source = source_OpenFile(name_, false, why);
        if (!session_.source) {
            say(words_CoreOpen);
            say(name_ + ": " + why);
            return;
        }
        std::vector<uint8_t> bytes;
        if (!source_ReadRest(*session_.source, 0, UINT64_MAX, bytes)) {
            say(words_CoreRead);
            return;
        }
        std::string error;
        const bool made = core_Import(session_, bytes, name_, maker(), error, fatal_);
        if (!error.empty()) say(error);
        if (made)
            finish_import();
        else
            tell_earlier_store();
    }

    // Closes the writer and opens what it wrote.
    void finish_import() {
        // A store that stays open is kept by the disk when it is closed.
        if (!stays_open_) session_.trouble = session_Close(session_);
        const std::string missing = session_MissingEvents(session_);
        if (!missing.empty())
            say(missing);
        else if (!session_.trouble.ok())
            say(session_.trouble.text());
        if (!missing.empty() || !session_.trouble.ok()) tell_earlier_store();
        result_.imported = true;
        result_.counts = session_.counts;
        if (stays_open_) result_.growing.reset(new RawSession(std::move(session_)));
        session_.writer.reset();
        session_.source.reset();
        open_store(std::string(result_.base));
    }

    const std::string& name_;
    const ImportOptions& options_;
    RawSession session_;
    OpenedSource result_;
    bool fatal_ = false;  // the error stands alone
    bool stays_open_ = false;
    bool replaces_earlier_ = false;  // a store stood under the name that is written
};

}  // namespace

OpenedSource import_OpenSource(const std::string& name, const ImportOptions& options) {
    return Opening(name, options).run();
}

void RawSessionEnd::operator()(RawSession* session) const {
    delete session;
}

uint64_t import_ReadOn(RawSession& session, std::string& why) {
    const uint64_t before = session.counts.events;
    const uint64_t refused = session.counts.refused;
    session.counts.unread = 0;
    if (session_ReadOn(session, 0) == ReadOnEnd::Failed)
        why = gen_format(words_Seek, static_cast<unsigned long long>(session.offset));
    if (session.counts.refused > refused)
        why = session_MissingEvents(session);
    else if (!session.trouble.ok())
        why = session.trouble.text();
    return session.counts.events - before;
}

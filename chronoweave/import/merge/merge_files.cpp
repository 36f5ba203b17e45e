#include "chronoweave/import/merge/merge_files.h"

#include <array>
#include <filesystem>
#include <system_error>
#include <utility>

#include "chronoweave/import/formats.h"
#include "chronoweave/import/merge/merge_words.h"
#include "chronoweave/import/raw/raw_writer.h"
#include "shared/libcxxutil/file_beside.h"
#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"

namespace {

constexpr std::array<std::pair<MergeAlign, const char*>, 3> align_names{
    {{MergeAlign::Natural, "natural"}, {MergeAlign::Head, "head"}, {MergeAlign::Tail, "tail"}}};

unsigned long long print(uint64_t number) {
    return number;
}

// One call of merge_Files.
class Merging {
  public:
    explicit Merging(const MergeRequest& request) : request_(request) {}

    Merged Run() {
        Result done = Prepare();
        if (done.ok()) done = Write();
        merged_.result = std::move(done);
        return std::move(merged_);
    }

  private:
    Result Prepare() {
        if (request_.sources.empty()) return Result::failure(words_NoSources);
        for (const std::string& source : request_.sources)
            if (path_same_file(source, request_.output))
                return Result::failure(words_OutputIsSource, request_.output);
        std::vector<MergePart> parts;
        for (const std::string& source : request_.sources) {
            Result opened = Open(source, parts);
            if (!opened.ok()) return opened;
        }
        if (parts.empty()) return Result::failure(words_AllEmpty);
        merged_.counts.sources = request_.sources.size();
        Result made = MergedSource::Make(std::move(parts), request_.align, source_);
        if (made.ok()) made = CheckIsRaw();
        if (made.ok()) made = source_->LookAhead(request_.progress);
        merged_.stopped = !made.ok() && made.text().empty();
        return made;
    }

    Result Open(const std::string& name, std::vector<MergePart>& parts) {
        std::error_code error;
        const SourceName source(name);
        if (source.head().empty() && path_is_readable_file(name) &&
            std::filesystem::file_size(name, error) == 0 && !error) {
            merged_.damage.push_back(name + ": " + words_Empty);
            return {};
        }
        const SourceFormat* format = import_FormatOf(source);
        if (!format) return Result::failure(words_NoSourceFormat, name);
        MergePart part{name, nullptr};
        const Result opened = format->open(source, {}, part.source);
        if (!opened.ok()) return Result::failure(opened.what(), name, opened.reason());
        parts.push_back(std::move(part));
        return {};
    }

    // Raw event files are of one system, and those who read them know one kind of objects.
    Result CheckIsRaw() const {
        const SourceFacts& facts = source_->facts();
        if (facts.osName == EventSourceHeader().osName && facts.tracker == TaskTracker) return {};
        return Result::failure(gen_format(words_NotRaw, facts.osName.c_str()),
                               source_->inputs().front().name());
    }

    Result Write() {
        FileBeside beside;
        Result result = beside.make(request_.output);
        std::unique_ptr<RawFile> file;
        if (result.ok()) result = Create(beside.name(), file);
        if (result.ok()) result = Copy(*file);
        source_->settle();
        if (result.ok()) result = file->flush();
        if (result.ok()) result = beside.keep();
        if (result.ok()) Account();
        // Whoever asked for the output knows no other name.
        return result.ok() || merged_.stopped
                   ? result
                   : Result::failure(result.what(), request_.output, result.reason());
    }

    Result Create(const std::string& name, std::unique_ptr<RawFile>& file) const {
        const SourceFacts& facts = source_->facts();
        EventSourceHeader header;
        header.bigEndian = facts.bigEndian;
        header.architecture = facts.architecture != 0 ? facts.architecture : 1;
        header.ticksPerSecond = facts.ticksPerSecond;
        header.osCode = raw_OsKorvantis;
        const bool isShort = facts.ticksPerSecond <= UINT32_MAX;
        header.version = isShort ? 3 : 0x300;
        return RawFile::create(name, header, isShort ? RawHeaderForm::Short : RawHeaderForm::Long, file);
    }

    Result Copy(RawFile& file) {
        const SourceRecord* record = nullptr;
        RawWriter& writer = file.writer();
        for (;;) {
            switch (source_->Next(record)) {
                case SourceStep::Record: {
                    const bool fits =
                        writer.event(record->time, record->type, record->subtype, record->extra);
                    if (Result put = fits ? file.put() : Result(); !put.ok()) return put;
                    break;
                }
                case SourceStep::Pause:
                    if (GoesOn()) break;
                    merged_.stopped = true;
                    return Result::failure("");
                case SourceStep::Again:
                case SourceStep::End:
                case SourceStep::Failed:
                    return {};
            }
        }
    }

    bool GoesOn() const {
        if (!request_.progress) return true;
        const SourceExtent extent = source_->extent();
        return request_.progress(extent.done, extent.total);
    }

    void Account() {
        for (const MergeInput& input : source_->inputs()) {
            AccountDamage(input);
            AccountChanges(input);
        }
    }
    void AccountDamage(const MergeInput& input) {
        MergeCounts& counts = merged_.counts;
        const SourceCounts& source = input.source().counts();
        const uint64_t dropped = source.tooShort + source.tooLong;
        counts.dropped += dropped;
        counts.badBytes += source.badBytes;
        counts.unread += source.unread;
        counts.shortened += input.counts().shortened;
        const auto tell = [&](const std::string& what) {
            merged_.damage.push_back(input.name() + ": " + what);
        };
        if (dropped > 0) tell(gen_format(words_MergeDropped, print(dropped)));
        if (source.badBytes > 0) tell(gen_format(words_MergeBadBytes, print(source.badBytes)));
        if (source.unread > 0)
            tell(gen_format(words_MergeUnread, print(source.unread), print(source.unreadAt)));
        if (input.counts().shortened > 0)
            tell(gen_format(words_MergeShortened, print(input.counts().shortened), raw_LongestExtra));
        if (const Result damage = input.source().damage(); !damage.ok())
            tell(damage.reason().empty() ? damage.what() : damage.what() + ": " + damage.reason());
    }
    void AccountChanges(const MergeInput& input) {
        const MergeInputCounts& done = input.counts();
        merged_.counts.events += done.events;
        merged_.counts.back += done.back;
        merged_.counts.far += done.far;
        merged_.counts.unturned += done.unturned;
        const auto tell = [&](const char* format, uint64_t count) {
            if (count > 0) merged_.notes.push_back(input.name() + ": " + gen_format(format, print(count)));
        };
        tell(words_MergeBack, done.back);
        tell(words_MergeFar, done.far);
        tell(words_MergeUnturned, done.unturned);
    }

    const MergeRequest& request_;
    std::unique_ptr<MergedSource> source_;
    Merged merged_;
};

}  // namespace

Merged merge_Files(const MergeRequest& request) {
    return Merging(request).Run();
}

const char* merge_AlignName(MergeAlign align) {
    return align_names[static_cast<size_t>(align)].second;
}

bool merge_AlignOf(const std::string& name, MergeAlign& align) {
    for (const auto& [value, word] : align_names)
        if (name == word) {
            align = value;
            return true;
        }
    return false;
}

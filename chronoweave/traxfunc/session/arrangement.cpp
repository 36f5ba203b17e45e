#include "chronoweave/traxfunc/session/arrangement.h"

#include <algorithm>
#include <cmath>

#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/canvas/texts.h"
#include "chronoweave/traxfunc/input/view.h"
#include "chronoweave/traxfunc/model/marks.h"
#include "chronoweave/traxfunc/model/time.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr size_t mostEntries = 100000;  // of bookmarks and of paths; far more than anyone makes

// The words of a value: quoted texts, or runs of other characters.
class Words {
  public:
    explicit Words(std::string_view rest) : rest_(text_trim(rest)) {}

    bool AtEnd() const { return rest_.empty(); }
    std::optional<std::string> Text() {
        if (rest_.empty() || rest_[0] != '"') return std::nullopt;
        size_t used = 0;
        std::string text = text_unquote(rest_, &used);
        if (used < 2 || rest_[used - 1] != '"') return std::nullopt;
        Skip(used);
        return text;
    }
    std::optional<double> Real() { return scan_double(Word()); }
    std::optional<int64_t> Whole(int64_t least, int64_t most) {
        const auto value = scan_number(Word());
        if (!value || static_cast<int64_t>(*value) < least || static_cast<int64_t>(*value) > most)
            return std::nullopt;
        return static_cast<int64_t>(*value);
    }
    std::string_view Word() {
        const std::string_view word = rest_.substr(0, rest_.find(' '));
        Skip(word.size());
        return word;
    }

  private:
    void Skip(size_t count) {
        rest_.remove_prefix(count);
        rest_ = text_trim(rest_);
    }
    std::string_view rest_;
};

template <class To, class From>
bool take(To& to, const std::optional<From>& from) {
    if (from) to = static_cast<To>(*from);
    return from.has_value();
}

bool take_flag(bool& to, Words& words) {
    return take(to, words.Whole(0, 1));
}

bool read_source(laArrangement& all, Words& words) {
    return take(all.source.size, words.Whole(0, INT64_MAX)) &&
           take(all.source.modified, words.Whole(INT64_MIN, INT64_MAX)) &&
           take(all.source.events, words.Whole(0, UINT32_MAX));
}
bool read_view(laArrangement& all, Words& words) {
    return take(all.viewLow, words.Real()) && take(all.viewHigh, words.Real()) &&
           take(all.verticalOffset, words.Whole(0, INT32_MAX)) && all.viewLow >= 0 &&
           all.viewHigh > all.viewLow;
}
bool read_cursors(laArrangement& all, Words& words) {
    return take(all.cursor[0], words.Real()) && take(all.cursor[1], words.Real());
}
bool read_unit(laArrangement& all, Words& words) {
    return take(all.timeMode, words.Whole(Time_Second, Time_Sequential));
}
bool read_sort(laArrangement& all, Words& words) {
    return take(all.sortField, words.Whole(0, 1)) && take_flag(all.sortAscending, words);
}
bool read_flat(laArrangement& all, Words& words) {
    return take_flag(all.flatView, words);
}
bool read_active(laArrangement& all, Words& words) {
    return take_flag(all.onlyActive, words) && take_flag(all.mostActiveFirst, words);
}
bool read_bookmark(laArrangement& all, Words& words) {
    LaBookmark mark;
    if (all.bookmarks.size() >= mostEntries) return false;
    if (!take(mark.time, words.Real()) || !take(mark.objectId, words.Whole(0, UINT32_MAX)) ||
        !take(mark.colour, words.Whole(0, 0xFFFFFF)) || !take(mark.thickness, words.Whole(0, 1000)) ||
        !take(mark.style, words.Whole(Line_Solid, Line_DashDotDot)) || !take(mark.label, words.Text()) ||
        mark.time < 0)
        return false;
    all.bookmarks.push_back(std::move(mark));
    return true;
}
bool read_hidden(laArrangement& all, Words& words) {
    laPath path;
    if (all.hiddenPaths.size() >= mostEntries) return false;
    const std::string_view kind = words.Word();
    if (kind != "pattern" && kind != "path" && kind != "object") return false;
    path.wildcard = kind == "pattern";
    if (kind == "object") {
        const auto id = words.Whole(0, UINT32_MAX);
        if (!id) return false;
        path.id = static_cast<uint32_t>(*id);
    }
    while (!words.AtEnd()) {
        auto component = words.Text();
        if (!component) return false;
        path.components.push_back(std::move(*component));
    }
    if (path.components.empty()) return false;
    all.hiddenPaths.push_back(std::move(path));
    return true;
}

struct Key {
    const char* name;
    bool (*read)(laArrangement&, Words&);
};
constexpr Key keyTable[] = {
    {"source", read_source}, {"view", read_view},         {"cursors", read_cursors},
    {"unit", read_unit},     {"sort", read_sort},         {"flat", read_flat},
    {"active", read_active}, {"bookmark", read_bookmark}, {"hidden", read_hidden},
};

bool read_line(laArrangement& all, std::string_view line) {
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) return false;
    Words words(line.substr(equals + 1));
    for (const Key& key : keyTable)
        if (text_trim(line.substr(0, equals)) == key.name) return key.read(all, words) && words.AtEnd();
    return true;
}

std::string hidden_line(const laPath& path) {
    std::string line = "hidden=";
    line += path.wildcard ? "pattern" : path.id ? gen_format("object 0x%x", *path.id) : "path";
    for (const std::string& component : path.components) line += " " + text_quote(component);
    return line + "\n";
}

}  // namespace

laArrangement laArrangement_Take(const _LaCanvasData& canvas, const laSourceIdentity& source) {
    laArrangement all;
    all.source = source;
    all.viewLow = canvas.view.viewLow;
    all.viewHigh = canvas.view.viewHigh;
    all.verticalOffset = canvas.view.verticalOffset;
    std::copy(canvas.marks.cursor, canvas.marks.cursor + 2, all.cursor);
    all.timeMode = canvas.axis.timeMode;
    all.bookmarks = canvas.marks.bookmarks;
    all.hiddenPaths = canvas.taskList->HiddenPaths();
    all.sortField = canvas.list.sortField;
    all.sortAscending = canvas.list.sortAscending;
    all.flatView = canvas.list.flatView;
    all.onlyActive = canvas.list.onlyActive;
    all.mostActiveFirst = canvas.list.mostActiveFirst;
    return all;
}

std::string laArrangement_ToText(const laArrangement& all) {
    std::string text = "source=" + std::to_string(all.source.size) + " " +
                       std::to_string(all.source.modified) + " " + std::to_string(all.source.events) + "\n";
    text += gen_format("view=%.17g %.17g %d\n", all.viewLow, all.viewHigh, all.verticalOffset);
    text += gen_format("cursors=%.17g %.17g\n", all.cursor[0], all.cursor[1]);
    text += gen_format("unit=%d\nsort=%d %d\nflat=%d\n", all.timeMode, all.sortField,
                       all.sortAscending ? 1 : 0, all.flatView ? 1 : 0);
    text += gen_format("active=%d %d\n", all.onlyActive ? 1 : 0, all.mostActiveFirst ? 1 : 0);
    for (const LaBookmark& mark : all.bookmarks)
        text += gen_format("bookmark=%.17g 0x%x 0x%06x %d %d ", mark.time, mark.objectId, mark.colour,
                           mark.thickness, mark.style) +
                text_quote(mark.label) + "\n";
    for (const laPath& path : all.hiddenPaths) text += hidden_line(path);
    return text;
}

Result laArrangement_FromText(std::string_view text, laArrangement& arrangement) {
    laArrangement all;
    for (int number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text_trim(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || read_line(all, line)) continue;
        return Result::failure("\"" + text_utf8(line) + "\" can't be read", "line " + std::to_string(number));
    }
    if (!(all.viewHigh > all.viewLow)) return Result::failure("there is no view in it");
    arrangement = std::move(all);
    return {};
}

bool laArrangement_Restore(_LaCanvasData& canvas, const laArrangement& all, const laSourceIdentity& source) {
    if (!(all.source == source)) {
        laCanvas_UpdateFields(canvas, 0,
                              "The source has changed since it was last open; it is shown afresh.");
        return false;
    }
    canvas.list.sortField = all.sortField;
    canvas.list.sortAscending = all.sortAscending;
    canvas.list.flatView = all.flatView;
    canvas.list.onlyActive = all.onlyActive;
    canvas.list.mostActiveFirst = all.mostActiveFirst;
    canvas.marks.bookmarks = all.bookmarks;
    canvas.taskList->SetHiddenPaths(all.hiddenPaths);
    // Ticks and sequence numbers are the source's own; only the four units are a choice.
    if (canvas.axis.timeMode < Time_Tick && all.timeMode < Time_Tick) canvas.axis.timeMode = all.timeMode;
    std::copy(all.cursor, all.cursor + 2, canvas.marks.cursor);
    if (canvas.marks.cursor[1] >= 0) canvas.marks.secondShown = true;
    const double extent = canvas.source.scrollExtent;
    canvas.source.scrollExtent = std::max(extent, std::min(all.viewHigh, 2 * extent));
    if (!laCanvas_ShowRange(canvas, all.viewLow, std::min(all.viewHigh, 2 * extent)))
        canvas.source.scrollExtent = extent;
    laCanvas_TakeActivity(canvas);
    laCanvas_Resort(canvas);
    canvas.graph->vertical.setPosition(static_cast<uint64_t>(all.verticalOffset));
    canvas.view.verticalOffset = static_cast<int>(canvas.graph->vertical.position());
    laCanvas_UpdateTotal(canvas);
    laCanvas_UpdateFields(canvas, Fields_View | Fields_Selection);
    return true;
}

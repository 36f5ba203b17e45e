#include <algorithm>

#include "chronoweave/analysis/detail_windows.h"

namespace {

constexpr int fieldLetters = 26;
constexpr int fieldPadding = 24;  // pixels around them

std::string at(const std::string& name) {
    return "@" + name;
}

// Puts a description together from the top down, one row under the other: fields with a label on their left
// that fill the width, and pairs of buttons with a label. The widest label of each kind is named first, and
// the others stand in its column.
class Rows {
  public:
    explicit Rows(DialogDescription& description) : d_(description) {}

    // widest: the label that is made as wide as the longest text of its kind.
    void Fields(std::string widest) { fields_ = std::move(widest); }
    void Pairs(std::string widest) { pairs_ = std::move(widest); }

    void Field(const std::string& label, const std::string& text, const std::string& name) {
        d_.items.push_back({label, DialogKind::Label, text, "", 0, {}, RoomOf(label, fields_), name});
        d_.items.push_back(
            {name, DialogKind::TextField, "", text, Dialog_ReadOnly, {}, std::string(fieldLetters, 'n')});
        widths_.push_back({"(" + at(fields_) + ")", 24 + fieldPadding, fieldLetters});
        sizes_.push_back(at(name) + ",(0),(" + at(fields_) + "),-24,0,0,0,0,1,1,1,Horizontal");
        places_.push_back("(" + at(label) + "),0,8,0,0,0,0,Left,Left,Left");
        places_.push_back("(" + at(name) + ")," + at(fields_) + ",8,0,0,0,0,Left,Left,Right");
        Below(name, 6);
        places_.push_back("(" + at(label) + ")," + at(name) + ",0,0,0,0,0,Baseline,Baseline,Baseline");
    }

    // Two buttons in a frame, named prefix + "prev" and prefix + "next".
    void Pair(const std::string& frame, const std::string& label, const std::string& text,
              const std::string& back, const std::string& on, const std::string& spoken) {
        d_.items.push_back({label, DialogKind::Label, text, "", 0, {}, RoomOf(label, pairs_), back});
        d_.items.push_back({frame, DialogKind::Frame});
        d_.items.push_back({back, DialogKind::Button, "Previous", "Previous, " + spoken});
        d_.items.push_back({on, DialogKind::Button, "Next", "Next, " + spoken});
        widths_.push_back({"(" + at(label) + "," + at(back) + "," + at(on) + ")", 40});
        sizes_.push_back(at(frame) + ",(" + at(back) + "," + at(on) + "),(),12,0,0,0,0,1,1,1,Horizontal");
        sizes_.push_back(at(frame) + ",(" + at(back) + "),(),8,0,0,0,0,1,1,1,Vertical");
        places_.push_back("(" + at(label) + "),0,8,0,0,0,0,Left,Left,Left");
        places_.push_back("(" + at(back) + ")," + at(pairs_) + ",16,0,0,0,0,Left,Left,Right");
        places_.push_back("(" + at(on) + ")," + at(back) + ",4,0,0,0,0,Left,Left,Right");
        Below(back, 14);
        places_.push_back("(" + at(on) + ")," + at(back) + ",0,0,0,0,0,Top,Top,Top");
        places_.push_back("(" + at(label) + ")," + at(back) + ",0,0,0,0,0,TBCenter,TBCenter,TBCenter");
        places_.push_back("(" + at(frame) + ")," + at(back) + ",-4,0,0,0,0,Left,Left,Left");
        places_.push_back("(" + at(frame) + ")," + at(back) + ",0,0,0,0,0,TBCenter,TBCenter,TBCenter");
        lastGap_ = 4;
    }

    // A label across the width.
    void Heading(const std::string& label, const std::string& text) {
        d_.items.push_back({label, DialogKind::Label, text});
        widths_.push_back({"(" + at(label) + ")", 16});
        places_.push_back("(" + at(label) + "),0,8,0,0,0,0,Left,Left,Left");
        Below(label, 10);
    }

    // Items side by side from the left, centred on the tallest, the first; the last one at the right edge
    // when lastRight. They are in the description already.
    void Line(const std::vector<std::string>& names, bool lastRight) {
        std::string all;
        for (const std::string& name : names) all += (all.empty() ? "(" : ",") + at(name);
        widths_.push_back({all + ")", 16 + 12 * static_cast<int>(names.size())});
        for (size_t i = 0; i < names.size(); ++i) {
            const std::string name = "(" + at(names[i]) + "),";
            if (lastRight && i > 0 && i + 1 == names.size())
                places_.push_back(name + "0,-8,0,0,0,0,Right,Right,Right");
            else if (i == 0)
                places_.push_back(name + "0,8,0,0,0,0,Left,Left,Left");
            else
                places_.push_back(name + at(names[i - 1]) + ",12,0,0,0,0,Left,Left,Right");
            if (i > 0) places_.push_back(name + at(names[0]) + ",0,0,0,0,0,TBCenter,TBCenter,TBCenter");
        }
        Below(names[0], 14);
    }

    // The message line at the foot, and all rules. wide: the width at first, in letters.
    void End(int wide) {
        d_.items.push_back({"ts_info", DialogKind::StatusText, "", "Message"});
        sizes_.push_back("@ts_info,(0),(),-16,0,0,0,0,1,1,1,Horizontal");
        places_.push_back("(@ts_info),0,8,0,0,0,0,Left,Left,Left");
        Below("ts_info", 8);
        std::vector<std::string>& lines = d_.layout;
        lines = {"MinSizes"};
        for (size_t i = 0; i < widths_.size(); ++i)
            lines.push_back("0," + widths_[i].items + ",()," + std::to_string(widths_[i].pixels) + "," +
                            std::to_string(widths_[i].letters) + ",0,0,0,1,1," +
                            std::to_string(widths_.size() - i) + ",Horizontal");
        const std::string height =
            "0,(" + heights_ + "),()," + std::to_string(gaps_ + 8) + ",0,0,0,0,1,1,1,Vertical";
        lines.push_back(height);
        lines.push_back("Sizes");
        lines.push_back("0,(),(),0," + std::to_string(wide) + ",0,0,0,1,1,1,Horizontal");
        lines.push_back(height);
        lines.insert(lines.end(), sizes_.begin(), sizes_.end());
        lines.push_back("Positions");
        lines.insert(lines.end(), places_.begin(), places_.end());
    }

    std::string longest;  // of the labels' texts, which the widest label gives room for

  private:
    std::string RoomOf(const std::string& label, const std::string& widest) const {
        return label == widest ? longest : std::string();
    }
    void Below(const std::string& name, int gap) {
        gap += std::exchange(lastGap_, 0);
        places_.push_back(above_.empty()
                              ? "(" + at(name) + "),0," + std::to_string(gap) + ",0,0,0,0,Top,Top,Top"
                              : "(" + at(name) + ")," + at(above_) + "," + std::to_string(gap) +
                                    ",0,0,0,0,Top,Top,Bottom");
        heights_ += (heights_.empty() ? "" : ",") + at(name);
        gaps_ += gap;
        above_ = name;
    }

    DialogDescription& d_;
    std::string fields_, pairs_;
    struct Width {
        std::string items;
        int pixels = 0, letters = 0;
    };
    std::vector<Width> widths_;
    std::vector<std::string> sizes_, places_;
    std::string above_, heights_;
    int gaps_ = 0;
    int lastGap_ = 0;  // what the row above reaches below its item
};

DialogDescription named(const char* name, const char* title) {
    DialogDescription d;
    d.name = name;
    d.title = title;
    d.helpKey = "details";
    return d;
}

std::string lower_first(std::string text) {
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

// Texts of labels and buttons: '&' marks a shortcut there.
std::string plain(const std::string& term) {
    std::string text;
    for (const char c : term) text += c == '&' ? std::string("&&") : std::string(1, c);
    return text;
}

}  // namespace

DialogDescription detail_StatusWindow(const std::string& objectTerm) {
    const std::string term = plain(objectTerm), small = lower_first(term);
    DialogDescription d = named("StatusDetail", "Status");
    Rows rows(d);
    rows.longest = term + " ID";
    rows.Fields("t_length");
    rows.Pairs("t_similar");
    rows.Field("t_status", "Status", "tf_status");
    rows.Field("t_taskid", term + " ID", "tf_taskid");
    rows.Field("t_ftime", "From", "tf_ftime");
    rows.Field("t_ttime", "To", "tf_ttime");
    rows.Field("t_length", "Length (Second)", "tf_length");
    rows.longest.clear();
    rows.Pair("general", "t_general", "Same " + term, "g_prev", "g_next", "status of the same " + small);
    rows.Pair("similar", "t_similar", "Same " + term + " && Status", "s_prev", "s_next",
              "the same status of the same " + small);
    d.items.push_back({"bt_go", DialogKind::Button, "&Go", "", Dialog_Default});
    d.items.push_back({"t_goto", DialogKind::Label, "Move Cursor To The Status In Canvas"});
    d.items.push_back({"bt_task", DialogKind::Button, term + "...", "The window of the " + small});
    rows.Line({"bt_go", "t_goto", "bt_task"}, true);
    rows.End(56);
    return d;
}

DialogDescription detail_EventWindow(const std::string& objectTerm, bool offerDebugger) {
    const std::string term = plain(objectTerm), small = lower_first(term);
    DialogDescription d = named("EventDetail", "Event");
    Rows rows(d);
    rows.longest = "Comments";
    rows.Fields("t_taskid");
    rows.Pairs("t_te");
    rows.Field("t_name", "Name", "tf_name");
    rows.Field("t_taskid", term + " ID", "tf_taskid");
    rows.Field("t_time", "Time", "tf_time");
    rows.Field("t_comments", "Comments", "tf_comments");
    rows.longest = "Sequential";
    rows.Pair("general", "t_sequential", "Sequential", "g_prev", "g_next", "event of all");
    rows.Pair("similar", "t_general", "Same " + term, "s_prev", "s_next", "event of the same " + small);
    rows.Pair("bt_se", "t_similar", "Same Event", "e_prev", "e_next", "event of the same kind");
    rows.Pair("bt_ste", "t_te", "Same " + term + " && Event", "te_prev", "te_next",
              "event of the same kind and " + small);
    std::vector<std::string> places = {"In the &canvas"};
    if (offerDebugger) places.push_back("In the &debugger");
    DialogItem gotos = {"gotos", DialogKind::ButtonSet, "", "Where to show the event", 0, places};
    gotos.choiceNames = {"gotoCanvas", "gotoDebugger"};
    d.items.push_back(std::move(gotos));
    d.items.push_back({"bt_go", DialogKind::Button, "&Go", "Show the event", Dialog_Default});
    d.items.push_back({"bt_task", DialogKind::Button, term + "...", "The window of the " + small});
    rows.Line({"gotos", "bt_go", "bt_task"}, true);
    rows.End(56);
    return d;
}

DialogDescription detail_SwitchWindow(const std::string& objectTerm) {
    const std::string term = plain(objectTerm);
    DialogDescription d = named("SwitchDetail", "Context Switch");
    Rows rows(d);
    rows.longest = "Time";
    rows.Fields("t_ftaskid");
    rows.Pairs("t_walk");
    rows.Heading("t_from", "Context Switched From");
    rows.Field("t_ftaskid", term + " ID", "tf_ftaskid");
    rows.Field("t_ftime", "Time", "tf_ftime");
    rows.Heading("t_to", "Context Switched To");
    rows.Field("t_ttaskid", term + " ID", "tf_ttaskid");
    rows.Field("t_ttime", "Time", "tf_ttime");
    rows.longest.clear();
    rows.Pair("btNP", "t_walk", "Context Switch", "prev", "next", "context switch");
    d.items.push_back({"bt_goto", DialogKind::Button, "&Go", "", Dialog_Default});
    d.items.push_back({"t_goto", DialogKind::Label, "Move Cursor To The Switch In Canvas"});
    rows.Line({"bt_goto", "t_goto"}, false);
    rows.End(50);
    return d;
}

DialogDescription detail_TaskWindow(const std::string& objectTerm) {
    const std::string term = plain(objectTerm);
    DialogDescription d = named("TaskDetail", "Task");
    Rows rows(d);
    rows.longest = "Priority";
    rows.Fields("name");
    rows.Field("name", term + " Name", "tf_name");
    rows.Field("id", term + " ID", "tf_id");
    rows.Field("priority", "Priority", "tf_priority");
    d.items.push_back({"Prev", DialogKind::Button, "&Previous", "Previous " + lower_first(term)});
    d.items.push_back({"Next", DialogKind::Button, "&Next", "Next " + lower_first(term)});
    rows.Line({"Prev", "Next"}, false);
    rows.End(46);
    return d;
}

#include "chronoweave/analysis/bindings.h"

#include <algorithm>

#include "chronoweave/analysis/dialogs.h"
#include "chronoweave/analysis/list_filter.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/goto.h"
#include "chronoweave/traxfunc/input/time_unit.h"
#include "chronoweave/traxfunc/list/hide_dialog.h"
#include "shared/libcxxutil/text.h"

namespace {

constexpr int accepted = 1, cancelled = 0;

// The hide dialog's state shown in its items, and back.
class HideBinding : public std::enable_shared_from_this<HideBinding> {
  public:
    HideBinding(_LaCanvasData& canvas, DialogModel& model)
        : canvas_(canvas),
          logic_(*canvas.taskList, canvas.list, canvas.items, canvas.source,
                 [&canvas] {
                     laCanvas_Resort(canvas);
                     laCanvas_Repaint(canvas);
                 }),
          model_(model) {}

    void begin() {
        model_.setTitle(logic_.title);
        model_.setText("t_show", logic_.showTitle);
        model_.setText("t_hide", logic_.hideTitle);
        for (const char* name : {"to_show", "to_hide"}) {
            model_.setColumnTitles(name, {logic_.nameColumn, logic_.idColumn});
            MScrollList& list = model_.list(name);
            list.SetComparison(1, msl_CompareUnsigned);
            list.viewResized = [&list](int width) {
                const int first =
                    laHideDialog::NameColumnWidth(width, list.FittedWidth(0), list.FittedWidth(1));
                list.SetWidth(0, first);
                list.SetWidth(1, std::max(0, width - first));
            };
        }
        show();
        const auto self = shared_from_this();
        model_.onPress = [self](const std::string& name) { self->press(name); };
        model_.onEdit = [self](const std::string& name, const std::string& text) {
            if (name == "pattern")
                self->logic_.pattern = text;
            else
                self->ShowLists();
            self->enable();
        };
        model_.onSelect = [self](const std::string&) {
            self->TakeSelection();
            self->enable();
        };
        model_.onActivate = [self](const std::string& list, int row) {
            const bool inToShow = list == "to_show";
            const std::vector<laHideRow>& rows = inToShow ? self->logic_.toShow : self->logic_.toHide;
            const uint64_t id = self->model_.rowId(list, row);
            const auto at = std::find_if(rows.begin(), rows.end(),
                                         [id](const laHideRow& each) { return each.data == id; });
            self->logic_.DoubleClick(inToShow, static_cast<size_t>(at - rows.begin()));
            self->show();
        };
    }

  private:
    bool IsFiltered(const std::string& list) { return !text_trim(model_.item("f_" + list).text).empty(); }
    // Those that the list's filter leaves; one that is left alone is selected.
    void ShowList(const std::string& list, const std::vector<laHideRow>& rows) {
        const std::string& typed = model_.item("f_" + list).text;
        std::vector<DialogRow> shown;
        for (const laHideRow& row : rows)
            if (DialogRow one{{row.name, row.id}, row.data}; filter_Fits(one, typed)) shown.push_back(one);
        const bool alone = shown.size() == 1 && IsFiltered(list);
        std::vector<uint64_t> chosen = model_.selectedIds(list);
        if (alone) chosen = {shown.front().id};
        model_.setRows(list, std::move(shown));
        if (IsFiltered(list)) model_.setSelectedIds(list, chosen);
    }
    void ShowLists() {
        ShowList("to_show", logic_.toShow);
        ShowList("to_hide", logic_.toHide);
        TakeSelection();
    }
    // "All" is what the filter leaves.
    std::string TakeAll(const std::string& button) {
        const std::string list = button == "hideall" ? "to_show" : "to_hide";
        if ((button != "hideall" && button != "showall") || !IsFiltered(list)) return button;
        std::vector<uint64_t> all;
        for (const DialogRow& row : model_.item(list).rows) all.push_back(row.id);
        model_.setSelectedIds(list, all);
        return button == "hideall" ? "hide" : "show";
    }
    void TakeSelection() {
        const auto take = [&](const char* list, std::vector<laHideRow>& rows) {
            const std::vector<uint64_t> ids = model_.selectedIds(list);
            const std::set<uint64_t> selected(ids.begin(), ids.end());
            for (laHideRow& row : rows) row.selected = selected.count(row.data) > 0;
        };
        take("to_show", logic_.toShow);
        take("to_hide", logic_.toHide);
    }
    void enable() {
        for (const char* button : {"hide", "show", "hideall", "showall"})
            model_.setEnabled(button, logic_.Enabled(button));
    }
    void show() {
        ShowLists();
        model_.setText("pattern", logic_.pattern);
        enable();
    }
    void press(const std::string& name) {
        const std::string button = TakeAll(name);
        TakeSelection();
        laCanvas_Paint(canvas_, [&] { logic_.Press(button); });
        if (logic_.IsOpen())
            show();
        else
            model_.close(name == "ok" ? accepted : cancelled);
    }

    _LaCanvasData& canvas_;
    laHideDialog logic_;
    DialogModel& model_;
};

}  // namespace

std::unique_ptr<DialogModel> dialogs_OpenHide(_LaCanvasData& canvas) {
    auto model = std::make_unique<DialogModel>(dialogs_Hide());
    std::make_shared<HideBinding>(canvas, *model)->begin();
    return model;
}

std::unique_ptr<DialogModel> dialogs_OpenTimeUnit(_LaCanvasData& canvas) {
    const auto state = laTimeUnit_Open(canvas);
    if (!state) return nullptr;
    auto model = std::make_unique<DialogModel>(dialogs_TimeUnit());
    DialogModel& shown = *model;
    shown.setChoice("units", state->unit);
    shown.setChecked("auto", state->autoAdjust);
    shown.onPress = [&canvas, &shown, state = *state](const std::string& name) mutable {
        if (name == "ok") {
            state.unit = shown.item("units").choice;
            state.autoAdjust = shown.item("auto").checked;
            laCanvas_Paint(canvas, [&] { laTimeUnit_Apply(canvas, laTimeUnit_Result(state)); });
        }
        shown.close(name == "ok" ? accepted : cancelled);
    };
    return model;
}

std::unique_ptr<DialogModel> dialogs_OpenGoto(_LaCanvasData& canvas) {
    auto model = std::make_unique<DialogModel>(dialogs_GotoTime());
    DialogModel& shown = *model;
    shown.onPress = [&canvas, &shown](const std::string& name) {
        bool went = true;
        if (name == "ok")
            laCanvas_Paint(canvas, [&] { went = laCanvas_GotoText(canvas, shown.item("time").text); });
        if (went)
            shown.close(name == "ok" ? accepted : cancelled);
        else
            shown.setMessage(canvas.fields.message);  // and the text stays, to be mended
    };
    return model;
}

#include "chronoweave/analysis/bindings.h"

#include <algorithm>

#include "chronoweave/analysis/dialogs.h"
#include "chronoweave/traxfunc/canvas/repaint.h"
#include "chronoweave/traxfunc/canvas/rows.h"
#include "chronoweave/traxfunc/input/goto.h"
#include "chronoweave/traxfunc/input/time_unit.h"
#include "chronoweave/traxfunc/list/hide_dialog.h"

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
        model_.onEdit = [self](const std::string&, const std::string& text) {
            self->logic_.pattern = text;
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
    static std::vector<DialogRow> RowsOf(const std::vector<laHideRow>& rows) {
        std::vector<DialogRow> shown;
        for (const laHideRow& row : rows) shown.push_back({{row.name, row.id}, row.data});
        return shown;
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
        model_.setRows("to_show", RowsOf(logic_.toShow));
        model_.setRows("to_hide", RowsOf(logic_.toHide));
        model_.setText("pattern", logic_.pattern);
        enable();
    }
    void press(const std::string& name) {
        TakeSelection();
        laCanvas_Paint(canvas_, [&] { logic_.Press(name); });
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

#include "chronoweave/analysis/object_tree.h"

#include <algorithm>

#include "chronoweave/analysis/detail_window.h"
#include "chronoweave/traxfunc/list/task_list.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"
#include "windlib/dialog/layout_builder.h"
#include "windlib/msl/tree_manager.h"

namespace {

constexpr int nameLetters = 32;

enum Column : int { Column_Name, Column_Id, Column_Priority };

// A copy of a row of the object list, which is rebuilt under the window.
class RelativeNode : public MSLTreeNode {
  public:
    RelativeNode(const _LaCanvasData& canvas, const MslObjectEntry& entry)
        : MSLTreeNode(true),
          name_(text_utf8(laTask_WithoutFake(entry.name))),
          tip_(canvas.taskList->RowTip(entry)) {
        if (entry.payload < canvas.items.lanes.size()) {
            const laItem_Line& lane = canvas.items.lanes[entry.payload];
            object_ = lane.objectId;
            priority_ = object_PriorityText(lane.priority);
        }
        for (const auto& child : entry.children) AddChild(std::make_unique<RelativeNode>(canvas, *child));
    }
    void FillRow(MScrollList& list, int row) override {
        list.SetText(row, Column_Name, name_);
        if (object_ == laAgentId) return;
        list.SetText(row, Column_Id, gen_format("0x%x", object_));
        list.SetText(row, Column_Priority, priority_);
    }
    uint32_t object() const { return object_; }  // laAgentId for a group
    const std::string& tip() const { return tip_; }

  private:
    std::string name_, tip_, priority_;
    uint32_t object_ = laAgentId;
};

// The node of an object, at or below one.
const MSLTreeNode* find_object(const MSLTreeNode& at, uint32_t object) {
    if (static_cast<const RelativeNode&>(at).object() == object) return &at;
    for (const auto& child : at.Children())
        if (const MSLTreeNode* found = find_object(*child, object)) return found;
    return nullptr;
}

class ObjectInfo : public DetailWindow {
  public:
    ObjectInfo(_LaCanvasData& canvas, DialogModel& model, const MslObjectEntry& top, uint32_t object,
               ObjectOpener open)
        : DetailWindow(canvas, model), open_(open), tree_(model.list("list")) {
        MScrollList& list = model.list("list");
        list.SetWidth(Column_Name, nameLetters * std::max(1, canvas.graph->font.charWidth));
        tree_.Add(std::make_unique<RelativeNode>(canvas, top));
        tree_.ExpandAll();
        list.toggleTree = [this](int row) { return tree_.Toggle(row); };
        list.tip = [this](int row) { return TipOf(row); };
        if (const MSLTreeNode* own = find_object(*tree_.Roots().front(), object)) {
            list.SelectOnly(tree_.RowOf(*own));
            list.ScrollToRow(tree_.RowOf(*own));
        }
        model.onActivate = [this](const std::string&, int row) { Activate(row); };
    }
    void Press(const std::string&) override {}

  private:
    std::string TipOf(int row) const {
        const auto* node = static_cast<const RelativeNode*>(tree_.NodeAt(row));
        return node ? node->tip() : std::string();
    }
    void Activate(int row) {
        const auto* node = static_cast<const RelativeNode*>(tree_.NodeAt(row));
        if (node == nullptr) return;
        if (node->object() == laAgentId)
            tree_.Toggle(row);
        else
            open_(canvas_, node->object());
    }

    ObjectOpener open_;
    MSLTreeManager tree_;
};

}  // namespace

std::string object_PriorityText(int32_t priority) {
    return priority < 0 ? "Unknown" : gen_format("0x%x", static_cast<unsigned>(priority));
}

DialogDescription object_InfoWindow(const std::string& term) {
    // Room for the titles, whatever the term is.
    const int size = static_cast<int>(term.size()), letters = 2 * size + 8;
    LayoutBuilder layout;
    layout.leastWidths({{.pixels = 100, .letters = letters, .capitals = 6 + letters / 3}});
    layout.leastHeight({.pixels = 16, .lines = 5});
    layout.firstWidths({{.pixels = 32, .letters = 60}});
    layout.firstHeight({.pixels = 16, .lines = 14});
    layout.fillWidth("list", {.gaps = 16});
    layout.fillHeight("list", {.gaps = 16});
    layout.left({.items = {"list"}});
    layout.top({.items = {"list"}});
    return {.name = "ObjectInfo",
            .title = "Info",
            .helpKey = "details",
            .items = {{.name = "list",
                       .kind = DialogKind::List,
                       .accessible = "Relatives",
                       .list = {term + " Name", term + " ID", "Priority"}}},
            .layout = layout.lines()};
}

void object_OpenInfo(_LaCanvasData& canvas, uint32_t objectId, ObjectOpener open) {
    static unsigned windows = 1;
    if (canvas.calls.host == nullptr || canvas.axis.timeMode == Time_Tick) return;
    const laItem_Line* lane = laCanvas_FindLane(canvas.items, objectId);
    if (lane == nullptr || lane->isAgent || lane->listEntry == nullptr) return;
    // The whole of the topmost group; the entry above that stands for no row.
    const MslObjectEntry* top = lane->listEntry;
    while (top->parent != nullptr && top->parent->parent != nullptr) top = top->parent;
    const std::string title = canvas.list.objectTerm + " Info Window " + gen_format("0x%x", windows++) +
                              " for '" + detail_CanvasTitle(canvas, "NO_NAME") + "'";
    detail_Open<ObjectInfo>(canvas, object_InfoWindow(canvas.list.objectTerm), title, *top, objectId, open);
}

#include "windlib/dialog/dialog_layout.h"

#include <algorithm>

namespace {

constexpr int buttonMargin = 4;  // above and below the text: the baseline of a Button is at ascent + 4
constexpr int fieldMargin = 3;   // and that of a field at ascent + 3
constexpr int setMargin = 2;     // around each choice of a ButtonSet
constexpr int barHeight = 4;     // a ProgressBar and a ToolBar beyond a line

PlacerKind kindOf(DialogKind kind) {
    switch (kind) {
        case DialogKind::Label:
        case DialogKind::StatusText:
            return PlacerKind::Label;
        case DialogKind::Button:
        case DialogKind::CheckBox:
            return PlacerKind::Button;
        case DialogKind::PullDown:
            return PlacerKind::PullDown;
        case DialogKind::TextField:
            return PlacerKind::TextLine;
        case DialogKind::ButtonSet:
            return PlacerKind::ButtonSet;
        case DialogKind::List:
        case DialogKind::Graph:
        case DialogKind::Strip:
        case DialogKind::ProgressBar:
        case DialogKind::MenuLine:
        case DialogKind::ToolBar:
        case DialogKind::Frame:
        case DialogKind::Divider:
            break;
    }
    return PlacerKind::Other;
}

PlacerSize textSize(const DialogMetrics& metrics, std::string_view text) {
    PlacerSize size{0, metrics.font.lineHeight};
    for (;;) {
        const size_t end = std::min(text.find('\n'), text.size());
        size.width = std::max(size.width, metrics.textWidth(text.substr(0, end)));
        if (end == text.size()) return size;
        text.remove_prefix(end + 1);
        size.height += metrics.font.lineHeight;
    }
}

PlacerSize choicesSize(const DialogMetrics& metrics, const DialogItem& item) {
    const bool horizontal = (item.flags & Dialog_Horizontal) != 0;
    PlacerSize size;
    for (const std::string& choice : item.list) {
        const int width = metrics.textWidth(dialog_PlainText(choice)) + metrics.markPadding;
        const int height = metrics.font.lineHeight + 2 * setMargin;
        size.width = horizontal ? size.width + width : std::max(size.width, width);
        size.height = horizontal ? std::max(size.height, height) : size.height + height;
    }
    return size;
}

// The size that an item needs for its texts.
PlacerSize contentSize(const DialogMetrics& metrics, const DialogItem& item, const std::string& shown) {
    const int line = metrics.font.lineHeight;
    PlacerSize size = textSize(metrics, dialog_PlainText(shown));
    if (!item.room.empty()) {
        const PlacerSize room = textSize(metrics, item.room);
        size = {std::max(size.width, room.width), std::max(size.height, room.height)};
    }
    switch (item.kind) {
        case DialogKind::Button:
            return {size.width + metrics.buttonPadding, line + 2 * buttonMargin};
        case DialogKind::CheckBox:
            return {size.width + metrics.markPadding, line + 2 * buttonMargin};
        case DialogKind::TextField:  // what is typed scrolls; only the room counts
            return {metrics.textWidth(item.room) + metrics.fieldPadding, line + 2 * fieldMargin};
        case DialogKind::PullDown: {
            int widest = size.width;
            for (const std::string& choice : item.list) widest = std::max(widest, metrics.textWidth(choice));
            return {widest + metrics.fieldPadding + Placer_BarWidth, line + 2 * buttonMargin};
        }
        case DialogKind::ButtonSet:
            return choicesSize(metrics, item);
        case DialogKind::List: {
            int titles = Placer_BarWidth;
            for (const std::string& title : item.list)
                titles += metrics.textWidth(title) + metrics.fieldPadding;
            return {titles, 4 * line};
        }
        case DialogKind::Graph:
            return {Placer_BarWidth + 153 + 3 * line, Placer_BarWidth + 3 * line};
        case DialogKind::StatusText:
            return {metrics.textWidth(item.room), line};
        case DialogKind::ProgressBar:
        case DialogKind::ToolBar:
            return {0, line + barHeight};
        case DialogKind::Strip:
            return {0, line};
        case DialogKind::Frame:
        case DialogKind::Divider:
            return {1, 1};
        case DialogKind::Label:
        case DialogKind::MenuLine:
            break;
    }
    return size;
}

std::vector<PlacerItem> placerItems(const DialogDescription& description) {
    std::vector<PlacerItem> items(description.items.size() + 1);
    for (size_t i = 0; i < description.items.size(); ++i) {
        const DialogItem& item = description.items[i];
        items[i + 1].kind = kindOf(item.kind);
        items[i + 1].setBaseline = setMargin;
        items[i + 1].setVertical = (item.flags & Dialog_Horizontal) == 0;
        items[i + 1].container = dialog_Number(description, item.part);
    }
    return items;
}

bool isLaidOut(const DialogItem& item) {
    return item.kind != DialogKind::MenuLine && item.part.empty();
}

bool overlap(const DialogRect& a, const DialogRect& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}
bool holds(const DialogRect& a, const DialogRect& b) {
    return a.x <= b.x && a.y <= b.y && b.x + b.width <= a.x + a.width && b.y + b.height <= a.y + a.height;
}

std::string textOf(const DialogRect& r) {
    return std::to_string(r.width) + "x" + std::to_string(r.height) + "+" + std::to_string(r.x) + "+" +
           std::to_string(r.y);
}

void checkNames(const DialogDescription& description, std::vector<std::string>& faults) {
    std::string shortcuts;
    const auto shortcut = [&](const std::string& text, const std::string& name) {
        const char c = dialog_Shortcut(text);
        if (c == 0) return;
        if (shortcuts.find(c) != std::string::npos) faults.push_back(name + ": shortcut used twice");
        shortcuts += c;
    };
    for (size_t i = 0; i < description.items.size(); ++i) {
        const DialogItem& item = description.items[i];
        if (dialog_Number(description, item.name) != static_cast<int>(i) + 1)
            faults.push_back(item.name + ": name used twice");
        for (const std::string& other : {item.buddy, item.part})
            if (!other.empty() && dialog_Number(description, other) == 0)
                faults.push_back(item.name + ": no item is named " + other);
        const bool silent = item.kind == DialogKind::Frame || item.kind == DialogKind::Divider;
        if (!silent && dialog_AccessibleName(item).empty())
            faults.push_back(item.name + ": no accessible name");
        if (item.kind != DialogKind::TextField && item.kind != DialogKind::StatusText)
            shortcut(item.text, item.name);
        if (item.kind == DialogKind::ButtonSet)
            for (const std::string& choice : item.list) shortcut(choice, item.name);
    }
}

void checkPlaces(const DialogLayout& layout, std::vector<std::string>& faults) {
    const std::vector<DialogItem>& items = layout.description().items;
    const DialogRect window = layout.inside();
    for (size_t i = 0; i < items.size(); ++i) {
        if (!isLaidOut(items[i])) continue;
        const DialogRect rect = layout.rect(static_cast<int>(i) + 1);
        const PlacerSize needed = layout.needed(static_cast<int>(i) + 1);
        if (!holds(window, rect))
            faults.push_back(items[i].name + " sticks out of the window: " + textOf(rect));
        if (rect.width < std::max(needed.width, 1) || rect.height < std::max(needed.height, 1))
            faults.push_back(items[i].name + " is cut: " + textOf(rect) + ", needs " +
                             std::to_string(needed.width) + "x" + std::to_string(needed.height));
        for (size_t j = 0; j < i; ++j) {
            if (!isLaidOut(items[j])) continue;
            const DialogRect other = layout.rect(static_cast<int>(j) + 1);
            const bool framed = (items[i].kind == DialogKind::Frame && holds(rect, other)) ||
                                (items[j].kind == DialogKind::Frame && holds(other, rect));
            if (overlap(rect, other) && !framed)
                faults.push_back(items[j].name + " and " + items[i].name + " overlap: " + textOf(other) +
                                 ", " + textOf(rect));
        }
    }
}

}  // namespace

DialogLayout::DialogLayout(DialogDescription description, DialogMetrics metrics)
    : description_(std::move(description)),
      read_(dialog_Layout(description_, rules_)),
      placer_(std::move(rules_), placerItems(description_)) {
    placer_.framed = description_.framed;
    placer_.topLevel = description_.menu;
    for (const DialogItem& item : description_.items) texts_.push_back(item.text);
    setMetrics(std::move(metrics));
}

void DialogLayout::setMetrics(DialogMetrics metrics) {
    metrics_ = std::move(metrics);
    placer_.menu = description_.menu && metrics_.menuInside;
    for (PlacerItem& item : placer_.items) item.metrics = metrics_.font;
    for (size_t i = 0; i < texts_.size(); ++i) measure(i);
}

void DialogLayout::setText(int number, std::string text) {
    if (number < 1 || static_cast<size_t>(number) > texts_.size()) return;
    const size_t index = static_cast<size_t>(number) - 1;
    texts_[index] = std::move(text);
    measure(index);
}

void DialogLayout::measure(size_t index) {
    const DialogItem& item = description_.items[index];
    PlacerItem& facts = placer_.items[index + 1];
    facts.content = contentSize(metrics_, item, texts_[index]);
    if (metrics_.wish)
        if (const auto wish = metrics_.wish(item, texts_[index])) facts.content = *wish;
    // An item of no kind that the placer knows is as big as it needs to be until a rule sizes it.
    if (facts.kind == PlacerKind::Other || facts.kind == PlacerKind::TextLine) {
        facts.width = facts.content.width;
        facts.height = facts.content.height;
    }
}

PlacerOutcome DialogLayout::open() {
    return read_.ok() ? placer_.relayout() : PlacerOutcome{};
}
PlacerOutcome DialogLayout::solve() {
    return read_.ok() ? placer_.solve() : PlacerOutcome{};
}
PlacerOutcome DialogLayout::resize(int width, int height) {
    return read_.ok() ? placer_.resized(width, height) : PlacerOutcome{};
}

DialogRect DialogLayout::rect(int number) const {
    if (number < 1 || static_cast<size_t>(number) > texts_.size()) return {};
    if (!isLaidOut(description_.items[static_cast<size_t>(number) - 1])) return {};
    const PlacerItem& item = placer_.items[static_cast<size_t>(number)];
    return {item.x, item.y, item.width, item.height};
}

DialogRect DialogLayout::inside() const {
    const int inset = placer_.inset();
    const int top = inset + placer_.topReserve();
    return {inset, top, width() - 2 * inset, height() - top - inset};
}

PlacerSize DialogLayout::needed(int number) const {
    if (number < 1 || static_cast<size_t>(number) > texts_.size()) return {};
    return placer_.items[static_cast<size_t>(number)].content;
}

std::vector<std::string> dialog_Check(const DialogDescription& description, const DialogMetrics& metrics,
                                      int width, int height) {
    std::vector<std::string> faults;
    checkNames(description, faults);
    PlacerLayout lines;
    std::string error = dialog_Layout(description, lines).what();
    const std::vector<std::string> notes = placer_Review(lines);
    faults.insert(faults.end(), notes.begin(), notes.end());
    DialogLayout layout(description, metrics);
    for (const PlacerOutcome& outcome : {layout.open(), layout.resize(width, height)})
        if (!outcome.check.empty()) error = outcome.check;
    if (!error.empty()) {
        faults.push_back(error);
        return faults;
    }
    checkPlaces(layout, faults);
    return faults;
}

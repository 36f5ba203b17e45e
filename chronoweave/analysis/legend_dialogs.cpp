#include "chronoweave/analysis/legend_dialogs.h"

#include <algorithm>

#include "shared/libcxxutil/paths.h"
#include "shared/libcxxutil/report.h"
#include "windlib/icons.h"
#include "windlib/lagraph/surface.h"

namespace {

constexpr int accepted = 1;
constexpr int largestIcon = 40;  // pixels of either side
constexpr int fileColumn = 60;   // pixels

std::string status_title(const _LaCanvasData& canvas, size_t status) {
    const LegendStatus& row = canvas.looks.legend.statuses[status];
    if (!row.isContextSwitch) return gen_format("Configure Status \"%s\"", row.name.c_str());
    if (canvas.looks.legend.contextSwitchCount < 2) return "Configure Context Switch";
    return gen_format("Configure Context Switch \"%s\"", row.name.c_str());
}

laStatusSetting typed_setting(const DialogModel& model) {
    const auto channel = [&](const char* name) { return laLegend_ScanChannel(model.item(name).text); };
    const DialogItemState& styles = model.item("stylePD");
    const auto choice = static_cast<size_t>(std::max(0, styles.choice));
    return {channel("tf_red"), channel("tf_green"), channel("tf_blue"),
            laLegend_ScanThickness(model.item("tf_thickness").text),
            choice < styles.choices.size() ? legend_LineStyle(styles.choices[choice]) : Line_Solid};
}

void set_channels(DialogModel& model, uint16_t red, uint16_t green, uint16_t blue) {
    model.setText("tf_red", gen_format("0x%02x", red >> 8));
    model.setText("tf_green", gen_format("0x%02x", green >> 8));
    model.setText("tf_blue", gen_format("0x%02x", blue >> 8));
}

void choose_colour(DialogHost& host, DialogModel& model) {
    const laStatusSetting now = typed_setting(model);
    const auto colour = host.chooseColour(model.title(), colour_From16(now.red, now.green, now.blue));
    if (!colour) return;
    const auto channel = [&](int shift) { return static_cast<uint16_t>(((*colour >> shift) & 0xFF) << 8); };
    set_channels(model, channel(16), channel(8), channel(0));
    model.repaint("rgbWin");
}

void draw_sample(const DialogModel& model, Surface& surface, int w, int h) {
    const laStatusSetting setting = typed_setting(model);
    const int thickness = std::min(setting.thickness, std::max(1, h - 2)), inset = w >= 16 ? 3 : 0;
    surface.drawStyledLine(inset, h / 2, w - 1 - inset, h / 2,
                           colour_From16(setting.red, setting.green, setting.blue), thickness,
                           setting.lineStyle, 0);
}

std::vector<const IconInfo*> choosable_icons() {
    std::vector<const IconInfo*> icons;
    for (const IconInfo& icon : icon_Table())
        if (icon.width <= largestIcon && icon.height <= largestIcon) icons.push_back(&icon);
    return icons;  // the table is sorted by name
}

void draw_icon_cell(Surface& surface, const IconInfo& icon, int x, int y, int h) {
    const IconHandle handle = icon_Find(icon.name);
    surface.drawIcon(x + 1, y + (h - icon.height) / 2, handle);
    const FontMetrics font = surface.fontMetrics(Font_Application);
    surface.drawText(x + largestIcon / 2 + 8, y + (h - font.height) / 2 + font.ascent, icon.name,
                     surface.foreground(), NoColour);
}

}  // namespace

std::optional<laStatusSetting> legend_AskStatus(DialogHost& host, const _LaCanvasData& canvas,
                                                size_t status) {
    DialogModel model(legend_StatusDialog());
    const laStatusSetting before = laLegend_StatusSetting(canvas, status);
    model.setTitle(status_title(canvas, status));
    set_channels(model, before.red, before.green, before.blue);
    model.setText("tf_thickness", std::to_string(before.thickness));
    model.setChoice("stylePD", before.lineStyle);
    model.setPainter("rgbWin", [&](Surface& surface, int w, int h) { draw_sample(model, surface, w, h); });
    model.onEdit = [&](const std::string&, const std::string&) { model.repaint("rgbWin"); };
    model.onChoose = [&](const std::string&, int) { model.repaint("rgbWin"); };
    model.onPress = [&](const std::string& name) {
        if (name == "bt_choose") return choose_colour(host, model);
        model.close(name == "bt_ok" ? accepted : Dialog_Dismissed);
    };
    if (host.run(model) != accepted) return std::nullopt;
    laStatusSetting after = typed_setting(model);
    // The fields hold the high bytes; a channel that reads the same stays whole.
    if (after.red == (before.red & 0xFF00)) after.red = before.red;
    if (after.green == (before.green & 0xFF00)) after.green = before.green;
    if (after.blue == (before.blue & 0xFF00)) after.blue = before.blue;
    return after;
}

std::optional<std::string> legend_AskIcon(DialogHost& host, const std::string& present) {
    const std::vector<const IconInfo*> icons = choosable_icons();
    DialogModel model(legend_IconDialog());
    std::vector<DialogRow> rows;
    int widest = 0;
    for (const IconInfo* icon : icons) {
        rows.push_back({{icon->name, std::string(path_file(icon->path))}, rows.size()});
        widest = std::max({widest, icon->width, icon->height});
    }
    model.setRows("colHeader", std::move(rows));
    MScrollList& list = model.list("colHeader");
    list.SetOwnerDrawn(0, true);
    list.SetWidth(1, fileColumn);
    list.SetRowHeight(std::max(widest, 20) + 2);
    list.drawCell = [&](Surface& surface, int x, int y, int, int h, int row, int, bool) {
        const uint64_t id = list.RowId(row);
        if (id < icons.size()) return draw_icon_cell(surface, *icons[id], x, y, h);
        // The wording is kept as it is known.
        host.message("Error happended in selectIcon_OwnerDraw().");
    };
    for (size_t i = 0; i < icons.size(); ++i)
        if (icons[i]->name == present) model.setSelected("colHeader", {static_cast<int>(i)});
    model.onActivate = [&](const std::string&, int) { model.close(accepted); };
    model.onPress = [&](const std::string& name) {
        model.close(name == "bt_ok" ? accepted : Dialog_Dismissed);
    };
    if (host.run(model) != accepted) return std::nullopt;
    const std::vector<uint64_t> chosen = model.selectedIds("colHeader");
    if (chosen.empty() || chosen.front() >= icons.size()) return std::nullopt;
    return icons[chosen.front()]->name;
}

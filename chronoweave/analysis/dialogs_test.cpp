#include "chronoweave/analysis/dialogs.h"

#include <gtest/gtest.h>

#include "chronoweave/analysis/find_line.h"
#include "chronoweave/analysis/selection_panel.h"
#include "windlib/dialog/dialog_testing.h"

namespace {

const std::vector<std::string> sound;

TEST(DialogsTest, EveryLayoutSurvivesFontsAndSizes) {
    for (const DialogDescription& d :
         {dialogs_CanvasWindow(), dialogs_Hide(), dialogs_TimeUnit(), dialogs_GotoTime(), dialogs_GetValue(),
          dialogs_Options(), dialogs_ScrollPos(), dialogs_Bookmarks(), dialogs_KeySheet(), dialogs_Palette(),
          dialogs_About(), dialogs_Print(), dialogs_PrintTable(), find_LineDescription(),
          selection_PanelDescription()})
        EXPECT_EQ(dialog_CheckAll(d), sound) << d.name;
}

TEST(DialogsTest, CanvasItemsKeepTheirOrder) {
    const char* names[] = {"TraxMenuBar",  "TraxBtns",   "TaskNames",   "Divider",   "DataCanvas",
                           "TickPattern",  "TickUnit",   "TotalLength", "info_rect", "t_view",
                           "tf_view_from", "tf_view_to", "tf_view_len", "t_sel",     "tf_sel_from",
                           "tf_sel_to",    "tf_sel_len", "ts_info"};
    const DialogDescription d = dialogs_CanvasWindow();
    for (size_t i = 0; i < std::size(names); ++i) EXPECT_EQ(d.items[i].name, names[i]);
}

TEST(DialogsTest, ThePictureTakesWhatTheWindowGrowsBy) {
    DialogLayout layout(dialogs_CanvasWindow(), dialog_TestFont(16, true));
    const int picture = dialog_Number(layout.description(), "DataCanvas");
    const int message = dialog_Number(layout.description(), "ts_info");
    EXPECT_EQ(layout.open().check, "");
    const DialogRect before = layout.rect(picture);
    const DialogRect line = layout.rect(message);
    EXPECT_FALSE(layout.resize(layout.width() + 100, layout.height() + 200).windowChanged);
    EXPECT_EQ(layout.rect(picture).width, before.width + 100);
    EXPECT_EQ(layout.rect(picture).height, before.height + 200);
    EXPECT_EQ(layout.rect(message).y, line.y + 200);
}

// Long terms of a trace make the headings wide; the window follows them.
TEST(DialogsTest, HideDialogHoldsLongTerms) {
    DialogDescription d = dialogs_Hide();
    d.items[0].text = "Deferred Interrupt Service Routines to Show";
    d.items[4].text = "Deferred Interrupt Service Routines to Hide";
    EXPECT_EQ(dialog_CheckAll(d), sound);
}

}  // namespace

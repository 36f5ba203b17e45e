// A device of pages for tests: it keeps what is drawn on each page. The measures of its fonts are handed in,
// or follow from their heights; it fails where it is told to.
#pragma once

#include <vector>

#include "shared/libcxxutil/report.h"
#include "windlib/lagraph/page.h"
#include "windlib/lagraph/recording_surface.h"

class RecordingPage : public PageDevice {
  public:
    explicit RecordingPage(const PageFacts& facts) : facts_(facts), surface_(facts) {}

    // Letters are 5/9 as wide as their line is high, and stand 4/5 of it above the baseline.
    std::function<FontMetrics(int height)> measures = [](int height) {
        return FontMetrics{height, height * 4 / 5, std::max(1, height * 5 / 9)};
    };
    bool hasFonts = true;
    int failStart = 0, failEnd = 0;  // the number of the page; 0: none

    std::vector<std::vector<SurfaceOp>> pages;  // those that were ended
    std::string family;
    int bigHeight = 0, smallHeight = 0;  // of the fonts made last
    int started = 0;

    // Everything, one call a line.
    std::string text() const {
        std::string all;
        for (size_t i = 0; i < pages.size(); ++i) {
            RecordingSurface page(0, 0);
            page.ops = pages[i];
            all += gen_format("page %zu\n", i + 1) + page.text();
        }
        return all;
    }
    std::vector<std::string> texts(size_t page) const {
        std::vector<std::string> found;
        for (const SurfaceOp& op : pages.at(page))
            if (op.kind == SurfaceOp::Text) found.push_back(op.text);
        return found;
    }

    PageFacts facts() const override { return facts_; }
    bool makeFonts(const std::string& name, int applicationHeight, int axisHeight) override {
        family = name;
        bigHeight = applicationHeight;
        smallHeight = axisHeight;
        surface_.fonts[Font_Application] = measures(applicationHeight);
        surface_.fonts[Font_Axis] = measures(axisHeight);
        return hasFonts;
    }
    bool startPage() override {
        surface_.forget();
        return ++started != failStart;
    }
    bool endPage() override {
        if (started == failEnd) return false;
        pages.push_back(surface_.ops);
        return true;
    }
    Surface& surface() override { return surface_; }
    void drawIcon(int x, int y, int w, int h, IconHandle icon) override {
        surface_.ops.push_back(
            {.kind = SurfaceOp::Icon, .x0 = x, .y0 = y, .x1 = w, .y1 = h, .icon = icon, .text = {}});
    }

  private:
    class Paper : public RecordingSurface {
      public:
        explicit Paper(const PageFacts& facts) : RecordingSurface(facts.width, facts.height) {}
        FontMetrics fonts[Font_Count];
        int setFont(int slot) override {
            const int before = RecordingSurface::setFont(slot);
            if (before >= 0) font_ = slot;
            return before;
        }
        FontMetrics fontMetrics(int slot) override { return fonts[slot == Font_Axis ? Font_Axis : 0]; }
        TextExtent textExtent(std::string_view text) override {
            const FontMetrics& font = fonts[font_];
            int letters = 0;
            for (const char byte : text) letters += (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
            return {letters * font.charWidth, font.height};
        }

      private:
        int font_ = Font_Application;
    };

    PageFacts facts_;
    Paper surface_;
};

// For tests: made-up fonts, and a check of a description in all of them and in windows of many sizes.
#pragma once

#include "windlib/dialog/dialog_layout.h"

// A font of a height, of which 'i', 'l' and the like are narrow and capitals wide; or all letters alike.
inline DialogMetrics dialog_TestFont(int height, bool proportional) {
    DialogMetrics metrics;
    metrics.font = {height / 2, proportional ? height * 9 / 10 : height / 2, height + height / 4,
                    height * 4 / 5};
    metrics.textWidth = [height, proportional](std::string_view text) {
        int width = 0;
        for (const char c : text) {
            const bool narrow = std::string_view("iljtf.,:;'|! ()").find(c) != std::string_view::npos;
            const bool wide = c == 'm' || c == 'w' || (c >= 'A' && c <= 'Z');
            width += !proportional ? height / 2 : narrow ? height / 4 : wide ? height * 4 / 5 : height / 2;
        }
        return width;
    };
    return metrics;
}

// Faults of a description at three fonts and five sizes, each with the font and the size in front.
inline std::vector<std::string> dialog_CheckAll(const DialogDescription& description) {
    const DialogMetrics fonts[] = {dialog_TestFont(10, true), dialog_TestFont(17, false),
                                   dialog_TestFont(40, true)};
    const PlacerSize sizes[] = {{1, 1}, {400, 2000}, {800, 600}, {1920, 1080}, {4000, 300}};
    std::vector<std::string> all;
    for (const DialogMetrics& font : fonts)
        for (const PlacerSize& size : sizes)
            for (const std::string& fault : dialog_Check(description, font, size.width, size.height))
                all.push_back(description.name + ", line height " + std::to_string(font.font.lineHeight) +
                              ", " + std::to_string(size.width) + "x" + std::to_string(size.height) + ": " +
                              fault);
    return all;
}

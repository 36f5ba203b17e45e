// Layout lines of a description, gathered by section.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

struct LayoutLines {
    std::vector<std::string> least, sizes, positions;

    // The items stand side by side, 8 pixels apart, on the base line of the anchor; the first is placed by
    // other lines.
    void beside(std::initializer_list<const char*> names, const std::string& anchor) {
        std::string before;
        for (const std::string name : names) {
            if (!before.empty())
                positions.push_back("(@" + name + "),@" + before + ",8,0,0,0,0,Left,Left,Right");
            if (name != anchor)
                positions.push_back("(@" + name + "),@" + anchor + ",0,0,0,0,0,Baseline,Baseline,Baseline");
            before = name;
        }
    }
    // Buttons in the lower right corner, the first one rightmost.
    void corner(std::initializer_list<const char*> names) {
        std::string before;
        for (const std::string name : names) {
            positions.push_back("(@" + name + "),0,-8,0,0,0,0,Bottom,Bottom,Bottom");
            positions.push_back(before.empty()
                                    ? "(@" + name + "),0,-8,0,0,0,0,Right,Right,Right"
                                    : "(@" + name + "),@" + before + ",-8,0,0,0,0,Right,Right,Left");
            before = name;
        }
    }
    // The window is never narrower than any of these, each a list of items and the pixels between them.
    struct Width {
        std::string items;
        int pixels;
        int columns = 1;  // of such a width, side by side
    };
    void atLeast(std::initializer_list<Width> widths) {
        int order = static_cast<int>(widths.size()) + 1;
        for (const Width& width : widths)
            least.push_back("0,(" + width.items + "),()," + std::to_string(width.pixels) + ",0,0,0,0," +
                            std::to_string(width.columns) + ",1," + std::to_string(order--) + ",Horizontal");
    }
    std::vector<std::string> all() const {
        std::vector<std::string> lines;
        const auto add = [&](const char* section, const std::vector<std::string>& of) {
            lines.emplace_back(section);
            lines.insert(lines.end(), of.begin(), of.end());
        };
        add("MinSizes", least);
        add("Sizes", sizes);
        add("Positions", positions);
        return lines;
    }
};

// Icons by name: the drawings in the "icons" folder of the installation, one SVG file each. Here an icon is
// its name and size; the platform layer draws it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Position in the icon table; NoIcon for none.
using IconHandle = int32_t;
constexpr IconHandle NoIcon = -1;

struct IconInfo {
    std::string name;  // file name less ".svg"
    std::string path;
    int width = 0;  // logical pixels, from the file's width and height
    int height = 0;
};

// The icons of a folder, sorted by name: its files with the extension ".svg" whose root element has a width
// and a height from 1 to 1024 pixels. Any other gives a warning and is left out. Empty when the folder can't
// be read.
std::vector<IconInfo> icon_ReadFolder(const std::string& folder);
// All icons of the installation's folder, sorted by name; read at first use.
const std::vector<IconInfo>& icon_Table();
// By name, exact; NoIcon when there is none.
IconHandle icon_Find(std::string_view name);
// Size of an icon; 0 for NoIcon.
int icon_Width(IconHandle icon);
int icon_Height(IconHandle icon);

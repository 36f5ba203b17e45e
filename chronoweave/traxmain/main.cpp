// trvgui: the window program.
#include "chronoweave/traxmain/trvgui.h"

int main(int argc, char** argv) {
    return trvgui_Main(argc, argv);
}

// What a command line asks for: what every command of the program takes.
#pragma once

#include <string>
#include <vector>

// What the user asked for. Texts are empty, and flags false, where the option was not given.
struct CommandLine {
    std::string command;  // name of the command, "config check" for the nested one
    std::string subject;  // what stands ahead of PATH: a kind of search or report, a file of rules
    std::string path;
    std::vector<std::string> sources;  // of a command that takes several in place of PATH
    std::string from, to, at;
    bool ticks = false;
    std::string config;
    bool json = false, csv = false;
    std::string output;
    bool quiet = false;
    std::string first, count, object;
    std::string width, height;
    bool flat = false;
    std::string page, pages;
    bool processors = false;
    bool landscape = false, legend = false;
    std::string hide, sort;
    std::string event, begin, end, status;  // names
    std::string objects, beginObjects, endObjects, idle;
    bool sameObject = false, contextSwitch = false, increasing = false;
    std::string limit, junit;
    std::string checkpoint;
    std::string align;
    std::string seconds, mostEvents;  // how much of what is live
    bool force = false;
};

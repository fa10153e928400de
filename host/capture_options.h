// The command line of tamsel-capture.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

#include "capture_input.h"
#include "directory.h"
#include "selection.h"

struct CaptureOptions {
    // What is read.
    InputOptions input;
    std::vector<std::string> ports;
    std::string modules = kTamsel2009.name;

    // What is shown of it.
    std::string call;       // how its identifier starts, in hex
    size_t callNumber = 0;  // in the list of calls; 0 for none
    std::vector<std::string> families = {"ras", "ui", "h245"};
    std::vector<std::string> hosts;
    std::vector<std::string> names;  // of messages
    std::string from;
    std::string to;

    // How it is shown: the list of calls, or the ladder of one, if nothing is told.
    bool list = false;
    bool dump = false;
    bool stats = false;
    bool calls = false;  // the list of calls, whatever else is told
    bool json = false;   // messages, or calls, as lines for programs
    bool full = false;   // their dumps as well
    std::string folder;
    std::string frames;  // the capture file that is written
    std::string page;    // the page that is written
};

/// Adds the options and the help to a program.
void addCaptureOptions(CLI::App& app, CaptureOptions& options);

/// To be called when the command line has been read: of the arguments, what is no file but may
/// name a call is one. Throws std::runtime_error if there are two, or no file.
void finishCaptureOptions(CaptureOptions& options);

/// Which messages are shown. Throws std::runtime_error.
SelectionOptions selectionOf(const CaptureOptions& options);

/// The ports of --port, each as NUMBER=PURPOSE. Throws std::runtime_error.
std::map<uint16_t, Purpose> portsOf(const std::vector<std::string>& texts);

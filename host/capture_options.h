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
    // The input.
    InputOptions input;
    std::vector<std::string> ports;
    std::string modules = kTamsel2009.name;

    // Which messages are shown.
    std::string call;       // the first hex digits of the only call's identifier; empty for all
    size_t callNumber = 0;  // the only call, by its number in the list of calls; 0 for all
    std::vector<std::string> families = {"ras", "ui", "h245"};
    std::vector<std::string> hosts;
    std::vector<std::string> names;  // of messages
    std::string from;
    std::string to;

    // How they are shown. The default is the list of calls, or the ladder diagram of one call.
    bool list = false;
    bool dump = false;
    bool stats = false;
    bool calls = false;  // the list of calls, even if one call is given
    bool json = false;   // messages or calls as JSON lines
    bool full = false;   // with the dumps of the messages
    std::string folder;  // of -o; empty for none
    std::string frames;  // the capture file of -w; empty for none
    std::string page;    // the file of --html; empty for none
};

/// Adds the options and the help to a program.
void addCaptureOptions(CLI::App& app, CaptureOptions& options);

/// Completes options that were read from the command line: an argument that is not a file, but may
/// be the number or identifier of a call, becomes the call. Throws std::runtime_error if there are
/// two calls or no input, or if an output would overwrite an input.
void finishCaptureOptions(CaptureOptions& options);

/// The selection of messages. Throws std::runtime_error if an address or a time is wrong.
SelectionOptions selectionOf(const CaptureOptions& options);

/// Reads the values of --port, each NUMBER=PURPOSE. Throws std::runtime_error if one is wrong.
std::map<uint16_t, Purpose> portsOf(const std::vector<std::string>& texts);

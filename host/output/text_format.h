// Times, counts, octets and dumps as text.
#pragma once

#include <charconv>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "TamselCore.h"
#include "frame.h"

/// Appends decimal digits, with leading zeros up to a width. The value is not negative.
void appendDigits(std::string& text, int64_t value, size_t width = 1);

/// Appends "12:00:00.000000", in UTC. `mark` replaces the colon.
void appendTimeOfDay(std::string& text, Time time, std::string_view mark = ":");

/// Appends or returns "2002-05-31T12:00:00.000000Z".
void appendDate(std::string& text, Time time);
std::string dateText(Time time);

/// "1 octet", "2 octets"
std::string counted(size_t count, std::string_view noun);

/// Appends lines of 16 octets in hex, each after an indent. After `lines` lines, appends only the
/// number of the other octets.
void appendHexLines(std::string& text, std::span<const uint8_t> octets, std::string_view indent,
                    size_t lines);

/// A sink that appends a dump to a text, which must outlive it.
AsnDumpSink sinkOf(std::string& text);

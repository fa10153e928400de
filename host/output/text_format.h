// Times, counts and octets as text, appended to a string.
#pragma once

#include <charconv>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "asn1per/dump.h"
#include "frame.h"

/// Decimal digits, with zeros in front up to a width.
void appendDigits(std::string& text, int64_t value, size_t width = 1);

/// "12:00:00.000000", UTC; another mark than the colon, or none, between.
void appendTimeOfDay(std::string& text, Time time, std::string_view mark = ":");

/// "2002-05-31T12:00:00.000000Z"
void appendDate(std::string& text, Time time);
std::string dateText(Time time);

/// "1 octet", "2 octets"
std::string counted(size_t count, std::string_view noun);

/// Lines of 16 octets in hex, each after an indent; beyond `lines` of them, how many are left out.
void appendHexLines(std::string& text, std::span<const uint8_t> octets, std::string_view indent,
                    size_t lines);

/// A sink that appends a dump to a text.
AsnDumpSink sinkOf(std::string& text);
